// The choice of files and of a folder: plain objects, for one DoModal on the caller's stack.
//
// A null parent stands for the thread's main window. DoModal runs a loop of its own on the calling
// thread.
#pragma once

#include "tvutil2/framework/collections.h"
#include "tvutil2/framework/strings.h"
#include "tvutil2/framework/wnd.h"
#include "tvutil2/platform/window/common_dialogs/open_file_name.h"

/// The choice of a file, not to be deleted by a pointer to this class. The members are the caller's
/// to set before DoModal; flags and filter have no value until then.
class TVUTIL_API CFileDlg {
  public:
    explicit CFileDlg(BOOL bOpen, CWnd* pParent = nullptr);

    /// IDOK, or IDCANCEL also for a failure. With OFN_ALLOWMULTISELECT an open dialog gives its
    /// paths to AddPath (first null, then each in the dialog's order: folder, backslash, name, also
    /// where the folder ends in a backslash), and leaves m_strFilePath.
    virtual int DoModal();
    virtual void AddPath(const char16_t* lpszPath);

    DWORD m_dwFlags;           ///< OFN_; OFN_NOCHANGEDIR is added
    UINT m_nFilterID;          ///< string resource: "name|pattern|name|pattern"
    CString m_strDefExt;       ///< without a dot
    DWORD m_dwTemplateID = 0;  ///< of the library's resources, in 16 bits; 0 for none
    LPOFNHOOKPROC m_pfnHook = nullptr;
    LPARAM m_lCustData = 0;  ///< for the hook
    CString m_strInitDir;    ///< empty for the system's choice
    CString m_strFilePath;   ///< the name at first, at most 259 characters; the path afterwards
    BOOL m_bOpen;
    CWnd* m_pParent;  ///< or null

  protected:
    /// The filter as the platform takes it; null when there is none. It is cut behind 254
    /// characters. One buffer for the process, which the next call fills again, on whatever
    /// thread.
    const char16_t* GetFilter();

  private:
    void add_paths(const char16_t* paths, WORD first_name);
};

class TVUTIL_API CFileOpenDlg : public CFileDlg {
  public:
    explicit CFileOpenDlg(CWnd* pParent = nullptr) : CFileDlg(TRUE, pParent) {}
    virtual ~CFileOpenDlg() = default;
    /// Null empties the list.
    void AddPath(const char16_t* lpszPath) override;

    CStringList m_listPaths{10};  ///< what was chosen with OFN_ALLOWMULTISELECT
};

class TVUTIL_API CFileSaveDlg : public CFileDlg {
  public:
    explicit CFileSaveDlg(CWnd* pParent = nullptr) : CFileDlg(FALSE, pParent) {}
    virtual ~CFileSaveDlg() = default;
};

/// The choice of a folder. The members are the caller's to set before DoModal.
class TVUTIL_API CFolderOpenDlg {
  public:
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
