// Asynchronous procedure calls: work that one thread leaves for another, which does it when it
// waits alertably.
//
// How another area hands a completion to a thread: keep `ThreadRecord::current().apcs()` of the
// thread that asked, and post() to it when there is something to tell.
#pragma once

#include "tvutil2/platform/base/types.h"

#include <atomic>
#include <deque>
#include <functional>
#include <mutex>

namespace tvutil2 {

struct Waiter;

/// The calls that wait for one thread. Anyone may post; the rest is for that thread alone.
class ApcQueue {
  public:
    using Work = std::function<void()>;

    /// Queues work, and ends an alertable wait of the thread. False when the thread has ended: the
    /// work is dropped, as is what a thread leaves undone at its end.
    bool post(Work work);

    /// What is queued becomes the end of this wait, until the next call with null. False if
    /// something is queued already.
    bool watch(Waiter* waiter);
    [[nodiscard]] bool is_empty() const;
    /// Runs all that is queued, in the order of its coming, and what that queues in turn.
    void run();
    /// Nothing is taken any more.
    void close();

    /// Held over a fork, by the thread that forks.
    [[nodiscard]] std::mutex& lock() { return m_lock; }

  private:
    mutable std::mutex m_lock;
    std::deque<Work> m_work;
    Waiter* m_waiter = nullptr;
    bool m_is_closed = false;
};

}  // namespace tvutil2
