// The queue of a thread: what others post and send to it, and what it waits for.
//
// Others put messages into `incoming` under a small lock; the owner takes them over as a whole, so
// that a busy loop hardly ever meets that lock. One word tells the owner what is new: it is where
// the owner sleeps.
#pragma once

#include "tvutil2/platform/objects/futex.h"
#include "tvutil2/platform/window/timer_list.h"
#include "tvutil2/platform/window/window_types.h"

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <span>
#include <vector>

namespace tvutil2 {

class ThreadQueue;
struct InputState;
struct Window;

/// A message from another thread, or another process, on its way to an answer.
struct SentMessage {
    enum State : DWORD { waiting, begun, withdrawn };

    HWND window = nullptr;
    UINT message = 0;
    WPARAM wparam = 0;
    LPARAM lparam = 0;
    /// Done on the window's thread in the place of calling its procedure.
    void (*action)(HWND window) = nullptr;
    /// Of who waits for the answer, or null.
    ThreadQueue* sender = nullptr;
    /// Called on the window's thread, or wherever the message is given up.
    std::function<void(SentMessage&)> on_answer;

    std::atomic<DWORD> state{waiting};
    // The answer.
    std::atomic<bool> is_answered{false};
    bool is_refused = true;  ///< no procedure has returned
    LRESULT result = 0;

    /// Settles who has it: the thread that begins it, or the sender that gives up.
    bool settle(State outcome) {
        DWORD expected = waiting;
        return state.compare_exchange_strong(expected, outcome);
    }
    void answer();
};

/// Which messages a call takes.
struct MessageFilter {
    HWND window = nullptr;
    UINT first = 0, last = 0;

    [[nodiscard]] bool takes(HWND target, UINT message) const {
        return takes_number(message) && takes_window(target);
    }
    [[nodiscard]] bool takes_all() const { return window == nullptr && first == 0 && last == 0; }

    [[nodiscard]] bool takes_number(UINT message) const {
        return (first == 0 && last == 0) || (message >= first && message <= last);
    }
    [[nodiscard]] bool takes_window(HWND target) const;
};

class ThreadQueue {
  public:
    /// What is new, in the word.
    enum News : DWORD { posted = 1, sent = 2, answered = 4, input = 8, painting = 16 };
    /// What a loop wakes up for.
    static constexpr DWORD kForLoops = posted | sent | input | painting;

    /// The calling thread's, made by its first call.
    static ThreadQueue& current();
    /// Null when the thread has none.
    static ThreadQueue* current_or_null();
    /// Of a thread of this process, or null. It may become another thread's at any time.
    static ThreadQueue* of_thread(DWORD thread);

    // From any thread:

    [[nodiscard]] DWORD thread() const { return m_thread.load(std::memory_order_relaxed); }
    /// Puts a message at the end. `window` is its window's record, or null for a message to the
    /// thread `thread`. ERROR_SUCCESS, or why not.
    DWORD post(const MSG& message, const Window* window, DWORD thread);
    /// False when the window has gone.
    bool send(std::shared_ptr<SentMessage> message, const Window& window);
    void tell(News news);

    // For the owner:

