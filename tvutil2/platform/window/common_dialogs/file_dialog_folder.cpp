// Where the dialog for files is, and what the person changes there.
#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/window/common_dialogs/file_dialog.h"
#include "tvutil2/platform/window/common_dialogs/file_layout.h"
#include "tvutil2/platform/window/common_dialogs/file_names.h"
#include "tvutil2/platform/window/common_dialogs/shown_name.h"
#include "tvutil2/platform/window/controls/control.h"
#include "tvutil2/platform/window/dialogs/dialogs.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/timers.h"

#include <algorithm>
#include <utility>

namespace tvutil2 {

// What was on its way to another folder is let go.
void FileDialog::go_to(const std::u16string& folder, std::set<std::u16string> selects) {
    m_folder = folder;
    m_judging = 0;
    m_names_made = false;
    SetDlgItemTextW(window(), kFilePath, shown_name(folder).c_str());
    m_list->begin(std::move(selects));
    m_places->follow(folder);
    KillTimer(window(), kChangeTimer);
    read();
    tell_part(CDN_FOLDERCHANGE);
}

void FileDialog::read() {
    m_reading = disk().read(m_folder);
    m_reading_from = GetTickCount();
}

void FileDialog::go_to_typed() {
    const auto typed = text_of(item(kFilePath));
    if (const auto path = path_in(m_folder, typed)) {
        go_to(*path);
        SetFocus(m_list->window());
    } else {
        say(word(FolderWord::is_not_there), typed, MB_OK | MB_ICONWARNING);
    }
}

void FileDialog::go_up() {
    if (m_folder.empty()) return;
    const auto above = folder_above(m_folder);
    if (above != m_folder) go_to(above, {last_part(m_folder)});
}

void FileDialog::read_again(std::set<std::u16string> selects) {
    if (m_folder.empty()) return;
    KillTimer(window(), kChangeTimer);
    m_list->begin_again(std::move(selects));
    read();
}

// Changes seldom come alone, and a large folder isn't read all the time.
void FileDialog::folder_changed() {
    constexpr DWORD kLeastWait = 250;
    constexpr DWORD kMostWait = 10'000;
    const auto wait = std::clamp(4 * m_reading_took, kLeastWait, kMostWait);
    SetTimer(window(), kChangeTimer, wait, nullptr);
}

void FileDialog::take_part(FolderAnswer answer) {
    const bool is_last = !answer.has_more;
    m_list->take(std::move(answer));
    if (!is_last) return;
    m_reading_took = GetTickCount() - m_reading_from;
    if (std::exchange(m_names_made, false)) m_list->edit_name();
}

void FileDialog::make_folder() {
    if (m_folder.empty() || m_making != 0) return;
    m_making = disk().make(m_folder, word(FolderWord::new_folder));
}

void FileDialog::take_made(const FolderAnswer& answer) {
    m_making = 0;
    if (answer.error != 0) {
        say(word(FolderWord::cannot_be_made), answer.path, MB_OK | MB_ICONWARNING);
        return;
    }
    read_again({last_part(answer.path)});
    m_names_made = true;
    SetFocus(m_list->window());
}

// The row follows when it has happened.
void FileDialog::rename(const LVITEMW& named) {
    const auto* const entry = m_list->focused();
    if (named.pszText == nullptr || entry == nullptr || m_renaming != 0) return;
    if (shown_name(entry->name) == named.pszText) return;
    m_renaming = disk().rename(joined(m_folder, entry->name), named.pszText);
}

void FileDialog::take_renamed(const FolderAnswer& answer) {
    m_renaming = 0;
    if (answer.error != 0) {
        say(word(FolderWord::cannot_be_named), last_part(answer.path), MB_OK | MB_ICONWARNING);
        SetFocus(m_list->window());
    } else {
        read_again({last_part(answer.path)});
    }
}

}  // namespace tvutil2
