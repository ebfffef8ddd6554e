#include "tvutil2/platform/window/common_dialogs/folder_dialog.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/locale.h"
#include "tvutil2/platform/files/full_path.h"
#include "tvutil2/platform/process/message_box.h"
#include "tvutil2/platform/window/common_dialogs/folder_items.h"
#include "tvutil2/platform/window/common_dialogs/folder_layout.h"
#include "tvutil2/platform/window/common_dialogs/folder_words.h"
#include "tvutil2/platform/window/controls/control.h"
#include "tvutil2/platform/window/controls/edit.h"
#include "tvutil2/platform/window/controls/tree_view.h"
#include "tvutil2/platform/window/dialogs/built_dialog.h"
#include "tvutil2/platform/window/dialogs/run_dialog.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/show.h"
#include "tvutil2/platform/window/window.h"

#include <memory>
#include <optional>
#include <string>

namespace tvutil2 {
namespace {

constexpr UINT kAnswered = WM_APP + 1;

class FolderDialog {
  public:
    explicit FolderDialog(BROWSEINFOW& info)
        : m_info(info), m_language(LANGIDFROMLCID(GetThreadLocale())) {}
    ~FolderDialog() {
        if (m_icons != nullptr) ImageList_Destroy(m_icons);
    }
    FolderDialog(const FolderDialog&) = delete;
    FolderDialog& operator=(const FolderDialog&) = delete;

    void build(HWND dialog);
    INT_PTR hear(UINT message, WPARAM wparam, LPARAM lparam);
    /// A key that no control gets.
    bool takes_key(const MSG& message);
    [[nodiscard]] ItemList take_result() { return std::move(m_result); }

  private:
    [[nodiscard]] bool has(UINT flag) const { return (m_info.ulFlags & flag) != 0; }
    [[nodiscard]] HWND tree_window() const { return GetDlgItem(m_dialog, kFolderTree); }
    [[nodiscard]] const char16_t* word(FolderWord which) const {
        return folder_word(which, m_language);
    }
    int call(UINT message, LPARAM parameter) const {
        return m_info.lpfn != nullptr ? m_info.lpfn(m_dialog, message, parameter, m_info.lParam)
                                      : 0;
    }
    void enable_ok(bool enable) { EnableWindow(GetDlgItem(m_dialog, IDOK), enable ? TRUE : FALSE); }

    LRESULT notified(NMHDR& header);
    LRESULT label_edited(const NMTVDISPINFOW& told);
    void commanded(int id, WORD code);
    bool handle_message(UINT message, WPARAM wparam, LPARAM lparam);
    void selection_changed();
    void show_path();
    void take_answers();
    void take_other(const FolderAnswer& answer);
    void accept();
    void accept_selected();
    void accept_typed(const FolderAnswer& answer);
    void make_folder();
    void say(FolderWord which, const std::u16string& path) const;
    bool set_selection(bool is_path, LPARAM what, bool opens);

