#include "tvutil2/platform/window/common_dialogs/file_name_dialog.h"

#include "tvutil2/platform/base/locale.h"
#include "tvutil2/platform/files/files.h"
#include "tvutil2/platform/files/full_path.h"
#include "tvutil2/platform/files/known_folders.h"
#include "tvutil2/platform/process/message_box.h"
#include "tvutil2/platform/window/common_dialogs/folder_items.h"
#include "tvutil2/platform/window/common_dialogs/folder_layout.h"
#include "tvutil2/platform/window/common_dialogs/folder_words.h"
#include "tvutil2/platform/window/controls/combo_box.h"
#include "tvutil2/platform/window/controls/control.h"
#include "tvutil2/platform/window/controls/edit.h"
#include "tvutil2/platform/window/controls/notify.h"
#include "tvutil2/platform/window/dialogs/built_dialog.h"
#include "tvutil2/platform/window/dialogs/run_dialog.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/show.h"
#include "tvutil2/platform/window/window.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace tvutil2 {
namespace {

constexpr UINT kAnswered = WM_APP + 1;

bool is_full(const std::u16string& path) {
    return path[0] == u'\\' || path[0] == u'/' || (path.size() > 1 && path[1] == u':');
}

// One name, or several between double quotes.
std::vector<std::u16string> names_in(const std::u16string& typed, bool takes_several) {
    std::vector<std::u16string> names;
    if (!takes_several || !typed.starts_with(u'"')) {
        if (!typed.empty()) names.push_back(typed);
        return names;
    }
    for (std::size_t at = 0; at < typed.size();) {
        const auto first = typed.find(u'"', at);
        const auto last = first < typed.size() ? typed.find(u'"', first + 1) : first;
        if (last > typed.size()) break;
        if (last > first + 1) names.push_back(typed.substr(first + 1, last - first - 1));
        at = last + 1;
    }
    return names;
}

class FileNameDialog {
  public:
    FileNameDialog(const FileQuestion& question, std::u16string folder, const FileNameRules& rules)
        : m_question(question),
          m_rules(rules),
          m_folder(std::move(folder)),
          m_language(LANGIDFROMLCID(GetThreadLocale())) {}
    ~FileNameDialog() {
        if (m_icons != nullptr) ImageList_Destroy(m_icons);
    }
    FileNameDialog(const FileNameDialog&) = delete;
    FileNameDialog& operator=(const FileNameDialog&) = delete;

    void build(HWND dialog);
    INT_PTR hear(UINT message, WPARAM wparam, LPARAM lparam);
    bool takes_key(const MSG& message);
    [[nodiscard]] ChosenNames take_chosen() { return std::move(m_chosen); }

  private:
    [[nodiscard]] HWND tree_window() const { return GetDlgItem(m_dialog, kFolderTree); }
    [[nodiscard]] bool saves() const { return m_question.kind == FileQuestion::Kind::save; }
    [[nodiscard]] const char16_t* word(FolderWord which) const {
        return folder_word(which, m_language);
    }

    void add_filters();
    void use_filter();
    void notified(const NMHDR& header);
    void selection_changed();
    void commanded(int id, WORD code);
    void accept();
    void judge(const FolderAnswer& answer);
    bool may_be(const FolderEntry& found) const;
    int ask(FolderWord which, const std::u16string& path, UINT type) const;