    /// Answers what was sent by now.
    void answer_sent() {
        if ((m_word.load(std::memory_order_acquire) & sent) != 0) answer_all();
    }
    /// The next posted message, WM_QUIT, input, WM_PAINT or tick; false when there is none.
    bool take(MSG& message, const MessageFilter& filter, bool remove);
    /// Sleeps until one of these is new, or up to a time in milliseconds. News of posted messages
    /// is old once take() has looked.
    bool wait_for(DWORD news, DWORD milliseconds);
    /// The same for one of several objects, too: the result of WaitForMultipleObjects, which is
    /// WAIT_OBJECT_0 and the count of objects for news.
    DWORD wait_for_any(std::span<const HANDLE> objects, DWORD news, DWORD milliseconds);
    [[nodiscard]] bool has_news(News news) const {
        return (m_word.load(std::memory_order_acquire) & news) != 0;
    }
    [[nodiscard]] bool has_any(DWORD news) const {
        return (m_word.load(std::memory_order_acquire) & news) != 0;
    }
    /// Sleeps until the message is answered; false when the time is over, or `stop` is signalled
    /// (unless it is null).
    bool wait_for_answer(const SentMessage& message, bool is_deaf, DWORD milliseconds, HANDLE stop);
    /// Sleeps until a connection to another process can be read, or written; false when the time is
    /// over.
    bool wait_for_connection(int connection, bool writes, bool is_deaf, DWORD milliseconds);
    /// Milliseconds to the next tick that take() hasn't seen; INFINITE for none.
    [[nodiscard]] DWORD time_to_tick() const { return m_timers.time_left(); }
    void post_quit(int code) {
        m_has_quit = true;
        m_quit_code = code;
    }
    /// The window ends: its handle, its messages and its timers.
    void end_window(Window& window);

    TimerList& timers() { return m_timers; }

    // With the lock of the tree:
    std::atomic<int> m_out_of_date{0};  ///< windows of the thread that are to be painted
    struct {
        Window* window = nullptr;
        std::uint64_t changes = 0;  ///< of the tree, by then
    } m_painted;  ///< the last one: what is out of date stands behind it unless the tree changed
    // From any thread:
    std::atomic<bool> m_has_damage{false};      ///< something painted isn't presented yet
    std::atomic<InputState*> m_input{nullptr};  ///< see input.h

    // The owner's state, each for the function of that name.
    LONG m_message_time = 0;
    int m_answering = 0;  ///< sent messages that it is inside of
    int m_windows = 0;    ///< that are its own
    int m_depth = 0;      ///< procedures that it is inside of
    std::uintptr_t m_stack_limit = 0;

    ThreadQueue() = default;
    ThreadQueue(const ThreadQueue&) = delete;
    ThreadQueue& operator=(const ThreadQueue&) = delete;

  private:
    friend class QueuePool;

    void answer_all();
    void take_over_incoming();
    bool take_posted(MSG& message, const MessageFilter& filter, bool remove);
    bool take_quit(MSG& message, bool remove);
    void retire();

    // Others write here.
    alignas(64) std::mutex m_lock;
    std::vector<MSG> m_incoming;
    std::vector<std::shared_ptr<SentMessage>> m_sent;
    std::atomic<DWORD> m_word{0};
    std::atomic<int> m_wake{-1};  ///< an event's descriptor, once the owner had to sleep on several
    HANDLE m_bell = nullptr;  ///< an event that rings for news while the owner waits for objects

    // The owner does; others read the first two.
    alignas(64) std::atomic<DWORD> m_thread{0};  ///< 0 while it is nobody's
    std::atomic<std::size_t> m_left{0};          ///< in m_batch from m_next on
    std::vector<MSG> m_batch;
    std::size_t m_next = 0;
    bool m_has_quit = false;
    int m_quit_code = 0;
    TimerList m_timers;
};

/// Calls a procedure on its own thread. 0 with ERROR_STACK_OVERFLOW when the stack is too short.
LRESULT call_procedure(ThreadQueue& queue, WNDPROC procedure, HWND window, UINT message,
                       WPARAM wparam, LPARAM lparam);

/// Sends to a window of another thread and waits for the answer, up to a time in milliseconds;
/// `is_deaf` doesn't answer others meanwhile, and `stop` (or null) ends the wait as its time does.
/// False with the last error.
bool send_and_wait(const std::shared_ptr<SentMessage>& message, const Window& window, bool is_deaf,
                   DWORD milliseconds, HANDLE stop = nullptr);

/// Ends, without a message, what a thread leaves behind.
void end_windows_of(ThreadQueue& queue);

}  // namespace tvutil2
