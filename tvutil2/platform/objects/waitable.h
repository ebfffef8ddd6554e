// What every object that can be waited for shares: its lock, its queue of waiters, and the wait.
//
// Each waiter is a record on its thread's stack whose `outcome` decides, by one compare-exchange,
// who serves it: an object that became ready, or its own deadline. The server takes the object in
// the waiter's name under the object's lock, so nothing is lost between waking and running. Waiters
// for all of several objects can't be served by one of them: they are told to look again, and take
// all under all the locks.
#pragma once

#include "tvutil2/platform/base/handle_table.h"
#include "tvutil2/platform/objects/futex.h"

#include <array>
#include <mutex>
#include <span>

namespace tvutil2 {

class OwnedMutexes;
class WaitableObject;

/// A thread in a wait.
struct Waiter {
    OwnedMutexes* thread;
    bool wants_all;
    std::atomic<DWORD> outcome;  ///< a result of the wait, or one of the two below

    static constexpr DWORD kWaiting = 0xFFFFFFFE;
    static constexpr DWORD kLookAgain = 0xFFFFFFFD;

    /// Settles an undecided wait; false when it was settled already.
    bool settle(DWORD result) {
        auto expected = kWaiting;
        return outcome.compare_exchange_strong(expected, result);
    }
};

/// A waiter's place in the queue of one object. Guarded by the object's lock.
struct WaitEntry {
    Waiter* waiter = nullptr;
    DWORD index = 0;  ///< of the object among those waited for
    bool is_linked = false;
    WaitEntry* previous = nullptr;
    WaitEntry* next = nullptr;
};

/// Words to be woken once the lock is given back, so that who wakes doesn't run into it.
class WakeList {
  public:
    WakeList() = default;
    ~WakeList() { wake_all(); }
    WakeList(const WakeList&) = delete;
    WakeList& operator=(const WakeList&) = delete;

    void add(const std::atomic<DWORD>* word) {
        if (m_count == m_words.size()) wake_all();
        m_words[m_count++] = word;
    }

  private:
    void wake_all() {
        for (std::size_t i = 0; i < m_count; ++i) futex_wake(m_words[i], 1);
        m_count = 0;
    }

    std::array<const std::atomic<DWORD>*, 16> m_words;
    std::size_t m_count = 0;
};

class WaitableObject : public HandleObject {
  public:
    using HandleObject::HandleObject;

    /// The kinds whose objects derive from this class.
    static constexpr bool is_kind(HandleKind kind) {
        return kind == HandleKind::event || kind == HandleKind::mutex;
    }

  protected:
    // With the lock held:
    [[nodiscard]] virtual bool is_available(const OwnedMutexes& thread) const = 0;
    /// What a wait that takes it now gives: WAIT_OBJECT_0 or WAIT_ABANDONED_0.
    [[nodiscard]] virtual DWORD outcome() const { return 0; }
    virtual void take(OwnedMutexes& thread) = 0;
    /// A wait of the calling thread has taken the object, which may have been done by another one.
    virtual void on_taken(const std::shared_ptr<WaitableObject>& /*self*/,
                          OwnedMutexes& /*thread*/) {}
    /// Serves waiters for as long as the object is available.
    void offer(WakeList& woken);

    [[nodiscard]] std::mutex& lock() const { return m_lock; }

  private:
    friend class Wait;

    void link(WaitEntry& entry);
    void unlink(WaitEntry& entry);

    mutable std::mutex m_lock;
    WaitEntry* m_first = nullptr;
    WaitEntry* m_last = nullptr;
};

/// Waits as WaitForSingleObject does.
[[nodiscard]] DWORD wait_for(const std::shared_ptr<WaitableObject>& object, DWORD milliseconds);

/// Waits as WaitForMultipleObjects does, for up to MAXIMUM_WAIT_OBJECTS that are all different.
[[nodiscard]] DWORD wait_for(std::span<const std::shared_ptr<WaitableObject>> objects,
                             bool wants_all, DWORD milliseconds);

}  // namespace tvutil2
