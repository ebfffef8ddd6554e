#include "examples/gallery/edits.h"

#include "tvutil2/data/text.h"
#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/files/item_list.h"
#include "tvutil2/platform/window/common_dialogs/file_layout.h"
#include "tvutil2/platform/window/common_dialogs/folder_dialog.h"
#include "tvutil2/platform/window/controls/list_view.h"
#include "tvutil2/platform/window/controls/tree_view.h"
#include "tvutil2/platform/window/find_windows.h"
#include "tvutil2/platform/window/window.h"

#include <filesystem>
#include <fstream>

namespace gallery {

BOOL Edits::OnInitDialog() {
    CDialog::OnInitDialog();
    m_middle.SetCenter(TRUE);
    for (auto* const edit : {&m_hint, &m_middle}) edit->SetFont(edit->GetFont(), FALSE);
    m_plain.SetWindowText(u"Ctrl+A selects all of it");
    m_name.SetWindowText(u"A name of a file");
    m_button.SetWindowText(u"A text that is so long that it ends below the button, if it could");
    m_disabled.SetWindowText(u"Disabled");
    m_folder.SetWindowText(u"C:\\home");
    m_plain.SetFocus();
    return FALSE;
}

void Edits::DoDataExchange(CDataExchange* exchange) {
    CDialog::DoDataExchange(exchange);
    DDX_Control(exchange, 10, m_plain);
    DDX_Control(exchange, 11, m_name);
    DDX_Control(exchange, 12, m_hint);
    DDX_Control(exchange, 13, m_middle);
    DDX_Control(exchange, 14, m_button);
    DDX_Control(exchange, 15, m_disabled);
    DDX_Control(exchange, 16, m_folder);
}

std::u16string make_folders(const std::string& below) {
    const auto root = std::filesystem::absolute(below) / "Sessions";
    for (const char* const name :
         {"Archive/2024", "Archive/2025", "Büro", "Customers/Headquarters", "Customers/North",
          "Customers/A folder with a name that is too long for the dialog's usual width, I think",
          "日本語", "Тест"}) {
        std::filesystem::create_directories(root / name);
    }
    for (const char* const name : {"Customers/Main gate.xts", "Customers/Backup.xts"}) {
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

void browse_files(const std::u16string& path) {
    const auto folder = path + u"\\Customers";
    char16_t chosen[1024] = u"Main gate.xts";
    OPENFILENAMEW asked{};
    asked.lStructSize = sizeof asked;
    asked.lpstrFilter = u"Sessions (*.xts)\0*.xts\0All files\0*.*\0";
    asked.lpstrFile = chosen;
    asked.nMaxFile = 1024;
    asked.lpstrInitialDir = folder.c_str();
    asked.Flags = OFN_FILEMUSTEXIST;
    GetOpenFileNameW(&asked);
}

}  // namespace gallery
