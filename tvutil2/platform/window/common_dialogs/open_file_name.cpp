#include "tvutil2/platform/window/common_dialogs/open_file_name.h"

#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/files/full_path.h"
#include "tvutil2/platform/window/common_dialogs/desktop_choice.h"
#include "tvutil2/platform/window/common_dialogs/file_filters.h"
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
    rules.extension = text_at(asked.lpstrDefExt);
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

// The name behind the last backslash begins there.
std::size_t name_in(const std::u16string& path) {
    return path.rfind(u'\\') + 1;
}

// What goes into lpstrFile, without the last zero. A file of another folder than the first one's
// is told by its whole path.
std::u16string in_buffer(const std::vector<std::u16string>& paths) {
    if (paths.size() == 1) return paths[0];
    const auto folder = paths[0].substr(0, name_in(paths[0]));
    auto text = folder.substr(0, std::max<std::size_t>(folder.size(), 1) - 1);
    if (text.size() == 2) text += u'\\';
    for (const auto& path : paths) {
        const bool is_inside = path.compare(0, name_in(path), folder) == 0;
        text += u'\0' + (is_inside ? path.substr(name_in(path)) : path);
    }
    return text + u'\0';
}

bool give(OPENFILENAMEW& asked, const ChosenNames& chosen) {
    const auto text = in_buffer(chosen.paths);
    if (text.size() >= asked.nMaxFile) {
        if (asked.nMaxFile > 0) {
            *asked.lpstrFile =
                static_cast<char16_t>(std::min<std::size_t>(text.size() + 1, 0xFFFF));
        }
        return fail(FNERR_BUFFERTOOSMALL);
    }
    asked.lpstrFile[text.copy(asked.lpstrFile, text.size())] = 0;
    const auto& first = chosen.paths[0];
    const auto several = chosen.paths.size() > 1;
    asked.nFileOffset = static_cast<WORD>(several ? text.find(u'\0') + 1 : name_in(first));
    const auto name = first.substr(name_in(first));
    const auto dot = name.rfind(u'.');
    const bool has_extension = dot != std::u16string::npos && dot > 0 && dot + 1 < name.size();
    asked.nFileExtension =
        has_extension && !several ? static_cast<WORD>(asked.nFileOffset + dot + 1) : WORD{0};
    asked.nFilterIndex = static_cast<DWORD>(chosen.filter + 1);
    asked.Flags &= ~OFN_EXTENSIONDIFFERENT;
    if (chosen.is_read_only) {
        asked.Flags = (asked.Flags & ~OFN_READONLY) | (*chosen.is_read_only ? OFN_READONLY : 0);
    }
    const auto wanted = text_at(asked.lpstrDefExt);
    if (!wanted.empty() &&
        (!has_extension || _wcsicmp(name.c_str() + dot + 1, wanted.c_str()) != 0)) {
        asked.Flags |= OFN_EXTENSIONDIFFERENT;
    }
    if (asked.lpstrFileTitle != nullptr && asked.nMaxFileTitle > 0) {
        asked.lpstrFileTitle[name.copy(asked.lpstrFileTitle, asked.nMaxFileTitle - 1)] = 0;
    }
    return true;
}

ChosenNames ask_with_part(FileDialog& dialog, OPENFILENAMEW& asked) {
    FileHook part(asked);
    if (const auto error = part.find(); error != 0) {
        g_error = error;
        return {};
    }
    dialog.add_part(part, [&](const ChosenNames& chosen) { return give(asked, chosen); });
    auto chosen = dialog.ask();
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
