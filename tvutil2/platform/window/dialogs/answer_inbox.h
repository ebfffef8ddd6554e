// An answer of another thread's, for which a thread waits that goes on with its messages.
#pragma once

#include "tvutil2/platform/objects/threads.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/timers.h"
#include "tvutil2/platform/window/window.h"

#include <mutex>
#include <optional>
#include <utility>

namespace tvutil2 {

/// Shared by both, as the answer may come when nobody waits any more.
template <class Answer>
class AnswerInbox {
  public:
    /// On the thread that waits; it has a queue from now on.
    AnswerInbox() : m_thread(GetCurrentThreadId()) {
        MSG message;
        PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE);
    }

    /// From any thread.
    void put(Answer answer) {
        {
            const std::lock_guard guard(m_lock);
            m_answer = std::move(answer);
        }
        PostThreadMessageW(m_thread, WM_NULL, 0, 0);
    }

    /// Nothing when the owner, which may be null, goes away, the program is to quit, or the time is
    /// over; 0 milliseconds are for ever.
    std::optional<Answer> wait(HWND owner, UINT milliseconds = 0) {
        const auto timer =
            milliseconds > 0 ? SetTimer(nullptr, 0, milliseconds, nullptr) : UINT_PTR{0};
        auto answer = wait_with(owner, timer);
        if (timer != 0) KillTimer(nullptr, timer);
        return answer;
    }

  private:
    std::optional<Answer> take() {
        const std::lock_guard guard(m_lock);
        return std::exchange(m_answer, std::nullopt);
    }
    std::optional<Answer> wait_with(HWND owner, UINT_PTR timer) {
        MSG message;
        while (owner == nullptr || IsWindow(owner)) {
            if (GetMessageW(&message, nullptr, 0, 0) <= 0) {
                PostQuitMessage(static_cast<int>(message.wParam));
                break;
            }
            const bool is_over = timer != 0 && message.hwnd == nullptr &&
                                 message.message == WM_TIMER && message.wParam == timer;
            TranslateMessage(&message);
            DispatchMessageW(&message);
            auto answer = take();
            if (answer || is_over) return answer;
        }
        return std::nullopt;
    }

    const DWORD m_thread;
    std::mutex m_lock;
    std::optional<Answer> m_answer;
};

}  // namespace tvutil2
