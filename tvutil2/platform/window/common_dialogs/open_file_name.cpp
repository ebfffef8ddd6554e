#include "tvutil2/platform/window/common_dialogs/open_file_name.h"

#include "tvutil2/platform/files/full_path.h"
#include "tvutil2/platform/window/common_dialogs/desktop_choice.h"
#include "tvutil2/platform/window/common_dialogs/file_filters.h"
#include "tvutil2/platform/window/common_dialogs/file_record.h"
#include "tvutil2/platform/window/screen.h"

#include <algorithm>
#include <string>
#include <vector>

namespace tvutil2 {
namespace {

thread_local DWORD g_error = 0;

bool fail(DWORD error) {
    g_error = error;
    return false;
}

std::u16string text_at(const char16_t* text) {
    return text != nullptr ? text : u"";
}

FileQuestion question_of(const OPENFILENAMEW& asked, bool saves) {
    FileQuestion question;
    question.kind = saves ? FileQuestion::Kind::save : FileQuestion::Kind::open;
    question.owner = asked.hwndOwner;
    question.title = text_at(asked.lpstrTitle);
    question.name = text_at(asked.lpstrFile);
    question.filters = filters_in(asked.lpstrFilter);
    const auto last = std::max<std::size_t>(question.filters.size(), 1);
    question.filter = std::clamp<std::size_t>(asked.nFilterIndex, 1, last) - 1;
    question.takes_several = !saves && (asked.Flags & OFN_ALLOWMULTISELECT) != 0;
    question.asks_to_replace = saves && (asked.Flags & OFN_OVERWRITEPROMPT) != 0;
    question.shows_hidden = (asked.Flags & OFN_FORCESHOWHIDDEN) != 0;
    return question;
}

FileNameRules rules_of(const OPENFILENAMEW& asked, bool saves) {
    const auto has = [&](DWORD flag) { return (asked.Flags & flag) != 0; };
    FileNameRules rules;
    rules.reading.extension = text_at(asked.lpstrDefExt);
    rules.reading.follows_links = !saves && !has(OFN_NODEREFERENCELINKS);
    rules.extension_follows_filter = asked.lpstrDefExt != nullptr;
    rules.asks_to_create = !saves && has(OFN_CREATEPROMPT);
    rules.file_must_exist = !saves && (has(OFN_FILEMUSTEXIST) || rules.asks_to_create);
    rules.path_must_exist = has(OFN_PATHMUSTEXIST) || rules.file_must_exist;
    if (!saves && !has(OFN_HIDEREADONLY)) rules.is_read_only = has(OFN_READONLY);
    return rules;
}

// Where to begin: the folder of the name at first, or the one that the caller names.
std::u16string first_folder(const OPENFILENAMEW& asked, std::u16string& name) {
    const auto separator = name.find_last_of(u"\\/");
    if (separator != std::u16string::npos) {
        auto folder = name.substr(0, separator + 1);
        name.erase(0, separator + 1);
        return folder;
    }
    return text_at(asked.lpstrInitialDir);
}

std::u16string full(const std::u16string& path) {
    char16_t buffer[4096];
    const auto length = GetFullPathNameW(path.c_str(), 4096, buffer, nullptr);
    return length > 0 && length < 4096 ? std::u16string(buffer, length) : path;
}

bool give(OPENFILENAMEW& asked, const ChosenNames& chosen) {
    return put_choice(asked, chosen) || fail(FNERR_BUFFERTOOSMALL);
}

ChosenNames ask_with_part(FileDialog& dialog, OPENFILENAMEW& asked) {
    FileHook part(asked);
    if (const auto error = part.find(); error != 0) {
        g_error = error;
        return {};
    }
    dialog.add_part(part, [&](const ChosenNames& chosen) { return put_choice(asked, chosen); });
    RecordAtFirst at_first(asked);
    auto chosen = dialog.ask();
    if (!chosen.paths.empty()) at_first.keep_choice();
    if (part.has_failed()) g_error = CDERR_INITIALIZATION;
    return chosen;
}

bool choose(OPENFILENAMEW* asked, bool saves) {
    g_error = 0;
    if (asked == nullptr || asked->lStructSize != sizeof *asked) return fail(CDERR_STRUCTSIZE);
    if (asked->lpstrFile == nullptr) return fail(FNERR_BUFFERTOOSMALL);
    if (display() == nullptr) return fail(CDERR_DIALOGFAILURE);
    auto question = question_of(*asked, saves);
    const auto folder = first_folder(*asked, question.name);
    const bool has_part = FileHook::is_wanted(*asked);
    const auto rules = rules_of(*asked, saves);
    auto chosen = has_part ? std::nullopt : ask_desktop(question, folder, rules);
    if (!chosen) {
        FileDialog dialog(question, folder.empty() ? folder : full(folder), rules);
        chosen = has_part ? ask_with_part(dialog, *asked) : dialog.ask();
    }
    return !chosen->paths.empty() && give(*asked, *chosen);
}

}  // namespace
}  // namespace tvutil2

BOOL GetOpenFileNameW(OPENFILENAMEW* asked) {
    return tvutil2::choose(asked, false) ? TRUE : FALSE;
}

BOOL GetSaveFileNameW(OPENFILENAMEW* asked) {
    return tvutil2::choose(asked, true) ? TRUE : FALSE;
}

DWORD CommDlgExtendedError() {
    return tvutil2::g_error;
}
