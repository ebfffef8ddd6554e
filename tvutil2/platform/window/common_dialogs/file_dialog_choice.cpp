// From OK to the answer of the dialog for files.
#include "tvutil2/platform/window/common_dialogs/file_dialog.h"
#include "tvutil2/platform/window/common_dialogs/file_layout.h"
#include "tvutil2/platform/window/common_dialogs/file_names.h"
#include "tvutil2/platform/window/common_dialogs/file_words.h"
#include "tvutil2/platform/window/controls/button.h"
#include "tvutil2/platform/window/controls/combo_box.h"
#include "tvutil2/platform/window/controls/control.h"
#include "tvutil2/platform/window/dialogs/dialogs.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/window.h"

#include <algorithm>

namespace tvutil2 {
namespace {

// What is typed with wildcards, and is no file's name.
std::u16string pattern_in(const FolderAnswer& answer) {
    if (answer.entries.size() != 1 || answer.entries[0].is_there) return {};
    const auto& path = answer.entries[0].name;
    auto name = last_part(path);
    return NamePattern::has_wildcards(name) ? name : std::u16string{};
}

bool has_focus(HWND control) {
    auto* const focus = GetFocus();
    return focus != nullptr && (focus == control || IsChild(control, focus) != 0);
}

}  // namespace

// Enter means what the person is at.
void FileDialog::press_ok() {
    if (has_focus(item(kFilePath))) return go_to_typed();
    if (has_focus(m_places->window())) {
        if (const auto place = m_places->selected(); !place.empty()) go_to(place);
        return;
    }
    const auto selected = m_list->selected();
    const bool is_at_folder = selected.size() == 1 && selected[0]->is_folder;
    if (is_at_folder && has_focus(m_list->window())) return activate();
    accept();
}

// Names that can't stand in a field as they are come from the selection.
std::vector<std::u16string> FileDialog::wanted_names() const {
    const auto typed = text_of(item(kFileName));
    if (typed == m_name_text && !typed.empty()) return m_name_names;
    return names_in(typed, m_question.takes_several);
}

void FileDialog::accept() {
    std::vector<std::u16string> paths;
    for (const auto& name : wanted_names()) {
        const auto path = path_in(m_folder, name);
        if (!path) {
            say(word(FolderWord::is_not_there), name, MB_OK | MB_ICONWARNING);
            return;
        }
        paths.push_back(*path);
    }
    if (paths.empty()) return;
    m_judged = paths[0];
    m_judging = disk().look_at(std::move(paths), m_name_reading);
}

bool FileDialog::may_be(const FolderEntry& found) const {
    const auto asks = [&](const char16_t* text, UINT icon) {
        return say(text, found.name, MB_YESNO | icon | MB_DEFBUTTON2) == IDYES;
    };
    if (!found.has_folder && m_rules.path_must_exist) {
        say(word(FolderWord::is_not_there), folder_above(found.name), MB_OK | MB_ICONWARNING);
        return false;
    }
    if (!found.is_there && m_rules.asks_to_create) {
        return asks(file_word(FileWord::creates, language()), MB_ICONQUESTION);
    }
    if (!found.is_there && m_rules.file_must_exist) {
        say(file_word(FileWord::is_not_there, language()), found.name, MB_OK | MB_ICONWARNING);
        return false;
    }
    const bool replaces = saves() && found.is_there && m_question.asks_to_replace;
    return !replaces || asks(word(FolderWord::replaces), MB_ICONWARNING);
}

void FileDialog::judge(const FolderAnswer& answer) {
    if (answer.entries.size() == 1 && answer.entries[0].is_folder) {
        fill_name(saves() ? m_question.name : u"", {m_question.name});
        return go_to(answer.entries[0].name);
    }
    if (const auto pattern = pattern_in(answer); !pattern.empty()) {
        m_list->show_files({pattern});
        return back_to_name();
    }
    const auto may_not = [this](const FolderEntry& found) {
        return found.is_folder || !may_be(found);
    };
    if (std::ranges::any_of(answer.entries, may_not)) return back_to_name();
    choose(answer.entries);
}

void FileDialog::choose(const std::vector<FolderEntry>& found) {
    for (const auto& each : found) m_chosen.paths.push_back(each.name);
    if (m_rules.is_read_only) {
        m_chosen.is_read_only = IsDlgButtonChecked(window(), kFileReadOnly) == BST_CHECKED;
    }
    if (part_refuses()) {
        m_chosen.paths.clear();
        return back_to_name();
    }
    EndDialog(window(), IDOK);
}

void FileDialog::back_to_name() {
    SetFocus(item(kFileName));
    SendMessageW(item(kFileName), CB_SETEDITSEL, 0, MAKELPARAM(0, 0xFFFF));
}

}  // namespace tvutil2
