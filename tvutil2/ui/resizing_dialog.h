// A dialog that can be sized, and remembers its size.
//
// Controls that are entered by SetControlInfo move or grow by what the client area grows, in whole
// pixels; their places are the only record of the layout. The dialog never gets smaller than it was
// made. Its size lies in the application's profile as "CX" and "CY" (pixels, with the frame), in
// the section that GetDialogProfileEntry names: written when the dialog ends, if it was sized, and
// read by OnInitDialog.
//
// The table of controls outlives the window: a second DoModal finds it as it is.
#pragma once

#include "tvutil2/framework/collections.h"
#include "tvutil2/framework/dialog.h"

/// What a control does when the client area grows: CTRL_MOVE_ goes along with it, CTRL_SIZE_ takes
/// its right or lower edge along, and goes before CTRL_MOVE_ on the same axis.
inline constexpr WORD CTRL_MOVE_X = 1;
inline constexpr WORD CTRL_MOVE_Y = 2;
inline constexpr WORD CTRL_SIZE_X = 4;
inline constexpr WORD CTRL_SIZE_Y = 8;

class TVUTIL_API CResizingDialog : public CDialog {
  public:
    explicit CResizingDialog(UINT nIDTemplate, CWnd* pParent = nullptr);

    /// Enters a control, or with flags of 0 nothing. One that isn't there is passed over when the
    /// dialog is sized; one that is entered twice moves twice.
    void SetControlInfo(WORD nCtrlID, WORD nFlags);

    [[nodiscard]] BOOL GetRememberSize() const { return m_bRememberSize; }
    void SetRememberSize(BOOL remember) { m_bRememberSize = remember; }

    /// Takes over the size of the last time. 0: a derived class sets the focus.
    BOOL OnInitDialog() override;

    /// The section of the profile: the number of the template in hexadecimal, "36c7" for 14023.
    virtual void GetDialogProfileEntry(CString& strEntry);

  protected:
    void OnSize(UINT type, int width, int height);
    void OnPaint();
    LRESULT OnNcHitTest(CPoint point);
    void OnGetMinMaxInfo(MINMAXINFO* limits);
    void OnDestroy();
    int OnCreate(CREATESTRUCTW* given);
    /// Keeps size and controls as they are on a monitor of another scale.
    LRESULT OnDpiChanged(WPARAM wparam, LPARAM lparam);

    DECLARE_MESSAGE_MAP()

  private:
    void move_control(DWORD entry, int dx, int dy);
    void remember_size();

    int m_nMinWidth = 0, m_nMinHeight = 0;    // of the window as it was made
    int m_nLastWidth = 0, m_nLastHeight = 0;  // of the client area
    BOOL m_bResized = FALSE;
    CDWordArray m_aControls;  // low half: the control; high half: the flags
    UINT m_nIDTemplate;
    RECT m_rcGrip{};
    BOOL m_bRememberSize = TRUE;
    BOOL m_bGrip = TRUE;
};
