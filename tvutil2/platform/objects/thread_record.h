// What the layer knows of a thread, whoever started it: its number as an owner, what it owns, the
// calls that wait for it.
#pragma once

#include "tvutil2/platform/base/types.h"
#include "tvutil2/platform/objects/patience.h"

#include <functional>
#include <memory>
#include <vector>

namespace tvutil2 {

class ApcQueue;
class SharedMutex;
class WaitableObject;

/// Used by its own thread only, but for number and id.
class ThreadRecord {
  public:
    /// Threads alive at once that use objects. Numbers begin at 1.
    static constexpr DWORD kMaxNumber = (1U << 26U) - 1;

    /// The calling thread's; made at the first call.
    static ThreadRecord& current() { return t_current != nullptr ? *t_current : make_current(); }
    /// The calling thread's, if it has one.
    static ThreadRecord* existing() { return t_current; }

    /// Tells the thread from all others of the process that live; stays over a fork.
    [[nodiscard]] DWORD number() const { return m_number; }
    /// The host's id of the thread, which no other thread of the machine has while it lives.
    [[nodiscard]] DWORD host_id() const { return m_host_id; }

    // Mutexes of this process that the thread owns, by their handles: the end of the thread
    // abandons them.
    /// So that add() can't fail once a wait has taken what it waited for.
    void make_room(std::size_t count = 1) {
        if (m_owned.capacity() - m_owned.size() < count) grow(count);
        if (m_shared.capacity() - m_shared.size() < count) grow(count);
    }
    void add(std::uintptr_t mutex) { m_owned.push_back(mutex); }
    void remove(std::uintptr_t mutex) {
        // The last one taken is as a rule the first one given back.
        if (!m_owned.empty() && m_owned.back() == mutex) {
            m_owned.pop_back();
        } else {
            remove_inner(mutex);
        }
    }

    // The same for those that several processes share.
    void add_shared(std::shared_ptr<SharedMutex> mutex) { m_shared.push_back(std::move(mutex)); }
    void remove_shared(const SharedMutex* mutex);
    /// What a child's thread owned is its parent's.
    void forget_shared() { m_shared.clear(); }

    [[nodiscard]] Patience& patience() { return m_patience; }

    /// Calls that others queue to the thread.
    [[nodiscard]] const std::shared_ptr<ApcQueue>& apcs() const { return m_apcs; }
    /// Runs as the very last thing of the thread, once it owns nothing any more.
    void at_end(std::function<void()> work) { m_at_end = std::move(work); }

    /// The process is a child now: the thread has another id.
    void after_fork();

    ~ThreadRecord();
    ThreadRecord(const ThreadRecord&) = delete;
    ThreadRecord& operator=(const ThreadRecord&) = delete;

  private:
    ThreadRecord();
    static ThreadRecord& make_current();
    static void end(void* record);
    void grow(std::size_t count);
    void remove_inner(std::uintptr_t mutex);

    // Plain, so that it can be looked at however late in the life of its thread.
    static thread_local constinit ThreadRecord* t_current;

    DWORD m_number;
    DWORD m_host_id;
    Patience m_patience;
    std::vector<std::uintptr_t> m_owned;
    std::vector<std::shared_ptr<SharedMutex>> m_shared;
    std::shared_ptr<ApcQueue> m_apcs;
    std::function<void()> m_at_end;
};

/// Held over a fork.
void lock_thread_numbers();
void unlock_thread_numbers();

}  // namespace tvutil2
