#include "tvutil2/services/verify_package_dialog.h"

IMPLEMENT_DYNAMIC(CVerifyPackageDlg, CDialog)

BEGIN_MESSAGE_MAP(CVerifyPackageDlg, CDialog)
END_MESSAGE_MAP()
