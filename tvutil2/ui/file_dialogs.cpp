#include "tvutil2/ui/file_dialogs.h"

#include "tvutil2/data/text.h"
#include "tvutil2/frame/startup.h"
#include "tvutil2/framework/app.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/files/files.h"
#include "tvutil2/platform/files/item_list.h"
#include "tvutil2/platform/files/known_folders.h"
#include "tvutil2/platform/process/message_box.h"
#include "tvutil2/platform/window/common_dialogs/folder_dialog.h"
#include "tvutil2/platform/window/controls/tree_view.h"
#include "tvutil2/platform/window/find_windows.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/messages.h"

#include <algorithm>

namespace {

constexpr UINT kSelectFolder = 14130;
constexpr std::size_t kLongestFilter = 254;
constexpr DWORD kPathRoom = 4096;

CWnd* parent_or_main(CWnd* parent) {
    return parent != nullptr ? parent : AfxGetMainWnd();
}

HWND handle_of(const CWnd* window) {
    return window != nullptr ? window->GetSafeHwnd() : nullptr;
}

void select_first(HWND dialog, LPARAM path) {
    if (path != 0) {
        SendMessageW(dialog, BFFM_SETSELECTIONW, TRUE, path);
        SetFocus(FindWindowExW(dialog, nullptr, WC_TREEVIEWW, nullptr));
        return;
    }
    PIDLIST_ABSOLUTE desktop = nullptr;
    SHGetSpecialFolderLocation(dialog, CSIDL_DESKTOP, &desktop);
    SendMessageW(dialog, BFFM_SETSELECTIONW, FALSE, reinterpret_cast<LPARAM>(desktop));
    ILFree(desktop);
}

bool can_be_chosen(PCIDLIST_ABSOLUTE list) {
    char16_t path[520];
    if (!SHGetPathFromIDListW(list, path)) return false;
    const auto attributes = GetFileAttributesW(path);
    const bool is_plain_file =
        attributes != INVALID_FILE_ATTRIBUTES &&
        (attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_HIDDEN)) == 0;
    return !is_plain_file;
}

int hear(HWND dialog, UINT message, LPARAM parameter, LPARAM path) {
    if (message == BFFM_INITIALIZED) select_first(dialog, path);
    if (message == BFFM_SELCHANGED) {
        const bool can = can_be_chosen(reinterpret_cast<PCIDLIST_ABSOLUTE>(parameter));
        SendMessageW(dialog, BFFM_ENABLEOK, 0, can ? TRUE : FALSE);
    }
    return 0;
}

}  // namespace

CFileDlg::CFileDlg(BOOL bOpen, CWnd* pParent)
    : m_bOpen(bOpen), m_pParent(parent_or_main(pParent)) {}

void CFileDlg::AddPath(const char16_t* /*lpszPath*/) {}

const char16_t* CFileDlg::GetFilter() {
    static char16_t buffer[kPathRoom];
    CString filter;
    if (!filter.LoadString(m_nFilterID) || filter.IsEmpty()) return nullptr;
    const auto text = filter.View().substr(0, kLongestFilter);
    std::replace_copy(text.begin(), text.end(), buffer, u'|', u'\0');
    buffer[text.size()] = buffer[text.size() + 1] = 0;
    return buffer;
}

// Folder, names and an empty one, or one full path.
void CFileDlg::add_paths(const char16_t* paths, WORD first_name) {
    AddPath(nullptr);
    if (first_name == 0 || paths[first_name - 1] != 0) return AddPath(paths);
    const CString folder = paths;
    for (const auto* name = paths + first_name; *name != 0; name += lstrlenW(name) + 1) {
        AddPath(folder + u"\\" + name);
    }
}

int CFileDlg::DoModal() {
    char16_t paths[kPathRoom] = {};
    OPENFILENAMEW asked{};
    asked.lStructSize = sizeof asked;
    if (!m_strInitDir.IsEmpty()) asked.lpstrInitialDir = m_strInitDir;
    asked.hwndOwner = handle_of(m_pParent);
    asked.Flags = m_dwFlags | OFN_NOCHANGEDIR;
    asked.lpstrFilter = GetFilter();
    asked.lpstrDefExt = m_strDefExt;
    asked.nFilterIndex = 1;
    asked.lpstrFile = paths;
    asked.nMaxFile = kPathRoom;
    if (m_pfnHook != nullptr) {
        asked.Flags |= OFN_ENABLEHOOK;
        asked.lpfnHook = m_pfnHook;
        asked.lCustData = m_lCustData;
    }
    if (m_dwTemplateID != 0) {
        asked.Flags |= OFN_ENABLETEMPLATE;
        asked.lpTemplateName = MAKEINTRESOURCEW(static_cast<WORD>(m_dwTemplateID));
        asked.hInstance = tvutil2::resource_instance();
    }
    m_strFilePath.View().copy(paths, MAX_PATH - 1);
    if (!(m_bOpen ? GetOpenFileNameW(&asked) : GetSaveFileNameW(&asked))) return IDCANCEL;
    if (m_bOpen && (asked.Flags & OFN_ALLOWMULTISELECT) != 0) {
        add_paths(paths, asked.nFileOffset);
    } else {
        m_strFilePath = paths;
    }
    return IDOK;
}

void CFileOpenDlg::AddPath(const char16_t* lpszPath) {
    if (lpszPath == nullptr) {
        m_listPaths.RemoveAll();
    } else {
        m_listPaths.AddTail(lpszPath);
    }
}

CFolderOpenDlg::CFolderOpenDlg(CWnd* pParent)
    : m_strTitle(tvutil2::library_string(kSelectFolder)),
      m_pParent(parent_or_main(pParent)),
      m_nFlags(BIF_NEWDIALOGSTYLE | BIF_VALIDATE) {}

void CFolderOpenDlg::Init(const char16_t* lpszTitle, const char16_t* lpszPath, int nFlags) {
    if (nFlags != 0) m_nFlags = static_cast<UINT>(nFlags);
    if (lpszTitle != nullptr && *lpszTitle != 0) m_strTitle = lpszTitle;
    m_strPath = lpszPath;
}

int CFolderOpenDlg::DoModal() {
    BROWSEINFOW info{};
    info.hwndOwner = handle_of(m_pParent);
    info.ulFlags = m_nFlags;
    if (!m_strTitle.IsEmpty()) info.lpszTitle = m_strTitle;
    info.lpfn = hear;
    if (!m_strPath.IsEmpty()) info.lParam = reinterpret_cast<LPARAM>(m_strPath.GetString());
    const tvutil2::ItemList chosen(SHBrowseForFolderW(&info));
    if (chosen == nullptr) return IDCANCEL;
    SHGetPathFromIDListW(chosen.get(), m_strPath.GetBuffer(MAX_PATH));
    m_strPath.ReleaseBuffer();
    return IDOK;
}
