// Locks of the process that a fork finds free.
//
// A fork while another thread holds a lock leaves the child with a lock that nobody opens, and with
// whatever it guards half changed. So the one that forks takes all locks of the library first, and
// the child begins with new ones:
//
//     constinit std::mutex g_lock;
//     const ForkLock g_fork_safe(g_lock, ForkRank::area);
//
// They are taken in the order of their ranks, which is the order in which threads nest them: who
// holds a lock asks for locks of later ranks only. No lock may be held while a person is waited
// for.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <new>

namespace tvutil2 {

enum class ForkRank : std::uint8_t {
    first,     ///< forks themselves, one at a time
    caller,    ///< held while any area of the ground floor is asked
    loader,    ///< held while a module's own code runs
    registry,  ///< both hives
    store,     ///< held while files are read or written
    modules,   ///< held while handles are made
    area,      ///< held while nothing is asked but objects
    objects,   ///< held while nothing is asked
    handles,
};

/// What is done around a fork. Stands in static storage, or lives for ever. May be made at any time
/// by any thread; one that is made during a fork takes no part in it.
class ForkMember {
  public:
    using Work = void (*)(void* what);
    /// `before` runs ahead of the fork, one of the others behind it, on the thread that forks.
    ForkMember(ForkRank rank, void* what, Work before, Work in_parent, Work in_child);
    ForkMember(const ForkMember&) = delete;
    ForkMember& operator=(const ForkMember&) = delete;

  private:
    friend class ForkMembers;
    ForkRank m_rank;
    void* m_what;
    Work m_before;
    Work m_in_parent;
    Work m_in_child;
    bool m_takes_part = false;
    std::atomic<ForkMember*> m_next = nullptr;
};

/// A mutex that lives as long as the process.
class ForkLock : public ForkMember {
  public:
    template <class Mutex>
    ForkLock(Mutex& mutex, ForkRank rank)
        : ForkMember(
              rank, &mutex, [](void* what) { static_cast<Mutex*>(what)->lock(); },
              [](void* what) { static_cast<Mutex*>(what)->unlock(); },
              // Anew, since it belongs to a thread of the parent; unlocked first for the tools that
              // keep account of who holds what.
              [](void* what) {
                  static_cast<Mutex*>(what)->unlock();
                  new (what) Mutex;
              }) {}
};

}  // namespace tvutil2
