#include "examples/gallery/disk_dialogs.h"

#include "tvutil2/data/text.h"
#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/files/item_list.h"
#include "tvutil2/platform/process/message_box.h"
#include "tvutil2/platform/window/common_dialogs/file_layout.h"
#include "tvutil2/platform/window/common_dialogs/folder_dialog.h"
#include "tvutil2/platform/window/common_dialogs/folder_layout.h"
#include "tvutil2/platform/window/controls/combo_box.h"
#include "tvutil2/platform/window/controls/list_view.h"
#include "tvutil2/platform/window/controls/tree_view.h"
#include "tvutil2/platform/window/find_windows.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/window.h"

#include <filesystem>
#include <fstream>

namespace gallery {
namespace {

void browse_folders(const std::u16string& path) {
    const auto root = tvutil2::item_list_of(path);
    const auto first = path + u"\\Customers";
    BROWSEINFOW info{};
    info.pidlRoot = root.get();
    const auto title = tvutil2::library_string(14130);
    info.lpszTitle = title;
    info.ulFlags = BIF_USENEWUI;
    info.lParam = reinterpret_cast<LPARAM>(first.c_str());
    info.lpfn = [](HWND dialog, UINT message, LPARAM, LPARAM data) {
        if (message == BFFM_INITIALIZED) SendMessageW(dialog, BFFM_SETEXPANDED, TRUE, data);
        return 0;
    };
    ILFree(SHBrowseForFolderW(&info));
}

// `part` is a template of the gallery's, or 0.
void ask_for_files(const std::u16string& folder, const char16_t* name, DWORD flags, bool saves,
                   WORD part = 0) {
    char16_t chosen[1024] = {};
    std::u16string_view(name).copy(chosen, 1023);
    OPENFILENAMEW asked{};
    asked.lStructSize = sizeof asked;
    asked.lpstrFilter = u"Sessions (*.xts)\0*.xts\0All files\0*.*\0";
    asked.lpstrFile = chosen;
    asked.nMaxFile = 1024;
    asked.lpstrInitialDir = folder.c_str();
    asked.Flags = flags;
    if (part != 0) {
        asked.Flags |= OFN_ENABLETEMPLATE | OFN_EXPLORER;
        asked.hInstance = GetModuleHandleW(nullptr);
        asked.lpTemplateName = MAKEINTRESOURCEW(part);
    }
    saves ? GetSaveFileNameW(&asked) : GetOpenFileNameW(&asked);
}

void open_file(const std::u16string& path) {
    ask_for_files(path + u"\\Customers", u"Main gate.xts", OFN_FILEMUSTEXIST, false);
}
void open_files(const std::u16string& path) {
    ask_for_files(path + u"\\Customers", u"",
                  OFN_EXPLORER | OFN_ALLOWMULTISELECT | OFN_FILEMUSTEXIST | OFN_HIDEREADONLY,
                  false);
}
// A program's own part, below the dialog's controls and around them.
void open_with_part(const std::u16string& path) {
    ask_for_files(path + u"\\Customers", u"Main gate.xts", OFN_FILEMUSTEXIST, false, 130);
}
void open_in_part(const std::u16string& path) {
    ask_for_files(path + u"\\Customers", u"Main gate.xts", OFN_FILEMUSTEXIST, false, 131);
}
void save_file(const std::u16string& path) {
    ask_for_files(path + u"\\Customers\\سجلات 2025 (قديم)", u"שער צפוני (3).xts",
                  OFN_OVERWRITEPROMPT, true);
}
void replace_file(const std::u16string& path) {
    ask_for_files(path + u"\\Customers", u"Main gate.xts", OFN_OVERWRITEPROMPT, true);
}
void miss_file(const std::u16string& path) {
    ask_for_files(path + u"\\Customers", u"Side gate.xts", OFN_FILEMUSTEXIST, false);
}

HWND show_dialog(HWND dialog) {
    return has_read_folder(dialog) ? dialog : nullptr;
}
// In an empty folder there is a note in the place of names, and before that one of the reading.
HWND show_note(HWND dialog) {
    char16_t text[100] = {};
    LVITEMW item{};
    item.pszText = text;
    item.cchTextMax = 100;
    SendMessageW(GetDlgItem(dialog, tvutil2::kFileRows), LVM_GETITEMTEXTW, 0,
                 reinterpret_cast<LPARAM>(&item));
    const std::u16string_view note(text);
    return note.empty() || note.back() == u'…' ? nullptr : dialog;
}
// What the dialog says to its OK button.
HWND show_answer(HWND dialog) {
    auto* const owner = GetWindow(dialog, GW_OWNER);
    if (owner != nullptr && GetDlgItem(owner, tvutil2::kFileRows) != nullptr) return dialog;
    if (has_read_folder(dialog)) PostMessageW(dialog, WM_COMMAND, IDOK, 0);
    return nullptr;
}
HWND select_rows(HWND dialog) {
    if (!has_read_folder(dialog)) return nullptr;
    auto* const rows = GetDlgItem(dialog, tvutil2::kFileRows);
    SetFocus(rows);
    for (const WPARAM row : {3U, 4U}) {
        LVITEMW item{};
        item.state = item.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
        SendMessageW(rows, LVM_SETITEMSTATE, row, reinterpret_cast<LPARAM>(&item));
    }
    return dialog;
}
HWND open_types(HWND dialog) {
    if (!has_read_folder(dialog)) return nullptr;
    SendMessageW(GetDlgItem(dialog, tvutil2::kFileTypes), CB_SHOWDROPDOWN, TRUE, 0);
    return FindWindowW(u"ComboLBox", nullptr);
}
HWND change_name(HWND dialog) {
    if (!has_read_folder(dialog)) return nullptr;
    auto* const tree = GetDlgItem(dialog, tvutil2::kFolderTree);
    const auto selected = SendMessageW(tree, TVM_GETNEXTITEM, TVGN_CARET, 0);
    SendMessageW(tree, TVM_EDITLABELW, 0, selected);
    return dialog;
}

}  // namespace

const std::vector<DiskPicture>& disk_pictures() {
    static const std::vector<DiskPicture> all{
        {"folders", true, browse_folders, show_dialog},
        {"folders-name", false, browse_folders, change_name},
        {"files", true, open_file, show_dialog},
        {"files-rows", false, open_files, select_rows},
        {"files-types", false, open_file, open_types},
        {"files-part", false, open_with_part, show_dialog},
        {"files-around", false, open_in_part, show_dialog},
        {"files-save", true, save_file, show_note},
        {"files-missing", true, miss_file, show_answer},
        {"files-replace", true, replace_file, show_answer},
    };
    return all;
}

std::u16string make_folders(const std::string& below) {
    const auto root = std::filesystem::absolute(below) / "Sessions";
    for (const char* const name :
         {"Archive/2024", "Archive/2025", "Büro", "Customers/Headquarters", "Customers/North",
          "Customers/A folder with a name that is too long for the dialog's usual width, I think",
          "Customers/سجلات 2025 (قديم)", "日本語", "Тест"}) {
        std::filesystem::create_directories(root / name);
    }
    for (const char* const name :
         {"Customers/Main gate.xts", "Customers/Backup.xts", "Customers/שער ראשי (2).xts"}) {
        std::ofstream(root / name) << "x";
    }
    return tvutil2::platform_path(root.string()).value_or(u"");
}

bool has_read_folder(HWND dialog) {
    if (auto* const rows = GetDlgItem(dialog, tvutil2::kFileRows)) {
        return SendMessageW(rows, LVM_GETITEMCOUNT, 0, 0) > 1;
    }
    auto* const tree = FindWindowExW(dialog, nullptr, WC_TREEVIEWW, nullptr);
    if (tree == nullptr) return false;
    const auto selected = SendMessageW(tree, TVM_GETNEXTITEM, TVGN_CARET, 0);
    const auto first = SendMessageW(tree, TVM_GETNEXTITEM, TVGN_CHILD, selected);
    return first != 0 && SendMessageW(tree, TVM_GETNEXTITEM, TVGN_NEXT, first) != 0;
}

}  // namespace gallery
