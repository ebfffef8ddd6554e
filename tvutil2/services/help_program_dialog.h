// The dialog in which a person chooses what opens the manual.
#pragma once

#include "tvutil2/framework/controls.h"
#include "tvutil2/framework/dialog.h"

class TVUTIL_API CHelpProgramDlg : public CDialog {
    DECLARE_DYNAMIC(CHelpProgramDlg)
  public:
    /// The program chosen so far: its place in the list, or -1 for the help on the web.
    explicit CHelpProgramDlg(int program = -1) : m_nProgram(program) {}
    /// The one chosen, after IDOK.
    [[nodiscard]] int program() const { return m_nProgram; }

    BOOL OnInitDialog() override;

  protected:
    void DoDataExchange(CDataExchange* exchange) override;
    void OnOffline();
    void OnOK() override;
    DECLARE_MESSAGE_MAP()

  private:
    void enable_list();

    CComboBox m_cmbProgram;
    int m_nProgram;
    int m_nIndex = 0;
    BOOL m_bOffline = FALSE;
};
