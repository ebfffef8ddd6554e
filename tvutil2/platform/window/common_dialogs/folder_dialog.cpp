#include "tvutil2/platform/window/common_dialogs/folder_dialog.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/files/full_path.h"
#include "tvutil2/platform/process/message_box.h"
#include "tvutil2/platform/window/common_dialogs/disk_dialog.h"
#include "tvutil2/platform/window/common_dialogs/folder_items.h"
#include "tvutil2/platform/window/common_dialogs/folder_layout.h"
#include "tvutil2/platform/window/common_dialogs/folder_words.h"
#include "tvutil2/platform/window/controls/control.h"
#include "tvutil2/platform/window/controls/edit.h"
#include "tvutil2/platform/window/controls/tree_view.h"
#include "tvutil2/platform/window/dialogs/dialogs.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/show.h"
#include "tvutil2/platform/window/window.h"

#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace tvutil2 {
namespace {

class FolderDialog : public DiskDialog {
  public:
    explicit FolderDialog(BROWSEINFOW& info) : m_info(info) {}

    /// Null when the person cancels.
    [[nodiscard]] ItemList ask();

  private:
    void build() override;
    void lay_out() override { lay_out_folder_dialog(window()); }
    void icons_changed() override { show_icons(); }
    [[nodiscard]] SIZE least_size() const override { return least_folder_dialog(window()); }
    LRESULT notified(NMHDR& header) override;
    void commanded(int id, WORD code) override;
    void answered(FolderAnswer answer) override;
    void unanswered(std::uint64_t question) override;
    bool hear_other(UINT message, WPARAM wparam, LPARAM lparam) override;
    bool takes(const MSG& message) override;

    [[nodiscard]] bool has(UINT flag) const { return (m_info.ulFlags & flag) != 0; }
    [[nodiscard]] HWND tree_window() const { return item(kFolderTree); }
    int call(UINT message, LPARAM parameter) const {
        return m_info.lpfn != nullptr ? m_info.lpfn(window(), message, parameter, m_info.lParam)
                                      : 0;
    }
    void enable_ok(bool enable) { EnableWindow(item(IDOK), enable ? TRUE : FALSE); }
    void warn(FolderWord which, const std::u16string& path) const {
        say(word(which), path, MB_OK | MB_ICONWARNING);
    }

    LRESULT label_edited(const NMTVDISPINFOW& told);
    void selection_changed();
    void show_icons();
    void show_path();
    void accept();
    void accept_selected();
    void accept_typed(const FolderAnswer& answer);
    void name_result(std::u16string_view name);
    void make_folder();
    void take_made(const FolderAnswer& answer);
    void take_renamed(const FolderAnswer& answer);
    bool set_selection(bool is_path, LPARAM what, bool opens);

