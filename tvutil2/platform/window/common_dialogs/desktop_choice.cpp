#include "tvutil2/platform/window/common_dialogs/desktop_choice.h"

#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/base/locale.h"
#include "tvutil2/platform/base/service_thread.h"
#include "tvutil2/platform/process/message_box.h"
#include "tvutil2/platform/window/common_dialogs/file_names.h"
#include "tvutil2/platform/window/common_dialogs/folder_questions.h"
#include "tvutil2/platform/window/common_dialogs/folder_words.h"
#include "tvutil2/platform/window/common_dialogs/look_at_file.h"
#include "tvutil2/platform/window/common_dialogs/shown_name.h"
#include "tvutil2/platform/window/dialogs/answer_inbox.h"
#include "tvutil2/platform/window/dialogs/desktop_files.h"
#include "tvutil2/platform/window/dialogs/disabled_owner.h"
#include "tvutil2/platform/window/window.h"

#include <algorithm>
#include <memory>
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

const char16_t* caption_of(const FileQuestion& question, LANGID language) {
    if (!question.title.empty()) return question.title.c_str();
    const bool saves = question.kind == FileQuestion::Kind::save;
    return folder_word(saves ? FolderWord::save_caption : FolderWord::open_caption, language);
}

// A message box about a path: the button.
int tell_about(const FileQuestion& question, FolderWord word, const std::u16string& path,
               UINT type) {
    const auto language = LANGIDFROMLCID(GetThreadLocale());
    const auto text = text_with_path(folder_word(word, language), path);
    return MessageBoxW(question.owner, text.c_str(), caption_of(question, language),
                       type | MB_ICONWARNING);
}

bool may_replace(const FileQuestion& question, const std::u16string& path) {
    return tell_about(question, FolderWord::replaces, path, MB_YESNO | MB_DEFBUTTON2) == IDYES;
}

// On another thread: a disk that has gone keeps nobody waiting for long. Nothing when it doesn't
// answer, which the person is told.
std::optional<FolderEntry> look_at_chosen(const FileQuestion& question, const std::u16string& path,
                                          const NameReading& reading) {
    const auto inbox = std::make_shared<AnswerInbox<FolderEntry>>();
    start_service_thread([=] { inbox->put(look_at_file(path, reading)); });
    auto* const owner = question.owner != nullptr ? GetAncestor(question.owner, GA_ROOT) : nullptr;
    std::optional<FolderEntry> found;
    {
        const DisabledOwner disabled(owner);
        found = inbox->wait(owner, kSilence);
    }
    if (!found) tell_about(question, FolderWord::is_silent, path, MB_OK);
    return found;
}

// Whether the desktop's dialog is to come again.
bool asks_again(FileQuestion& question, std::u16string& folder, const NameReading& reading,
                std::u16string& path) {
    const bool saves = question.kind == FileQuestion::Kind::save;
    if (!saves && !(reading.follows_links && may_be_link(path))) return false;
    const auto found = look_at_chosen(question, path, reading);
    const bool is_other = found && found->name != path;
    const bool replaces = saves && is_other && found->is_there && question.asks_to_replace;
    folder = !saves && is_other && found->is_folder ? found->name : folder_above(path);
    if (saves) question.name = last_part(path);
    if (!found || (!saves && found->is_folder)) return true;
    path = found->name;
    return replaces && !may_replace(question, path);
}

}  // namespace

// The desktop asks about the name that was typed, and knows nothing of shortcuts: what the longer
// name would replace, and what they lead to, is looked at here.
std::optional<ChosenNames> ask_desktop(const FileQuestion& question, std::u16string folder,
                                       const FileNameRules& rules) {
    auto asked = question;
    for (;;) {
        auto chosen = ask_once(asked, folder);
        if (!chosen) return chosen;
        asked.filter = chosen->filter;
        const auto reading = reading_under(rules, question, chosen->filter);
        const auto again = [&](std::u16string& path) {
            return asks_again(asked, folder, reading, path);
        };
        if (std::ranges::none_of(chosen->paths, again)) return chosen;
    }
}

}  // namespace tvutil2
