#include "tvutil2/platform/window/thread_queue.h"

#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/base/fork_lock.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/objects/thread_record.h"
#include "tvutil2/platform/window/input.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/painting.h"
#include "tvutil2/platform/window/window.h"
#include "tvutil2/platform/window/window_table.h"

#include <pthread.h>
#include <unistd.h>

#include <algorithm>

namespace tvutil2 {
namespace {

thread_local ThreadQueue* t_queue = nullptr;

DWORD thread_number() {
    return static_cast<DWORD>(gettid());
}

}  // namespace

// All queues. One that its thread has left serves another thread later, and is never freed: who
// comes too late finds a queue that isn't the one it looked for.
class QueuePool {
  public:
    static QueuePool& instance() {
        static auto* const pool = new QueuePool;
        return *pool;
    }

    ThreadQueue& take() {
        const std::lock_guard guard(m_lock);
        if (m_free.empty()) {
            m_all.push_back(std::make_unique<ThreadQueue>());
            m_free.reserve(m_all.size());  // so that give_back() can't fail
            m_free.push_back(m_all.back().get());
        }
        auto& queue = *m_free.back();
        m_free.pop_back();
        queue.m_thread = thread_number();
        // Behind the destructors of the thread's objects, so that what these do to windows still
        // counts.
        pthread_setspecific(m_end, &queue);
        return queue;
    }

    ThreadQueue* of_thread(DWORD thread) {
        const std::lock_guard guard(m_lock);
        const auto found = std::find_if(m_all.begin(), m_all.end(), [thread](const auto& queue) {
            return queue->thread() == thread;
        });
        return found != m_all.end() ? found->get() : nullptr;
    }

  private:
    QueuePool() {
        pthread_key_create(
            &m_end, [](void* queue) { instance().give_back(*static_cast<ThreadQueue*>(queue)); });
    }

    void give_back(ThreadQueue& queue) {
        queue.retire();
        t_queue = nullptr;
        const std::lock_guard guard(m_lock);
        m_free.push_back(&queue);
    }

    // In a child after a fork: the parent's queues are left alone, whatever state they are in.
    void forget() {
        for (auto& queue : m_all) m_forgotten.push_back(std::move(queue));
        m_all.clear();
        m_free.clear();
        t_queue = nullptr;
        pthread_setspecific(m_end, nullptr);
        m_lock.unlock();
        new (&m_lock) std::mutex;
    }

