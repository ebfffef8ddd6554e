#include "tvutil2/platform/window/common_dialogs/file_dialog.h"

#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/window/common_dialogs/file_filters.h"
#include "tvutil2/platform/window/common_dialogs/file_layout.h"
#include "tvutil2/platform/window/common_dialogs/file_names.h"
#include "tvutil2/platform/window/common_dialogs/file_words.h"
#include "tvutil2/platform/window/common_dialogs/shown_name.h"
#include "tvutil2/platform/window/controls/button.h"
#include "tvutil2/platform/window/controls/combo_box.h"
#include "tvutil2/platform/window/controls/control.h"
#include "tvutil2/platform/window/dialogs/dialogs.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/timers.h"
#include "tvutil2/platform/window/window.h"

#include <algorithm>
#include <utility>

namespace tvutil2 {
namespace {

/// Posted once for however many items the selection gains and loses at once.
constexpr UINT kSelectionChanged = WM_APP + 2;

}  // namespace

NameReading reading_under(const FileNameRules& rules, const FileQuestion& question,
                          std::size_t filter) {
    auto reading = rules.reading;
    const bool is_given = filter == question.filter && !reading.extension.empty();
    if (!rules.extension_follows_filter || is_given) return reading;
    if (auto own = extension_under(question, filter); !own.empty()) {
        reading.extension = std::move(own);
    }
    return reading;
}

FileDialog::FileDialog(const FileQuestion& question, std::u16string folder, FileNameRules rules)
    : m_question(question),
      m_rules(std::move(rules)),
      m_name_reading(reading_under(m_rules, question, question.filter)),
      m_folder(std::move(folder)) {}

ChosenNames FileDialog::ask() {
    return run(m_question.owner, WS_THICKFRAME) == IDOK ? std::move(m_chosen) : ChosenNames{};
}

void FileDialog::build() {
    FileParts parts;
    parts.caption = m_question.title.empty()
                        ? word(saves() ? FolderWord::save_caption : FolderWord::open_caption)
                        : m_question.title.c_str();
    parts.ok = word(saves() ? FolderWord::save : FolderWord::open);
    parts.has_types = !m_question.filters.empty();
    parts.has_read_only = m_rules.is_read_only.has_value();
    parts.takes_several = m_question.takes_several;
    build_file_dialog(window(), parts, language());
    m_places = std::make_unique<FilePlaces>(item(kFilePlaces), icons(), language());
    m_list = std::make_unique<FileList>(item(kFileRows), icons(), language());
    m_list->show_hidden(m_question.shows_hidden);
    add_filters();
    add_drop_downs();
    if (m_rules.is_read_only.value_or(false)) {
        CheckDlgButton(window(), kFileReadOnly, BST_CHECKED);
    }
    if (!make_part()) {
        EndDialog(window(), -1);
        return;
    }
    m_finding_places = disk().places();
    if (!m_folder.empty()) go_to(m_folder);
    fill_name(m_question.name, {m_question.name});
    back_to_name();
    begin_part();
}

void FileDialog::lay_out() {
    lay_out_file_dialog(window());
    if (m_places) m_places->arrange();
    if (m_list) m_list->fit_names();
}

void FileDialog::icons_changed() {
    m_places->show_icons(icons());
    m_list->show_icons(icons());
}

SIZE FileDialog::least_size() const {
    return least_file_dialog(window());
}

void FileDialog::add_filters() {
    for (const auto& filter : m_question.filters) {
        SendMessageW(item(kFileTypes), CB_ADDSTRING, 0,
                     reinterpret_cast<LPARAM>(filter.name.c_str()));
    }
    SendMessageW(item(kFileTypes), CB_SETCURSEL, m_question.filter, 0);
    m_chosen.filter = m_question.filter;
    if (m_question.filter < m_question.filters.size()) {
        m_list->show_files(m_question.filters[m_question.filter].patterns);
    }
}

void FileDialog::add_drop_downs() {
    m_names = std::make_unique<DropDown>(item(kFileName), true, [this](const auto& typed) {
        constexpr std::size_t kMostNames = 12;
        auto names = m_list->names_like(typed, kMostNames);
        // Such a name can be chosen in the list alone.
        std::erase_if(names, [](const auto& name) { return shown_name(name) != name; });
        return names;
    });
    m_above = std::make_unique<DropDown>(item(kFilePath), false, [this](const auto&) {
        std::vector<std::u16string> folders;
        for (auto folder = m_folder;
             !folder.empty() && (folders.empty() || folder != folders.back());
             folder = folder_above(folder)) {
            folders.push_back(folder);
        }
        return folders;
    });
}

void FileDialog::type_changed() {
    const auto index = SendMessageW(item(kFileTypes), CB_GETCURSEL, 0, 0);
    if (index < 0 || index >= static_cast<LRESULT>(m_question.filters.size())) return;
    m_chosen.filter = static_cast<std::size_t>(index);
    m_list->show_files(m_question.filters[m_chosen.filter].patterns);
    const auto before = std::exchange(
        m_name_reading.extension, reading_under(m_rules, m_question, m_chosen.filter).extension);
    if (saves()) name_type(before);
    if (m_part != nullptr) m_part->tell_filter(m_chosen.filter);
}

// A name to be saved under goes from one filter's extension to the other's.
void FileDialog::name_type(const std::u16string& before) {
    auto name = text_of(item(kFileName));
    const auto stem = name.size() - std::min(name.size(), before.size());
    const auto& now = m_name_reading.extension;
    const bool is_typed =
        stem > 1 && name[stem - 1] == u'.' && _wcsicmp(name.c_str() + stem, before.c_str()) == 0;
    if (before.empty() || now.empty() || !is_typed) return;
    name.replace(stem, before.size(), now);
    fill_name(name, {name});
}

void FileDialog::fill_name(std::u16string text, std::vector<std::u16string> names) {
    SetDlgItemTextW(window(), kFileName, text.c_str());
    m_name_text = std::move(text);
    m_name_names = std::move(names);
}

// Files go into the field; folders are none that could be opened in their place.
void FileDialog::selection_changed() {
    m_is_selection_told = false;
    std::vector<std::u16string> names;
    for (const auto* const entry : m_list->selected()) {
        if (!entry->is_folder) names.push_back(entry->name);
    }
    if (names.empty()) return;
    auto text = shown_name(typed_names(names));
    fill_name(std::move(text), std::move(names));
    tell_part(CDN_SELCHANGE);
}

// A folder is entered, a file chosen.
void FileDialog::activate() {
    const auto* const entry = m_list->focused();
    if (entry == nullptr) return;
    if (entry->is_folder) return go_to(joined(m_folder, entry->name));
    selection_changed();
    accept();
}

LRESULT FileDialog::notified(NMHDR& header) {
    if (m_list && header.hwndFrom == m_list->window()) {
        if (m_list->notified(header) || m_list->is_filling()) return 0;
        if (header.code == LVN_ITEMCHANGED && !std::exchange(m_is_selection_told, true)) {
            PostMessageW(window(), kSelectionChanged, 0, 0);
        }
        if (header.code == LVN_ITEMACTIVATE) activate();
        if (header.code == LVN_ENDLABELEDITW) {
            rename(reinterpret_cast<const NMLVDISPINFOW&>(header).item);
        }
    }
    if (m_places && header.hwndFrom == m_places->window() && header.code == NM_CLICK) {
        if (const auto place = m_places->selected(); !place.empty()) go_to(place);
    }
    return 0;
}

void FileDialog::commanded(int id, WORD code) {
    switch (id) {
        case IDOK:
            return press_ok();
        case IDCANCEL:
            EndDialog(window(), IDCANCEL);
            return;
        case kFileUp:
            return go_up();
        case kFileMake:
            return make_folder();
        case kFileTypes:
            if (code == CBN_SELCHANGE) type_changed();
            return;
        case kFileName:
            if (m_names) m_names->heard(code);
            return;
        case kFilePath:
            if (m_above && m_above->heard(code)) go_to_typed();
            return;
        default:
            return;
    }
}

void FileDialog::answered(FolderAnswer answer) {
    const auto question = answer.question;
    if (question == m_reading) {
        if (answer.has_changed) return folder_changed();
        take_part(std::move(answer));
    } else if (question == m_finding_places) {
        m_places->take(std::move(answer.places));
        if (m_folder.empty()) go_to(m_places->usual());
        m_places->follow(m_folder);
    } else if (question == m_making) {
        take_made(answer);
    } else if (question == m_renaming) {
        take_renamed(answer);
    } else if (question == m_judging) {
        m_judging = 0;
        judge(answer);
    }
}

// What never came can be asked for again.
void FileDialog::unanswered(std::uint64_t question) {
    const auto warn = [this](const std::u16string& path) {
        say(word(FolderWord::is_silent), path, MB_OK | MB_ICONWARNING);
    };
    if (question == m_reading) {
        m_list->say(text_with_path(word(FolderWord::is_silent), last_part(m_folder)));
    } else if (question == m_judging) {
        m_judging = 0;
        warn(m_judged);
    } else if (question == m_making || question == m_renaming) {
        m_making = m_renaming = 0;
        warn(m_folder);
    }
}

bool FileDialog::hear_other(UINT message, WPARAM wparam, LPARAM lparam) {
    if (message == WM_TIMER && wparam == kChangeTimer) {
        // A name that is being changed stays where it is until then.
        if (!m_list->is_editing()) read_again();
        return true;
    }
    if (message != kSelectionChanged) return hear_program(message, wparam, lparam);
    selection_changed();
    return true;
}

}  // namespace tvutil2
