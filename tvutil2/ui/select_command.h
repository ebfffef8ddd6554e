// A question with up to four answers, each with a button of its own.
#pragma once

#include "tvutil2/framework/controls.h"
#include "tvutil2/framework/dialog.h"

/// What is asked, and what was answered. The caller's.
struct TvSelectCommandParam {
    CString m_strTitle;
    CString m_strDescription;
    CString m_strCheck;                                   ///< of the check box; empty for none
    CString m_strCommand1;                                ///< always shown
    CString m_strCommand2, m_strCommand3, m_strCommand4;  ///< an empty one ends the list
    int m_nResult = 0;                                    ///< the button that was pressed, 1 to 4
    BOOL m_bCheck = FALSE;                                ///< of the check box, before and after
};

class TVUTIL_API CSelectCommandDlg : public CDialog {
    DECLARE_DYNAMIC(CSelectCommandDlg)
  public:
    explicit CSelectCommandDlg(TvSelectCommandParam* param = nullptr) : m_pParam(param) {}

    BOOL OnInitDialog() override;

  protected:
    void DoDataExchange(CDataExchange* exchange) override;
    void OnCommand1() { choose(1); }
    void OnCommand2() { choose(2); }
    void OnCommand3() { choose(3); }
    void OnCommand4() { choose(4); }
    DECLARE_MESSAGE_MAP()

  private:
    void choose(int command);

    TvSelectCommandParam* m_pParam;
    CButton m_btnCommands[4];
};

/// Asks: 1 to 4, or 0 when the person cancels, or nobody can be asked; the check box counts only
/// with an answer.
TVUTIL_API int TvSelectCommand(TvSelectCommandParam* param, CWnd* parent);
/// Asks to which of the folder's sessions changes shall go. Title, description, the four commands
/// and the check (1) are filled in; the path is shown in at most 120 characters.
TVUTIL_API int TvSelectCommandFolder(TvSelectCommandParam* param, const char16_t* path);