    std::mutex m_lock;
    std::vector<std::unique_ptr<ThreadQueue>> m_all, m_forgotten;
    std::vector<ThreadQueue*> m_free;
    pthread_key_t m_end{};
    ForkMember m_is_fork_safe{ForkRank::area, this,
                              [](void* pool) { static_cast<QueuePool*>(pool)->m_lock.lock(); },
                              [](void* pool) { static_cast<QueuePool*>(pool)->m_lock.unlock(); },
                              [](void* pool) { static_cast<QueuePool*>(pool)->forget(); }};
};

bool MessageFilter::takes_window(HWND target) const {
    if (window == nullptr || window == target) return true;
    // A filter of -1 takes what has no window.
    if (window == reinterpret_cast<HWND>(std::intptr_t{-1})) return target == nullptr;
    return target != nullptr && IsChild(window, target) != 0;
}

void SentMessage::answer() {
    if (on_answer) on_answer(*this);
    auto* const waiting_thread = sender;
    is_answered.store(true, std::memory_order_release);
    if (waiting_thread != nullptr) waiting_thread->tell(ThreadQueue::answered);
}

ThreadQueue& ThreadQueue::current() {
    if (t_queue == nullptr) t_queue = &QueuePool::instance().take();
    return *t_queue;
}

ThreadQueue* ThreadQueue::current_or_null() {
    return t_queue;
}

ThreadQueue* ThreadQueue::of_thread(DWORD thread) {
    return QueuePool::instance().of_thread(thread);
}

DWORD ThreadQueue::post(const MSG& message, const Window* window, DWORD thread) {
    {
        const std::lock_guard guard(m_lock);
        // Whoever ends a window or leaves the queue does so under this lock.
        if (window != nullptr && !WindowTable::is(window, message.hwnd)) {
            return ERROR_INVALID_WINDOW_HANDLE;
        }
        if (window == nullptr && m_thread.load(std::memory_order_relaxed) != thread) {
            return ERROR_INVALID_THREAD_ID;
        }
        if (m_incoming.size() + m_left.load(std::memory_order_relaxed) >= kQueueLimit) {
            return ERROR_NOT_ENOUGH_QUOTA;
        }
        m_incoming.push_back(message);
    }
    tell(posted);
    return ERROR_SUCCESS;
}

bool ThreadQueue::send(std::shared_ptr<SentMessage> message, const Window& window) {
    {
        const std::lock_guard guard(m_lock);
        if (!WindowTable::is(&window, message->window)) return false;
        m_sent.push_back(std::move(message));
    }
    tell(sent);
    return true;
}

void ThreadQueue::answer_all() {
    m_word.fetch_and(~DWORD{sent}, std::memory_order_acquire);
    for (;;) {
        std::shared_ptr<SentMessage> message;
        {
            const std::lock_guard guard(m_lock);
            if (m_sent.empty()) return;
            message = std::move(m_sent.front());
            m_sent.erase(m_sent.begin());
        }
        if (!message->settle(SentMessage::begun)) continue;
        // Answers on every way out of the procedure: by an exception, or the end of the thread.
        struct Answer {
            ThreadQueue& queue;
            SentMessage& message;
            Answer(ThreadQueue& owner, SentMessage& sent) : queue(owner), message(sent) {
                ++queue.m_answering;
            }
            ~Answer() {
                --queue.m_answering;
                message.answer();
            }
            Answer(const Answer&) = delete;
            Answer& operator=(const Answer&) = delete;
        } answer(*this, *message);
        const auto* const window = WindowTable::instance().find(message->window);
        if (window == nullptr) continue;
        if (message->action != nullptr) {
            message->action(message->window);
        } else {
            message->result = call_procedure(*this, window->procedure, message->window,
                                             message->message, message->wparam, message->lparam);
        }
        message->is_refused = false;
    }
}

bool ThreadQueue::take(MSG& message, const MessageFilter& filter, bool remove) {
    if (take_posted(message, filter, remove) || take_quit(message, remove)) return true;
    constexpr DWORD kOnScreen = DWORD{input} | painting;
    if ((m_word.load(std::memory_order_relaxed) & kOnScreen) != 0) {
        m_word.fetch_and(~kOnScreen, std::memory_order_acquire);
    }
    if (take_input(*this, message, filter, remove)) return true;
    if (m_out_of_date.load(std::memory_order_relaxed) > 0 && filter.takes_number(WM_PAINT) &&
        take_paint(*this, message, filter)) {
        return true;
    }
    return filter.takes_number(WM_TIMER) &&
           m_timers.take(
               message, [&filter](HWND window) { return filter.takes_window(window); }, remove);
}

void ThreadQueue::take_over_incoming() {
    const std::lock_guard guard(m_lock);
    if (m_next == m_batch.size()) {
        m_batch.clear();
        m_next = 0;
        m_batch.swap(m_incoming);
    } else {
        m_batch.erase(m_batch.begin(), m_batch.begin() + static_cast<std::ptrdiff_t>(m_next));
        m_next = 0;
        m_batch.insert(m_batch.end(), m_incoming.begin(), m_incoming.end());
        m_incoming.clear();
    }
    m_left.store(m_batch.size(), std::memory_order_relaxed);
}

bool ThreadQueue::take_posted(MSG& message, const MessageFilter& filter, bool remove) {
    if ((m_word.load(std::memory_order_relaxed) & posted) != 0) {
        m_word.fetch_and(~DWORD{posted}, std::memory_order_acquire);
        take_over_incoming();
    }
    auto at = m_next;
    if (!filter.takes_all()) {
        while (at < m_batch.size() && !filter.takes(m_batch[at].hwnd, m_batch[at].message)) ++at;
    }
    if (at == m_batch.size()) return false;
    message = m_batch[at];
    if (!remove) return true;
    if (at == m_next) {
        ++m_next;
    } else {
        m_batch.erase(m_batch.begin() + static_cast<std::ptrdiff_t>(at));
    }
    m_left.store(m_batch.size() - m_next, std::memory_order_relaxed);
    return true;
}

bool ThreadQueue::take_quit(MSG& message, bool remove) {
    if (!m_has_quit) return false;
    message = {nullptr, WM_QUIT, static_cast<WPARAM>(m_quit_code), 0, GetTickCount(), {}};
    if (remove) m_has_quit = false;
    return true;
}

void ThreadQueue::end_window(Window& window) {
    auto* const handle = window.hwnd();
    take_over_incoming();
    const auto is_its = [handle](const MSG& message) { return message.hwnd == handle; };
    m_batch.erase(std::remove_if(m_batch.begin() + static_cast<std::ptrdiff_t>(m_next),
                                 m_batch.end(), is_its),
                  m_batch.end());
    {
        const std::lock_guard guard(m_lock);
        window.handle.store(0, std::memory_order_release);
        m_incoming.erase(std::remove_if(m_incoming.begin(), m_incoming.end(), is_its),
                         m_incoming.end());
        m_left.store(m_batch.size() - m_next, std::memory_order_relaxed);
    }
    m_timers.stop_all_of(handle);
}

// The thread is at its end: nothing is delivered any more.
void ThreadQueue::retire() {
    end_windows_of(*this);
    std::vector<std::shared_ptr<SentMessage>> left;
    {
        const std::lock_guard guard(m_lock);
        m_thread.store(0, std::memory_order_relaxed);
        m_incoming.clear();
        left.swap(m_sent);
    }
    for (const auto& message : left) {
        if (message->settle(SentMessage::begun)) message->answer();
    }
    m_timers.clear();
    forget_input(*this);
    m_has_damage = false;
    m_painted = {};
    m_batch.clear();
    m_left = 0;
    m_next = 0;
    m_has_quit = false;
    m_message_time = 0;
    m_answering = m_depth = 0;
    m_stack_limit = 0;
    m_word = 0;
}

LRESULT call_procedure(ThreadQueue& queue, WNDPROC procedure, HWND window, UINT message,
                       WPARAM wparam, LPARAM lparam) {
    // A few procedures inside of each other always have room.
    constexpr int kAlwaysFine = 32;
    constexpr std::size_t kReserve = std::size_t{64} << 10U;
    struct Depth {
        int& value;
        explicit Depth(int& depth) : value(depth) { ++value; }
        ~Depth() { --value; }
        Depth(const Depth&) = delete;
        Depth& operator=(const Depth&) = delete;
    } depth(queue.m_depth);
    if (queue.m_depth > kAlwaysFine) {
        if (queue.m_stack_limit == 0) {
            pthread_attr_t attributes;
            void* lowest = nullptr;
            std::size_t size = 0;
            pthread_getattr_np(pthread_self(), &attributes);
            pthread_attr_getstack(&attributes, &lowest, &size);
            pthread_attr_destroy(&attributes);
            queue.m_stack_limit =
                reinterpret_cast<std::uintptr_t>(lowest) + std::min(kReserve, size / 4);
        }
        if (reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0)) < queue.m_stack_limit) {
            SetLastError(ERROR_STACK_OVERFLOW);
            return 0;
        }
    }
    return procedure(window, message, wparam, lparam);
}

bool send_and_wait(const std::shared_ptr<SentMessage>& message, const Window& window, bool is_deaf,
                   DWORD milliseconds, HANDLE stop) {
    auto& own = ThreadQueue::current();
    auto* const target = window.queue.load(std::memory_order_relaxed);
    message->sender = &own;
    if (target == nullptr || !target->send(message, window)) {
        return fail_with(ERROR_INVALID_WINDOW_HANDLE);
    }
    // Given up on every way out: a procedure that is called meanwhile may throw.
    struct GiveUp {
        SentMessage& message;
        explicit GiveUp(SentMessage& sent) : message(sent) {}
        ~GiveUp() { message.settle(SentMessage::withdrawn); }
        GiveUp(const GiveUp&) = delete;
        GiveUp& operator=(const GiveUp&) = delete;
    } give_up(*message);
    if (!own.wait_for_answer(*message, is_deaf, milliseconds, stop)) {
        return fail_with(ERROR_TIMEOUT);
    }
    return !message->is_refused || fail_with(ERROR_INVALID_WINDOW_HANDLE);
}

}  // namespace tvutil2
