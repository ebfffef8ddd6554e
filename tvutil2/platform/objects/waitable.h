// What every object that can be waited for shares: its lock and its queue of waiters.
//
// Each waiter is a record on its thread's stack whose `outcome` decides, by one compare-exchange,
// who serves it: an object that became ready, a queued call, or its own deadline. The server takes
// the object in the waiter's name under the object's lock, so nothing is lost between waking and
// running. Waiters for all of several objects can't be served by one of them: they are told to look
// again, and take all under all the locks.
#pragma once

#include "tvutil2/platform/base/handle_slot.h"
#include "tvutil2/platform/objects/futex.h"
#include "tvutil2/platform/objects/thread_record.h"

#include <array>
#include <mutex>
#include <span>

namespace tvutil2 {

class SharedObject;

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

/// A thread in a wait.
struct Waiter {
    ThreadRecord* thread;
    bool wants_all;
    std::atomic<DWORD> outcome;  ///< a result of the wait, or one of those below

    static constexpr DWORD kAwake = 0xFFFFFFFE;   ///< undecided, and looked at by its thread
    static constexpr DWORD kAsleep = 0xFFFFFFFC;  ///< undecided, and its thread wants to be woken
    static constexpr DWORD kLookAgain = 0xFFFFFFFD;

    [[nodiscard]] bool is_waiting() const { return is_undecided(outcome.load()); }
    /// From now on who settles the wait wakes its thread. False when it is settled already.
    bool fall_asleep() { return change(kAwake, kAsleep); }
    void wake_up() { change(kAsleep, kAwake); }

    /// Settles an undecided wait of the calling thread; false when it was settled already.
    bool settle(DWORD result) { return change(kAwake, result); }
    /// The same for any thread's, which may leave the wait at once; `woken` gets whom to wake.
    bool settle(DWORD result, WakeList& woken) {
        auto before = outcome.load();
        do {
            if (!is_undecided(before)) return false;
        } while (!outcome.compare_exchange_weak(before, result));
        if (before == kAsleep) woken.add(&outcome);
        return true;
    }

  private:
    bool change(DWORD from, DWORD to) { return outcome.compare_exchange_strong(from, to); }
    static bool is_undecided(DWORD value) { return value == kAwake || value == kAsleep; }
};

/// A waiter's place in the queue of one object. Guarded by the object's lock.
struct WaitEntry {
    Waiter* waiter = nullptr;
    DWORD index = 0;  ///< of the object among those waited for
    bool is_linked = false;
    WaitEntry* previous = nullptr;
    WaitEntry* next = nullptr;

    // Of an object that is shared between processes, which has no queue:
    bool has_begun = false;
    DWORD since = 0;    ///< pulses that there were when the wait began
    DWORD seen = 0;     ///< what its word is expected to hold during a sleep
    DWORD outcome = 0;  ///< once it is taken
};

/// Base of the objects that can be waited for, in any area: such a class says when it is available,
/// and calls offer() under its lock when it has become so.
class WaitableObject : public HandleObject {
  public:
    explicit WaitableObject(HandleKind kind);
    [[nodiscard]] WaitableObject* waitable() override { return this; }
    /// This object, if it is shared between processes.
    [[nodiscard]] virtual SharedObject* shared() { return nullptr; }
    /// Keeps forks and locks apart, from the first call on.
    static void guard_forks();

  protected:
    // With the lock held:
    [[nodiscard]] virtual bool is_available(const ThreadRecord& thread) const = 0;
    /// What a wait that takes it now gives: WAIT_OBJECT_0 or WAIT_ABANDONED_0.
    [[nodiscard]] virtual DWORD outcome() const { return 0; }
    /// A wait of that thread gets it.
    virtual void take(ThreadRecord& thread) = 0;
    /// A wait of the calling thread has taken the object, which may have been done by another one.
    virtual void on_taken(ThreadRecord& /*thread*/) {}
    /// The process is a child now, in which `thread` is the only one.
    virtual void after_fork(const ThreadRecord& /*thread*/) {}
    /// Serves waiters for as long as the object is available.
    void offer(WakeList& woken);

    /// The object's lock. Behind it nobody else changes the state, the quick word included.
    class Locked {
      public:
        explicit Locked(WaitableObject& object) : m_object(object) { object.lock(true); }
        ~Locked() { m_object.unlock(); }
        Locked(const Locked&) = delete;
        Locked& operator=(const Locked&) = delete;

      private:
        WaitableObject& m_object;
    };

    // For those whose state is the quick word of their handle's row. They have one handle.
    void attach(handle_table::Slot& slot, std::uint64_t word);
    [[nodiscard]] handle_table::Slot& slot() const { return *m_slot; }
    [[nodiscard]] std::atomic<std::uint64_t>& word() const { return m_slot->quick; }

  private:
    friend class Wait;

    // Who takes several locks takes them in the order of their addresses and gives them back in the
    // reverse order. Only the first one waits for a fork that is under way.
    void lock(bool is_first);
    void unlock();
    void link(WaitEntry& entry);
    void unlink(WaitEntry& entry);
    static void before_fork();
    static void after_fork_in_parent();
    static void after_fork_in_child();
    void forget_other_threads(const ThreadRecord& thread);

    std::mutex m_lock;
    handle_table::Slot* m_slot = nullptr;
    WaitEntry* m_first = nullptr;
    WaitEntry* m_last = nullptr;
};

}  // namespace tvutil2
