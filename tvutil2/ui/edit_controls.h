// Edit controls for the products' dialogs.
//
// They are set on edits of a dialog's template (DDX_Control, SubclassDlgItem), and belong to the
// thread of their window. Lengths are pixels at the application's DPI (GetAppDPI).
#pragma once

#include "tvutil2/framework/controls.h"
#include "tvutil2/framework/graphics.h"

#include <memory>

class CFileDlg;

/// Ctrl+A selects everything.
class TVUTIL_API CTvEdit : public CEdit {
    DECLARE_DYNAMIC(CTvEdit)
  public:
    CTvEdit() = default;
    BOOL PreTranslateMessage(MSG* message) override;

    DECLARE_MESSAGE_MAP()
};

/// Takes no character that a file's name can't have, when it is typed: " * / : < > ? \ and |. What
/// is pasted or set isn't looked at.
class TVUTIL_API CFNameEdit : public CEdit {
  public:
    CFNameEdit() = default;
    BOOL PreTranslateMessage(MSG* message) override;
};

/// Shows a hint, in grey, while it is empty and hasn't the focus. What code has put into one that
/// never had the focus shows in the hint's colour too.
class TVUTIL_API CHintEdit : public CEdit {
  public:
    CHintEdit() = default;
    explicit CHintEdit(CString hint) : m_strHint(std::move(hint)) {}

    /// Without a repaint.
    void SetHintText(CString hint) { m_strHint = std::move(hint); }
    /// The control gets a font of its own like this one, which may go away afterwards.
    void SetFont(CFont* pFont, BOOL bRedraw);
    /// Whether the hint stands in the middle.
    void SetCenter(BOOL bCenter) { m_bCenter = bCenter; }

  protected:
    /// Paints the control with a text in the hint's colour, in WM_PAINT.
    void DrawMessage(const CString& message);
    void OnPaint();
    void OnSetFocus(CWnd* before);
    void OnKillFocus(CWnd* next);
    LRESULT OnSetText(WPARAM wparam, LPARAM lparam);
    /// For maps of derived classes: a text that begins or ends shows or hides the hint.
    void OnEnChange();
    DECLARE_MESSAGE_MAP()

  private:
    std::unique_ptr<CFont> m_pFont;  ///< the copy of SetFont
    BOOL m_bEditing = FALSE;         ///< it looks like any other edit
    CString m_strHint;
    BOOL m_bCenter = FALSE;
};

/// What an edit with a button tells its parent: WM_COMMAND with the edit's id, this code, and the
/// edit's window.
inline constexpr WORD TV_BROWSE_CLICKED = 0x0720;

/// Has a button "..." inside its right edge, whose click it tells its parent. The button is a child
/// of the edit, with id 100. In a dialog Esc is the dialog's; all other keys are the product's.
class TVUTIL_API CBrowseEdit : public CEdit {
  public:
    CBrowseEdit() = default;
    BOOL PreTranslateMessage(MSG* message) override;

  protected:
    void PreSubclassWindow() override;
    /// Makes the button if it isn't there yet, and lays out button and text.
    void ResetRect();
    void tell_parent();
    /// For maps of derived classes.
    int OnCreate(CREATESTRUCTW* given);
    void OnSize(UINT type, int width, int height);
    void OnDrawItem(int nIDCtl, DRAWITEMSTRUCT* lpDrawItem);
    LRESULT OnSetFont(WPARAM wparam, LPARAM lparam);
    void OnButtonClick();
    DECLARE_MESSAGE_MAP()

    CButton m_btnBrowse;
};

/// The button lets the person choose a folder, which becomes the text. The parent hears of the
/// click afterwards, also when the person cancelled.
class TVUTIL_API CBrowseFolderEdit : public CBrowseEdit {
  public:
    CBrowseFolderEdit() = default;

    CString m_strTitle;  ///< above the tree; empty for the usual one

  protected:
    void OnButtonClick();
    DECLARE_MESSAGE_MAP()

    CString m_strPath;
};

/// The button lets the person choose a file, whose path becomes the text. The parent hears nothing.
class TVUTIL_API CBrowseFileEdit : public CBrowseEdit {
  public:
    /// The extension without a dot; the filter is a string resource ("name|pattern"). A null
    /// `lpszInitDir` is none.
    CBrowseFileEdit(const char16_t* lpszDefExt, UINT nFilterID, BOOL bOpen,
                    const char16_t* lpszInitDir)
        : m_strDefExt(lpszDefExt),
          m_nFilterID(nFilterID),
          m_bOpen(bOpen),
          m_strInitDir(lpszInitDir) {}

  protected:
    void OnButtonClick();
    DECLARE_MESSAGE_MAP()

    CString m_strDefExt;
    UINT m_nFilterID;
    BOOL m_bOpen;  ///< or saves
    CString m_strInitDir;

  private:
    bool choose(CFileDlg& dialog, DWORD flags, CString& path) const;
};