    const FileQuestion& m_question;
    const FileNameRules& m_rules;
    std::u16string m_folder;  ///< what names hang on
    LANGID m_language;
    HWND m_dialog = nullptr;
    HIMAGELIST m_icons = nullptr;
    std::unique_ptr<FolderQuestions> m_disk;
    std::unique_ptr<FolderItems> m_items;
    std::uint64_t m_asked = 0;  ///< what OK wants to know, under way
    ChosenNames m_chosen;
};

void FileNameDialog::build(HWND dialog) {
    m_dialog = dialog;
    FolderParts parts;
    parts.caption = m_question.title.empty()
                        ? word(saves() ? FolderWord::save_caption : FolderWord::open_caption)
                        : m_question.title.c_str();
    parts.edit_label = word(FolderWord::file_label);
    parts.ok = word(saves() ? FolderWord::save : FolderWord::open);
    parts.has_types = !m_question.filters.empty();
    parts.types_label = word(FolderWord::types_label);
    build_folder_dialog(dialog, parts, m_language);
    m_icons = make_folder_icons(GetDpiForWindow(dialog));
    SendMessageW(tree_window(), TVM_SETIMAGELIST, 0, reinterpret_cast<LPARAM>(m_icons));
    m_disk = std::make_unique<FolderQuestions>(dialog, kAnswered);
    m_items = std::make_unique<FolderItems>(tree_window(), *m_disk, true, m_language);
    m_items->show_hidden(m_question.shows_hidden);
    add_filters();
    m_items->add_roots(nullptr);
    if (m_folder.empty()) {
        char16_t documents[MAX_PATH];
        const auto folder = CSIDL_PERSONAL;
        if (SUCCEEDED(SHGetFolderPathW(nullptr, folder, nullptr, SHGFP_TYPE_CURRENT, documents))) {
            m_folder = documents;
        }
    }
    if (m_folder.size() > 3 && m_folder.ends_with(u'\\')) m_folder.pop_back();
    m_items->select_path(m_folder, true);
    SetDlgItemTextW(dialog, kFolderEdit, m_question.name.c_str());
    SetFocus(GetDlgItem(dialog, kFolderEdit));
    SendDlgItemMessageW(dialog, kFolderEdit, EM_SETSEL, 0, -1);
}

void FileNameDialog::add_filters() {
    for (const auto& filter : m_question.filters) {
        SendDlgItemMessageW(m_dialog, kFolderTypes, CB_ADDSTRING, 0,
                            reinterpret_cast<LPARAM>(filter.name.c_str()));
    }
    SendDlgItemMessageW(m_dialog, kFolderTypes, CB_SETCURSEL, m_question.filter, 0);
    m_chosen.filter = m_question.filter;
    use_filter();
}

void FileNameDialog::use_filter() {
    if (m_chosen.filter >= m_question.filters.size()) return;
    m_items->show_files(m_question.filters[m_chosen.filter].patterns);
}

void FileNameDialog::selection_changed() {
    auto* const item = m_items->selected();
    const auto* const node = m_items->node(item);
    if (node == nullptr) return;
    const bool is_file = node->kind == FolderKind::file;
    if (is_file) SetDlgItemTextW(m_dialog, kFolderEdit, node->name.c_str());
    auto folder = m_items->path_of(is_file ? node->parent : item);
    if (!folder.empty()) m_folder = std::move(folder);
}

void FileNameDialog::notified(const NMHDR& header) {
    if (header.idFrom != kFolderTree || m_items == nullptr) return;
    const auto& told = reinterpret_cast<const NMTREEVIEWW&>(header);
    if (header.code == TVN_SELCHANGEDW) selection_changed();
    if (header.code == TVN_ITEMEXPANDINGW && told.action == TVE_EXPAND) {
        m_items->open(told.itemNew.hItem);
    }
    if (header.code != NM_DBLCLK) return;
    const auto* const node = m_items->node(m_items->selected());
    if (node != nullptr && node->kind == FolderKind::file) accept();
}

int FileNameDialog::ask(FolderWord which, const std::u16string& path, UINT type) const {
    std::u16string text = word(which);
    if (const auto place = text.find(u"%s"); place != std::u16string::npos) {
        text.replace(place, 2, shown_name(path));
    }
    return MessageBoxW(m_dialog, text.c_str(), text_of(m_dialog).c_str(), type);
}

// A folder alone is opened; anything else goes to the disk with the extension that it lacks.
void FileNameDialog::accept() {
    const auto names =
        names_in(text_of(GetDlgItem(m_dialog, kFolderEdit)), m_question.takes_several);
    if (names.empty()) {
        SendMessageW(tree_window(), TVM_EXPAND, TVE_TOGGLE,
                     reinterpret_cast<LPARAM>(m_items->selected()));
        return;
    }
    std::vector<std::u16string> paths;
    for (const auto& name : names) {
        char16_t full[4096];
        const auto path = is_full(name) || m_folder.empty() ? name : joined(m_folder, name);
        const auto length = GetFullPathNameW(path.c_str(), 4096, full, nullptr);
        if (length == 0 || length >= 4096) {
            ask(FolderWord::is_not_there, name, MB_OK | MB_ICONWARNING);
            return;
        }
        paths.emplace_back(full, length);
    }
    m_asked = m_disk->look_at(std::move(paths), m_rules.extension);
}

bool FileNameDialog::may_be(const FolderEntry& found) const {
    const bool is_missing = !found.is_there && m_rules.file_must_exist;
    if (is_missing || (!found.has_folder && m_rules.path_must_exist)) {
        ask(FolderWord::is_not_there, found.name, MB_OK | MB_ICONWARNING);
        return false;
    }
    const bool replaces = saves() && found.is_there && m_question.asks_to_replace;
    return !replaces || ask(FolderWord::replaces, found.name,
                            MB_YESNO | MB_ICONWARNING | MB_DEFBUTTON2) == IDYES;
}

void FileNameDialog::judge(const FolderAnswer& answer) {
    if (answer.entries.size() == 1 && answer.entries[0].is_folder) {
        m_items->select_path(answer.entries[0].name, true);
        SetDlgItemTextW(m_dialog, kFolderEdit, saves() ? m_question.name.c_str() : u"");
        return;
    }
    for (const auto& found : answer.entries) {
        if (!found.is_folder && may_be(found)) continue;
        SetFocus(GetDlgItem(m_dialog, kFolderEdit));
        SendDlgItemMessageW(m_dialog, kFolderEdit, EM_SETSEL, 0, -1);
        return;
    }
    for (const auto& found : answer.entries) m_chosen.paths.push_back(found.name);
    EndDialog(m_dialog, IDOK);
}

void FileNameDialog::commanded(int id, WORD code) {
    if (id == IDOK && m_asked == 0) accept();
    if (id == IDCANCEL) EndDialog(m_dialog, IDCANCEL);
    if (id == kFolderTypes && code == CBN_SELCHANGE) {
        const auto index = SendDlgItemMessageW(m_dialog, kFolderTypes, CB_GETCURSEL, 0, 0);
        m_chosen.filter = static_cast<std::size_t>(std::max<LRESULT>(index, 0));
        use_filter();
    }
}

INT_PTR FileNameDialog::hear(UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
        case WM_NOTIFY:
            notified(*reinterpret_cast<const NMHDR*>(lparam));
            return FALSE;
        case WM_COMMAND:
            commanded(LOWORD(wparam), HIWORD(wparam));
            return TRUE;
        case kAnswered:
            while (auto answer = m_disk->take()) {
                if (m_items->take(*answer) || answer->question != m_asked) continue;
                m_asked = 0;
                judge(*answer);
            }
            return TRUE;
        case WM_SIZE:
            if (wparam != SIZE_MINIMIZED) lay_out_folder_dialog(m_dialog);
            return TRUE;
        case WM_GETMINMAXINFO: {
            const auto least = least_folder_dialog(m_dialog);
            reinterpret_cast<MINMAXINFO*>(lparam)->ptMinTrackSize = {least.cx, least.cy};
            return TRUE;
        }
        default:
            return FALSE;
    }
}

