#include "tvutil2/platform/window/dialogs/desktop_files.h"

#include "tvutil2/platform/objects/threads.h"
#include "tvutil2/platform/window/dialogs/disabled_owner.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/screen.h"
#include "tvutil2/platform/window/window.h"

#include <mutex>
#include <utility>

namespace tvutil2 {
namespace {

// Shared by the loop and the driver's thread, which may answer when the loop has given up.
class Inbox {
  public:
    // The thread that waits; it has a queue from now on.
    Inbox() : m_thread(GetCurrentThreadId()) {
        MSG message;
        PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE);
    }
    void put(FileAnswer answer) {
        {
            const std::lock_guard guard(m_lock);
            m_answer = std::move(answer);
        }
        PostThreadMessageW(m_thread, WM_NULL, 0, 0);
    }
    std::optional<FileAnswer> take() {
        const std::lock_guard guard(m_lock);
        return std::exchange(m_answer, std::nullopt);
    }

  private:
    const DWORD m_thread;
    std::mutex m_lock;
    std::optional<FileAnswer> m_answer;
};

// Goes on with the thread's messages. Nothing when the owner goes away, or the program is to quit.
std::optional<FileAnswer> wait_for_answer(Inbox& inbox, HWND owner) {
    MSG message;
    while (owner == nullptr || IsWindow(owner)) {
        if (GetMessageW(&message, nullptr, 0, 0) <= 0) {
            PostQuitMessage(static_cast<int>(message.wParam));
            break;
        }
        TranslateMessage(&message);
        DispatchMessageW(&message);
        if (auto answer = inbox.take()) return answer;
    }
    return std::nullopt;
}

}  // namespace

std::optional<FileAnswer> choose_files(FileQuestion question) {
    auto* const driver = display();
    if (driver == nullptr || !driver->has_file_dialogs()) return std::nullopt;
    auto* const owner = question.owner != nullptr ? GetAncestor(question.owner, GA_ROOT) : nullptr;
    question.owner = owner;
    const auto inbox = std::make_shared<Inbox>();
    question.answered = [inbox](FileAnswer answer) { inbox->put(std::move(answer)); };
    const auto asked = std::make_shared<const FileQuestion>(std::move(question));
    auto* const focus = GetFocus();
    std::optional<FileAnswer> answer;
    {
        const DisabledOwner disabled(owner);
        driver->choose_files(asked);
        answer = wait_for_answer(*inbox, owner);
    }
    if (!answer) driver->withdraw(asked);
    // The desktop may not have told of a focus that was gone for so short a time.
    if (owner != nullptr && GetActiveWindow() == owner) SetFocus(focus);
    return answer ? std::move(answer) : FileAnswer{};
}

}  // namespace tvutil2
