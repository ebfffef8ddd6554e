#include "tvutil2/platform/window/dialogs/desktop_files.h"

#include "tvutil2/platform/window/dialogs/answer_inbox.h"
#include "tvutil2/platform/window/dialogs/disabled_owner.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/screen.h"
#include "tvutil2/platform/window/window.h"

#include <utility>

namespace tvutil2 {

std::optional<FileAnswer> choose_files(FileQuestion question) {
    auto* const driver = display();
    if (driver == nullptr || !driver->has_file_dialogs()) return std::nullopt;
    auto* const owner = question.owner != nullptr ? GetAncestor(question.owner, GA_ROOT) : nullptr;
    question.owner = owner;
    const auto inbox = std::make_shared<AnswerInbox<FileAnswer>>();
    question.answered = [inbox](FileAnswer answer) { inbox->put(std::move(answer)); };
    const auto asked = std::make_shared<const FileQuestion>(std::move(question));
    auto* const focus = GetFocus();
    std::optional<FileAnswer> answer;
    {
        const DisabledOwner disabled(owner);
        driver->choose_files(asked);
        answer = inbox->wait(owner);
    }
    if (!answer) driver->withdraw(asked);
    // The desktop may not have told of a focus that was gone for so short a time.
    if (owner != nullptr && GetActiveWindow() == owner) SetFocus(focus);
    return answer ? std::move(answer) : FileAnswer{};
}

}  // namespace tvutil2