bool FileNameDialog::takes_key(const MSG& message) {
    return message.message == WM_KEYDOWN && message.hwnd == tree_window() &&
           m_items->take_key(message.wParam);
}

INT_PTR procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    if (message == WM_INITDIALOG) {
        SetWindowLongPtrW(window, DWLP_USER, lparam);
        reinterpret_cast<FileNameDialog*>(lparam)->build(window);
        return FALSE;
    }
    auto* const dialog = reinterpret_cast<FileNameDialog*>(GetWindowLongPtrW(window, DWLP_USER));
    return dialog != nullptr ? dialog->hear(message, wparam, lparam) : FALSE;
}

}  // namespace

ChosenNames ask_for_files(const FileQuestion& question, const std::u16string& folder,
                          const FileNameRules& rules) {
    const auto frame = empty_template(WS_POPUP | WS_CAPTION | WS_SYSMENU | WS_CLIPCHILDREN |
                                      DS_CENTER | WS_THICKFRAME);
    FileNameDialog dialog(question, folder, rules);
    const auto pump = [&](HWND window) {
        return pump_dialog(window, [&](const MSG& typed) { return dialog.takes_key(typed); });
    };
    const auto answer = run_dialog(
        {nullptr, &frame, question.owner, procedure, reinterpret_cast<LPARAM>(&dialog)}, pump);
    return answer == IDOK ? dialog.take_chosen() : ChosenNames{};
}

}  // namespace tvutil2
