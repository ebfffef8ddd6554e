#include "tvutil2/ui/select_command.h"

#include "tvutil2/data/path.h"
#include "tvutil2/data/text.h"
#include "tvutil2/lang/library_dialog.h"
#include "tvutil2/platform/window/show.h"

#include <iterator>

namespace {

constexpr WORD kDialog = 14023;
constexpr int kDescription = 14027;
constexpr int kCheck = 14028;
constexpr int kCommands[] = {14024, 14025, 14026, 14033};
constexpr int kShownPath = 120;

}  // namespace

IMPLEMENT_DYNAMIC(CSelectCommandDlg, CDialog)

BEGIN_MESSAGE_MAP(CSelectCommandDlg, CDialog)
ON_BN_CLICKED(kCommands[0], &CSelectCommandDlg::OnCommand1)
ON_BN_CLICKED(kCommands[1], &CSelectCommandDlg::OnCommand2)
ON_BN_CLICKED(kCommands[2], &CSelectCommandDlg::OnCommand3)
ON_BN_CLICKED(kCommands[3], &CSelectCommandDlg::OnCommand4)
END_MESSAGE_MAP()

void CSelectCommandDlg::DoDataExchange(CDataExchange* exchange) {
    CDialog::DoDataExchange(exchange);
    for (std::size_t i = 0; i < std::size(kCommands); ++i) {
        DDX_Control(exchange, kCommands[i], m_btnCommands[i]);
    }
    DDX_Check(exchange, kCheck, m_pParam->m_bCheck);
}

BOOL CSelectCommandDlg::OnInitDialog() {
    CDialog::OnInitDialog();
    SetWindowText(m_pParam->m_strTitle);
    SetDlgItemText(kDescription, m_pParam->m_strDescription);
    if (!m_pParam->m_strCheck.IsEmpty()) {
        SetDlgItemText(kCheck, m_pParam->m_strCheck);
        GetDlgItem(kCheck)->ShowWindow(SW_SHOW);
    }
    const CString* const labels[] = {&m_pParam->m_strCommand1, &m_pParam->m_strCommand2,
                                     &m_pParam->m_strCommand3, &m_pParam->m_strCommand4};
    m_btnCommands[0].SetWindowText(*labels[0]);
    for (std::size_t i = 1; i < std::size(labels) && !labels[i]->IsEmpty(); ++i) {
        m_btnCommands[i].SetWindowText(*labels[i]);
        m_btnCommands[i].ShowWindow(SW_SHOW);
    }
    return TRUE;
}

void CSelectCommandDlg::choose(int command) {
    m_pParam->m_nResult = command;
    OnOK();
}

int TvSelectCommand(TvSelectCommandParam* param, CWnd* parent) {
    CSelectCommandDlg dialog(param);
    const auto found = tvutil2::find_library_dialog(kDialog);
    if (found.loaded == nullptr) return 0;
    dialog.InitModalIndirect(found.loaded, parent);
    return dialog.DoModal() == IDOK ? param->m_nResult : 0;
}

int TvSelectCommandFolder(TvSelectCommandParam* param, const char16_t* path) {
    param->m_strTitle = tvutil2::library_string(14056);
    param->m_strDescription.Format(tvutil2::library_string(14057),
                                   TvTruncatePath(path, kShownPath));
    param->m_bCheck = TRUE;
    param->m_strCommand1 = tvutil2::library_string(14058);
    param->m_strCommand2 = tvutil2::library_string(14059);
    param->m_strCommand3 = tvutil2::library_string(14060);
    param->m_strCommand4 = tvutil2::library_string(14061);
    return TvSelectCommand(param, nullptr);
}
