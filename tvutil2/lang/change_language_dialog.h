// The dialog in which a person chooses the language of a product.
//
// It lists English, the system's language and the others, in the order of the family's table. The
// box that asks for a restart can be used while another language is chosen than the one in force.
#pragma once

#include "tvutil2/framework/controls.h"
#include "tvutil2/framework/dialog.h"

class TVUTIL_API CChangeLangDlg : public CDialog {
    DECLARE_DYNAMIC(CChangeLangDlg)
  public:
    /// `current` is in force now.
    explicit CChangeLangDlg(WORD current = 0x0409);

    /// The language chosen, after IDOK.
    [[nodiscard]] WORD language() const { return m_wCurrent; }
    /// Whether the program is to be started anew, after IDOK: 1 or 0.
    [[nodiscard]] int restart() const { return m_nRestart; }

    BOOL OnInitDialog() override;

  protected:
    void DoDataExchange(CDataExchange* exchange) override;
    void OnSelChangeLanguage();
    void OnOK() override;
    DECLARE_MESSAGE_MAP()

  private:
    CComboBox m_cmbLanguage;
    CButton m_btnRestart;
    WORD m_wCurrent;
    WORD m_wSelected = 0;
    WORD m_wSystem;
    int m_nRestart = 0;
};
