// The choice of a folder, for one DoModal on the caller's stack.
#pragma once

#include "tvutil2/framework/strings.h"
#include "tvutil2/framework/wnd.h"

/// The choice of a folder. The members are the caller's to set before DoModal.
class TVUTIL_API CFolderOpenDlg {
  public:
    /// A null parent stands for the thread's main window.
    explicit CFolderOpenDlg(CWnd* pParent = nullptr);
    CFolderOpenDlg(const CFolderOpenDlg&) = default;
    CFolderOpenDlg& operator=(const CFolderOpenDlg&) = default;
    virtual ~CFolderOpenDlg() = default;

    /// An empty title and flags of 0 leave what is there; the path is always set.
    void Init(const char16_t* lpszTitle, const char16_t* lpszPath, int nFlags);
    /// IDOK with the path set, at most 259 characters, or IDCANCEL. OK can't be pressed for what
    /// has no path, nor for a file that isn't hidden.
    int DoModal();

    CString m_strPath;   ///< selected at first; what was chosen
    CString m_strTitle;  ///< above the tree; "Select a folder:" in the library's language
    CWnd* m_pParent;     ///< or null
    UINT m_nFlags;       ///< BIF_
};