    BROWSEINFOW& m_info;
    LANGID m_language;
    HWND m_dialog = nullptr;
    HIMAGELIST m_icons = nullptr;
    std::unique_ptr<FolderQuestions> m_disk;
    std::unique_ptr<FolderItems> m_tree;
    bool m_is_typed = false;  ///< the person has changed the edit box since the selection
    bool m_is_filling = false;
    std::uint64_t m_probe = 0;  ///< the question of OK, under way
    std::uint64_t m_make = 0;
    HTREEITEM m_made_in = nullptr;
    std::uint64_t m_rename = 0;
    HTREEITEM m_renamed = nullptr;
    ItemList m_result;
};

void FolderDialog::build(HWND dialog) {
    m_dialog = dialog;
    const bool is_new = has(BIF_NEWDIALOGSTYLE);
    FolderParts parts;
    parts.caption = word(FolderWord::caption);
    if (m_info.lpszTitle != nullptr) parts.title = m_info.lpszTitle;
    if (has(BIF_EDITBOX)) parts.edit_label = word(FolderWord::label);
    parts.has_make = is_new && !has(BIF_NONEWFOLDERBUTTON);
    build_folder_dialog(dialog, parts, m_language);
    m_icons = make_folder_icons(GetDpiForWindow(dialog));
    SendMessageW(tree_window(), TVM_SETIMAGELIST, 0, reinterpret_cast<LPARAM>(m_icons));
    m_disk = std::make_unique<FolderQuestions>(dialog, kAnswered);
    m_tree = std::make_unique<FolderItems>(tree_window(), *m_disk, has(BIF_BROWSEINCLUDEFILES),
                                           m_language);
    m_tree->add_roots(m_info.pidlRoot);
    SetFocus(tree_window());
    call(BFFM_INITIALIZED, 0);
}

void FolderDialog::say(FolderWord which, const std::u16string& path) const {
    std::u16string text = word(which);
    if (const auto place = text.find(u"%s"); place != std::u16string::npos) {
        text.replace(place, 2, shown_name(path));
    }
    MessageBoxW(m_dialog, text.c_str(), word(FolderWord::caption), MB_OK | MB_ICONWARNING);
}

void FolderDialog::show_path() {
    m_is_typed = false;
    if (!has(BIF_EDITBOX)) return;
    m_is_filling = true;
    SetDlgItemTextW(m_dialog, kFolderEdit, m_tree->path_of(m_tree->selected()).c_str());
    m_is_filling = false;
}

void FolderDialog::selection_changed() {
    auto* const item = m_tree->selected();
    const auto list = m_tree->list_of(item);
    const auto* const node = m_tree->node(item);
    const bool has_path = !m_tree->path_of(item).empty();
    enable_ok(list != nullptr && (has_path || !has(BIF_RETURNONLYFSDIRS)));
    const auto can_make = has_path && node->kind != FolderKind::file;
    if (auto* const make = GetDlgItem(m_dialog, kFolderMake)) {
        EnableWindow(make, can_make ? TRUE : FALSE);
    }
    show_path();
    if (list != nullptr) call(BFFM_SELCHANGED, reinterpret_cast<LPARAM>(list.get()));
}

LRESULT FolderDialog::label_edited(const NMTVDISPINFOW& told) {
    const auto* const node = m_tree->node(told.item.hItem);
    if (told.item.pszText == nullptr || node == nullptr || node->name == told.item.pszText) {
        return FALSE;
    }
    m_renamed = told.item.hItem;
    m_rename = m_disk->rename(m_tree->path_of(m_renamed), told.item.pszText);
    // The text follows when it has happened.
    return FALSE;
}

LRESULT FolderDialog::notified(NMHDR& header) {
    if (header.idFrom != kFolderTree || m_tree == nullptr) return 0;
    switch (header.code) {
        case TVN_SELCHANGEDW:
            selection_changed();
            return 0;
        case TVN_ITEMEXPANDINGW: {
            const auto& told = reinterpret_cast<const NMTREEVIEWW&>(header);
            if (told.action == TVE_EXPAND) m_tree->open(told.itemNew.hItem);
            return 0;
        }
        case TVN_BEGINLABELEDITW: {
            const auto* const node =
                m_tree->node(reinterpret_cast<const NMTVDISPINFOW&>(header).item.hItem);
            const bool may_be =
                node != nullptr && !node->is_fixed && node->kind == FolderKind::folder;
            return may_be ? FALSE : TRUE;
        }
        case TVN_ENDLABELEDITW:
            return label_edited(reinterpret_cast<const NMTVDISPINFOW&>(header));
        default:
            return 0;
    }
}

void FolderDialog::make_folder() {
    const auto folder = m_tree->path_of(m_tree->selected());
    if (folder.empty() || m_make != 0) return;
    m_made_in = m_tree->selected();
    m_make = m_disk->make(folder, word(FolderWord::new_folder));
}

void FolderDialog::accept_selected() {
    auto* const item = m_tree->selected();
    m_result = m_tree->list_of(item);
    if (m_result == nullptr) return;
    if (m_info.pszDisplayName != nullptr) {
        const auto& name = m_tree->node(item)->name;
        m_info.pszDisplayName[name.copy(m_info.pszDisplayName, MAX_PATH - 1)] = 0;
    }
    EndDialog(m_dialog, IDOK);
}

// What is typed hangs on what is selected.
void FolderDialog::accept() {
    if (!m_is_typed) return accept_selected();
    const auto typed = text_of(GetDlgItem(m_dialog, kFolderEdit));
    if (typed.empty()) return accept_selected();
    const bool is_full =
        typed.size() > 1 && (typed[1] == u':' || typed[0] == u'\\' || typed[0] == u'/');
    const auto selected = m_tree->path_of(m_tree->selected());
    const auto path = is_full || selected.empty() ? typed : joined(selected, typed);
    m_probe = m_disk->probe(path);
    enable_ok(false);
}

void FolderDialog::accept_typed(const FolderAnswer& answer) {
    enable_ok(true);
    char16_t full[1024];
    const bool is_there =
        answer.error == 0 && GetFullPathNameW(answer.path.c_str(), 1024, full, nullptr) - 1 < 1023;
    if (is_there) {
        m_result = item_list_of(full);
        if (m_info.pszDisplayName != nullptr) {
            const std::u16string path = full;
            const auto name = path.substr(path.size() > 3 ? path.rfind(u'\\') + 1 : 0);
            m_info.pszDisplayName[name.copy(m_info.pszDisplayName, MAX_PATH - 1)] = 0;
        }
        EndDialog(m_dialog, IDOK);
        return;
    }
    auto typed = text_of(GetDlgItem(m_dialog, kFolderEdit));
    if (has(BIF_VALIDATE) && m_info.lpfn != nullptr) {
        if (call(BFFM_VALIDATEFAILEDW, reinterpret_cast<LPARAM>(typed.data())) == 0) {
            accept_selected();
        }
        return;
    }
    say(FolderWord::is_not_there, typed);
    SetFocus(GetDlgItem(m_dialog, kFolderEdit));
}

void FolderDialog::take_other(const FolderAnswer& answer) {
    if (answer.question == m_probe) {
        m_probe = 0;
        accept_typed(answer);
    } else if (answer.question == m_make) {
        m_make = 0;
        if (answer.error != 0) return say(FolderWord::cannot_be_made, answer.path);
        const auto name = answer.path.substr(answer.path.rfind(u'\\') + 1);
        if (auto* const item = m_tree->add_made(m_made_in, name)) {
            SetFocus(tree_window());
            SendMessageW(tree_window(), TVM_EDITLABELW, 0, reinterpret_cast<LPARAM>(item));
        }
    } else if (answer.question == m_rename) {
        m_rename = 0;
        if (answer.error != 0) return say(FolderWord::cannot_be_made, answer.path);
        m_tree->rename(m_renamed, answer.path.substr(answer.path.rfind(u'\\') + 1));
        selection_changed();
    }
}

void FolderDialog::take_answers() {
    while (auto answer = m_disk->take()) {
        if (!m_tree->take(*answer)) take_other(*answer);
    }
}

void FolderDialog::commanded(int id, WORD code) {
    switch (id) {
        case IDOK:
            accept();
            return;
        case IDCANCEL:
            EndDialog(m_dialog, IDCANCEL);
            return;
        case kFolderMake:
            make_folder();
            return;
        case kFolderEdit:
            if (code != EN_CHANGE || m_is_filling) return;
            m_is_typed = true;
            enable_ok(true);
            return;
        default:
            return;
    }
}

bool FolderDialog::set_selection(bool is_path, LPARAM what, bool opens) {
    if (what == 0) return false;
    if (!is_path) return m_tree->select(reinterpret_cast<PCIDLIST_ABSOLUTE>(what), opens);
    char16_t full[1024];
    const auto length =
        GetFullPathNameW(reinterpret_cast<const char16_t*>(what), 1024, full, nullptr);
    if (length == 0 || length >= 1024) return false;
    return m_tree->select_path(full, opens);
}

// The messages that programs send.
bool FolderDialog::handle_message(UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
        case BFFM_ENABLEOK:
            enable_ok(lparam != 0);
            return true;
        case BFFM_SETSELECTIONW:
        case BFFM_SETEXPANDED:
            set_selection(wparam != 0, lparam, message == BFFM_SETEXPANDED);
            return true;
        case BFFM_SETSTATUSTEXTW:
            SetDlgItemTextW(m_dialog, kFolderTitle, reinterpret_cast<const char16_t*>(lparam));
            lay_out_folder_dialog(m_dialog);
            return true;
        case BFFM_SETOKTEXT:
            SetDlgItemTextW(m_dialog, IDOK, reinterpret_cast<const char16_t*>(wparam));
            lay_out_folder_dialog(m_dialog);
            return true;
        default:
            return false;
    }
}

INT_PTR FolderDialog::hear(UINT message, WPARAM wparam, LPARAM lparam) {
    if (handle_message(message, wparam, lparam)) return TRUE;
    switch (message) {
        case WM_NOTIFY:
            SetWindowLongPtrW(m_dialog, DWLP_MSGRESULT,
                              notified(*reinterpret_cast<NMHDR*>(lparam)));
            return TRUE;
        case WM_COMMAND:
            commanded(LOWORD(wparam), HIWORD(wparam));
            return TRUE;
        case kAnswered:
            take_answers();
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

bool FolderDialog::takes_key(const MSG& message) {
    if (message.message != WM_KEYDOWN || message.hwnd != tree_window()) return false;
    if (message.wParam != VK_F2 || !has(BIF_NEWDIALOGSTYLE))
        return m_tree->take_key(message.wParam);
    SendMessageW(tree_window(), TVM_EDITLABELW, 0, reinterpret_cast<LPARAM>(m_tree->selected()));
    return true;
}

INT_PTR procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    if (message == WM_INITDIALOG) {
        SetWindowLongPtrW(window, DWLP_USER, lparam);
        reinterpret_cast<FolderDialog*>(lparam)->build(window);
        return FALSE;
    }
    auto* const dialog = reinterpret_cast<FolderDialog*>(GetWindowLongPtrW(window, DWLP_USER));
    return dialog != nullptr ? dialog->hear(message, wparam, lparam) : FALSE;
}

}  // namespace
}  // namespace tvutil2

PIDLIST_ABSOLUTE SHBrowseForFolderW(BROWSEINFOW* info) {
    if (info == nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    info->iImage = 0;
    const bool is_sized = (info->ulFlags & BIF_NEWDIALOGSTYLE) != 0;
    const auto frame =
        tvutil2::empty_template(WS_POPUP | WS_CAPTION | WS_SYSMENU | WS_CLIPCHILDREN | DS_CENTER |
                                (is_sized ? WS_THICKFRAME : DS_MODALFRAME));
    tvutil2::FolderDialog dialog(*info);
    const auto pump = [&](HWND window) {
        return tvutil2::pump_dialog(window,
                                    [&](const MSG& typed) { return dialog.takes_key(typed); });
    };
    const auto answer = tvutil2::run_dialog(
        {nullptr, &frame, info->hwndOwner, tvutil2::procedure, reinterpret_cast<LPARAM>(&dialog)},
        pump);
    return answer == IDOK ? dialog.take_result().release() : nullptr;
}
