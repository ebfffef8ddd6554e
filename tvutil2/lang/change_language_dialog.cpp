#include "tvutil2/lang/change_language_dialog.h"

#include "tvutil2/lang/language_selection.h"
#include "tvutil2/lang/language_table.h"
#include "tvutil2/lang/library_dialog.h"
#include "tvutil2/lang/resource_language.h"
#include "tvutil2/platform/base/locale.h"

#include <algorithm>

using tvutil2::kLanguages;
using tvutil2::Language;

namespace {

constexpr WORD kDialog = 14010;
constexpr int kList = 14011;
constexpr int kRestart = 14019;

const Language& english() {
    return kLanguages.front();
}

}  // namespace

IMPLEMENT_DYNAMIC(CChangeLangDlg, CDialog)

BEGIN_MESSAGE_MAP(CChangeLangDlg, CDialog)
ON_CBN_SELCHANGE(kList, &CChangeLangDlg::OnSelChangeLanguage)
ON_BN_CLICKED(IDOK, &CChangeLangDlg::OnOK)
END_MESSAGE_MAP()

CChangeLangDlg::CChangeLangDlg(WORD current)
    : m_wCurrent(current), m_wSystem(MLS_TvGetLocalLanguage()) {}

void CChangeLangDlg::DoDataExchange(CDataExchange* exchange) {
    CDialog::DoDataExchange(exchange);
    DDX_Control(exchange, kList, m_cmbLanguage);
    DDX_Control(exchange, kRestart, m_btnRestart);
}

BOOL CChangeLangDlg::OnInitDialog() {
    CDialog::OnInitDialog();
    const auto& system = tvutil2::spoken_language(m_wSystem);
    const auto* current = &english();
    for (const auto& row : kLanguages) {
        const bool is_second = &row == &system && &row != &english();
        m_cmbLanguage.InsertString(is_second ? 1 : -1, row.name);
        if (row.id == m_wCurrent) current = &row;
    }
    m_cmbLanguage.SetCurSel(m_cmbLanguage.FindStringExact(-1, current->name));
    m_btnRestart.SetCheck(0);
    OnSelChangeLanguage();
    return TRUE;
}

void CChangeLangDlg::OnSelChangeLanguage() {
    CString name;
    m_cmbLanguage.GetLBText(m_cmbLanguage.GetCurSel(), name);
    const auto row = std::find_if(kLanguages.begin(), kLanguages.end(),
                                  [&](const Language& each) { return name == each.name; });
    if (row != kLanguages.end()) m_wSelected = row->id;
    m_btnRestart.EnableWindow(m_wSelected != m_wCurrent ? TRUE : FALSE);
}

void CChangeLangDlg::OnOK() {
    m_wCurrent = m_wSelected;
    m_nRestart = m_btnRestart.IsWindowEnabled() != 0 ? m_btnRestart.GetCheck() : 0;
    CDialog::OnOK();
}

WORD MLS_TvChangeLanguage(const char16_t* product, int& restart) {
    CChangeLangDlg dialog(MLS_TvGetUserLanguage(product));
    const auto found = tvutil2::find_library_dialog(kDialog);
    if (found.loaded == nullptr) return 0;
    dialog.InitModalIndirect(found.loaded);
    if (dialog.DoModal() != IDOK) return 0;
    restart = dialog.restart();
    return dialog.language();
}
