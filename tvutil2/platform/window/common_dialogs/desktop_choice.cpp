#include "tvutil2/platform/window/common_dialogs/desktop_choice.h"

#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/base/locale.h"
#include "tvutil2/platform/process/message_box.h"
#include "tvutil2/platform/window/common_dialogs/file_names.h"
#include "tvutil2/platform/window/common_dialogs/folder_words.h"
#include "tvutil2/platform/window/common_dialogs/look_at_file.h"
#include "tvutil2/platform/window/common_dialogs/shown_name.h"
#include "tvutil2/platform/window/dialogs/desktop_files.h"

#include <utility>

namespace tvutil2 {
namespace {

// The folder is asked for as it is written: a look-up on a disk that has gone might take for ever.
std::optional<ChosenNames> ask_once(FileQuestion question, const std::u16string& folder) {
    if (const auto host = host_path(folder, Lookup::none)) question.folder = *host;
    const auto answer = choose_files(std::move(question));
    if (!answer) return std::nullopt;
    ChosenNames chosen;
    chosen.filter = answer->filter;
    for (const auto& path : answer->paths) {
        if (auto text = platform_path(path)) chosen.paths.push_back(std::move(*text));
    }
    return chosen;
}

bool may_replace(const FileQuestion& question, const std::u16string& path) {
    const auto language = LANGIDFROMLCID(GetThreadLocale());
    const auto text = text_with_path(folder_word(FolderWord::replaces, language), path);
    const auto* const caption = question.title.empty()
                                    ? folder_word(FolderWord::save_caption, language)
                                    : question.title.c_str();
    return MessageBoxW(question.owner, text.c_str(), caption,
                       MB_YESNO | MB_ICONWARNING | MB_DEFBUTTON2) == IDYES;
}

}  // namespace

// The desktop asks about the name that was typed; what the longer name would replace is asked about
// here, and the desktop's dialog comes again where that is to stay.
std::optional<ChosenNames> ask_desktop(const FileQuestion& question, std::u16string folder,
                                       const FileNameRules& rules) {
    auto asked = question;
    for (;;) {
        auto chosen = ask_once(asked, folder);
        const bool saves = question.kind == FileQuestion::Kind::save;
        if (!chosen || !saves || chosen->paths.empty()) return chosen;
        auto& path = chosen->paths[0];
        const auto found = look_at_file(path, reading_under(rules, question, chosen->filter));
        const bool is_longer = found.name != path;
        folder = folder_above(path);
        asked.name = last_part(path);
        asked.filter = chosen->filter;
        path = found.name;
        const bool replaces = is_longer && found.is_there && question.asks_to_replace;
        if (!replaces || may_replace(question, path)) return chosen;
    }
}

}  // namespace tvutil2
