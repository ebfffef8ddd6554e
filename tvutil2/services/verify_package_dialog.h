// The warning before a package is installed whose signature isn't the maker's.
#pragma once

#include "tvutil2/framework/dialog.h"

/// IDOK: install it anyway. IDCANCEL, the default: don't.
class TVUTIL_API CVerifyPackageDlg : public CDialog {
    DECLARE_DYNAMIC(CVerifyPackageDlg)
    DECLARE_MESSAGE_MAP()
};