    BROWSEINFOW& m_info;
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

ItemList FolderDialog::ask() {
    const auto answer =
        run(m_info.hwndOwner, has(BIF_NEWDIALOGSTYLE) ? WS_THICKFRAME : DWORD{DS_MODALFRAME});
    return answer == IDOK ? std::move(m_result) : nullptr;
}

void FolderDialog::build() {
    const bool is_new = has(BIF_NEWDIALOGSTYLE);
    FolderParts parts;
    parts.caption = word(FolderWord::caption);
    if (m_info.lpszTitle != nullptr) parts.title = m_info.lpszTitle;
    if (has(BIF_EDITBOX)) parts.edit_label = word(FolderWord::label);
    parts.has_make = is_new && !has(BIF_NONEWFOLDERBUTTON);
    build_folder_dialog(window(), parts, language());
    show_icons();
    m_tree = std::make_unique<FolderItems>(tree_window(), disk(), has(BIF_BROWSEINCLUDEFILES),
                                           language());
    m_tree->add_roots(m_info.pidlRoot);
    SetFocus(tree_window());
    call(BFFM_INITIALIZED, 0);
}

void FolderDialog::show_icons() {
    SendMessageW(tree_window(), TVM_SETIMAGELIST, 0, reinterpret_cast<LPARAM>(icons()));
}

void FolderDialog::show_path() {
    m_is_typed = false;
    if (!has(BIF_EDITBOX)) return;
    m_is_filling = true;
    SetDlgItemTextW(window(), kFolderEdit, m_tree->path_of(m_tree->selected()).c_str());
    m_is_filling = false;
}

void FolderDialog::selection_changed() {
    auto* const selected = m_tree->selected();
    const auto list = m_tree->list_of(selected);
    const auto* const node = m_tree->node(selected);
    const bool has_path = !m_tree->path_of(selected).empty();
    enable_ok(list != nullptr && (has_path || !has(BIF_RETURNONLYFSDIRS)));
    const auto can_make = has_path && node->kind != FolderKind::file;
    if (auto* const make = item(kFolderMake)) EnableWindow(make, can_make ? TRUE : FALSE);
    show_path();
    if (list != nullptr) call(BFFM_SELCHANGED, reinterpret_cast<LPARAM>(list.get()));
}

LRESULT FolderDialog::label_edited(const NMTVDISPINFOW& told) {
    const auto* const node = m_tree->node(told.item.hItem);
    if (told.item.pszText == nullptr || node == nullptr || node->name == told.item.pszText) {
        return FALSE;
    }
    m_renamed = told.item.hItem;
    m_rename = disk().rename(m_tree->path_of(m_renamed), told.item.pszText);
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
    m_make = disk().make(folder, word(FolderWord::new_folder));
}

void FolderDialog::name_result(std::u16string_view name) {
    if (m_info.pszDisplayName == nullptr) return;
    m_info.pszDisplayName[name.copy(m_info.pszDisplayName, MAX_PATH - 1)] = 0;
}

void FolderDialog::accept_selected() {
    auto* const selected = m_tree->selected();
    m_result = m_tree->list_of(selected);
    if (m_result == nullptr) return;
    name_result(m_tree->node(selected)->name);
    EndDialog(window(), IDOK);
}

// What is typed hangs on what is selected.
void FolderDialog::accept() {
    if (!m_is_typed) return accept_selected();
    const auto typed = text_of(item(kFolderEdit));
    if (typed.empty()) return accept_selected();
    const bool is_full =
        typed.size() > 1 && (typed[1] == u':' || typed[0] == u'\\' || typed[0] == u'/');
    const auto selected = m_tree->path_of(m_tree->selected());
    const auto path = is_full || selected.empty() ? typed : joined(selected, typed);
    m_probe = disk().probe(path);
    enable_ok(false);
}

void FolderDialog::accept_typed(const FolderAnswer& answer) {
    enable_ok(true);
    char16_t full[1024];
    const bool is_there =
        answer.error == 0 && GetFullPathNameW(answer.path.c_str(), 1024, full, nullptr) - 1 < 1023;
    if (is_there) {
        m_result = item_list_of(full);
        name_result(last_part(full));
        EndDialog(window(), IDOK);
        return;
    }
    auto typed = text_of(item(kFolderEdit));
    if (has(BIF_VALIDATE) && m_info.lpfn != nullptr) {
        if (call(BFFM_VALIDATEFAILEDW, reinterpret_cast<LPARAM>(typed.data())) == 0) {
            accept_selected();
        }
        return;
    }
    warn(FolderWord::is_not_there, typed);
    SetFocus(item(kFolderEdit));
}

void FolderDialog::take_made(const FolderAnswer& answer) {
    m_make = 0;
    if (answer.error != 0) return warn(FolderWord::cannot_be_made, answer.path);
    const auto name = last_part(answer.path);
    if (auto* const made = m_tree->add_made(m_made_in, name)) {
        SetFocus(tree_window());
        SendMessageW(tree_window(), TVM_EDITLABELW, 0, reinterpret_cast<LPARAM>(made));
    }
}

void FolderDialog::take_renamed(const FolderAnswer& answer) {
    m_rename = 0;
    if (answer.error != 0) return warn(FolderWord::cannot_be_named, last_part(answer.path));
    m_tree->rename(m_renamed, last_part(answer.path));
    selection_changed();
}

void FolderDialog::answered(FolderAnswer answer) {
    if (m_tree->take(answer)) return;
    if (answer.question == m_probe) {
        m_probe = 0;
        accept_typed(answer);
    } else if (answer.question == m_make) {
        take_made(answer);
    } else if (answer.question == m_rename) {
        take_renamed(answer);
    }
}

void FolderDialog::unanswered(std::uint64_t question) {
    if (m_tree->say_silent(question)) return;
    if (question == m_probe) {
        enable_ok(true);
        warn(FolderWord::is_silent, text_of(item(kFolderEdit)));
    } else if (question == m_make) {
        warn(FolderWord::is_silent, m_tree->path_of(m_made_in));
    } else if (question == m_rename) {
        warn(FolderWord::is_silent, m_tree->path_of(m_renamed));
    }
}

void FolderDialog::commanded(int id, WORD code) {
    switch (id) {
        case IDOK:
            accept();
            return;
        case IDCANCEL:
            EndDialog(window(), IDCANCEL);
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
bool FolderDialog::hear_other(UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
        case BFFM_ENABLEOK:
            enable_ok(lparam != 0);
            return true;
        case BFFM_SETSELECTIONW:
        case BFFM_SETEXPANDED:
            set_selection(wparam != 0, lparam, message == BFFM_SETEXPANDED);
            return true;
        case BFFM_SETSTATUSTEXTW:
            SetDlgItemTextW(window(), kFolderTitle, reinterpret_cast<const char16_t*>(lparam));
            lay_out();
            return true;
        case BFFM_SETOKTEXT:
            SetDlgItemTextW(window(), IDOK, reinterpret_cast<const char16_t*>(wparam));
            lay_out();
            return true;
        default:
            return false;
    }
}

bool FolderDialog::takes(const MSG& message) {
    if (message.message != WM_KEYDOWN || message.hwnd != tree_window()) return false;
    if (message.wParam != VK_F2 || !has(BIF_NEWDIALOGSTYLE))
        return m_tree->take_key(message.wParam);
    SendMessageW(tree_window(), TVM_EDITLABELW, 0, reinterpret_cast<LPARAM>(m_tree->selected()));
    return true;
}

}  // namespace
}  // namespace tvutil2

PIDLIST_ABSOLUTE SHBrowseForFolderW(BROWSEINFOW* info) {
    if (info == nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    info->iImage = 0;
    return tvutil2::FolderDialog(*info).ask().release();
}
