#include "tvutil2/services/help_program_dialog.h"

namespace {

constexpr int kOffline = 14030;
constexpr int kList = 14031;
constexpr int kLabel = 14032;

}  // namespace

IMPLEMENT_DYNAMIC(CHelpProgramDlg, CDialog)

BEGIN_MESSAGE_MAP(CHelpProgramDlg, CDialog)
ON_BN_CLICKED(kOffline, &CHelpProgramDlg::OnOffline)
ON_BN_CLICKED(IDOK, &CHelpProgramDlg::OnOK)
END_MESSAGE_MAP()

void CHelpProgramDlg::DoDataExchange(CDataExchange* exchange) {
    CDialog::DoDataExchange(exchange);
    DDX_Control(exchange, kList, m_cmbProgram);
    DDX_CBIndex(exchange, kList, m_nIndex);
    DDX_Check(exchange, kOffline, m_bOffline);
}

BOOL CHelpProgramDlg::OnInitDialog() {
    CDialog::OnInitDialog();
    m_bOffline = m_nProgram >= 0 ? TRUE : FALSE;
    if (m_bOffline) m_nIndex = m_nProgram;
    CheckDlgButton(kOffline, static_cast<UINT>(m_bOffline));
    enable_list();
    m_cmbProgram.ResetContent();
    for (const auto* name : {u"Internet Explorer", u"Chrome", u"Microsoft Edge"}) {
        m_cmbProgram.AddString(name);
    }
    m_cmbProgram.SetCurSel(m_nIndex);
    return TRUE;
}

void CHelpProgramDlg::enable_list() {
    GetDlgItem(kLabel)->EnableWindow(m_bOffline);
    m_cmbProgram.EnableWindow(m_bOffline);
}

void CHelpProgramDlg::OnOffline() {
    UpdateData(TRUE);
    enable_list();
}

void CHelpProgramDlg::OnOK() {
    UpdateData(TRUE);
    m_nProgram = m_bOffline ? m_nIndex : -1;
    CDialog::OnOK();
}
