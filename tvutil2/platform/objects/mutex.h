// Mutexes, and the list of those that a thread owns.
#pragma once

#include "tvutil2/platform/objects/waitable.h"

#include <vector>

namespace tvutil2 {

class Mutex;

/// What a thread owns, and the thread's identity as an owner: an end of the thread abandons it all.
/// Used by its own thread only.
class OwnedMutexes {
  public:
    /// The calling thread's.
    static OwnedMutexes& current();

    /// So that add() can't fail once a wait has taken what it waited for.
    void make_room(std::size_t count) { m_mutexes.reserve(m_mutexes.size() + count); }
    void add(std::shared_ptr<Mutex> mutex) { m_mutexes.push_back(std::move(mutex)); }
    void remove(const Mutex* mutex);

    OwnedMutexes() = default;
    ~OwnedMutexes();
    OwnedMutexes(const OwnedMutexes&) = delete;
    OwnedMutexes& operator=(const OwnedMutexes&) = delete;

  private:
    std::vector<std::shared_ptr<Mutex>> m_mutexes;
};

class Mutex : public WaitableObject {
  public:
    static constexpr auto kHandleKind = HandleKind::mutex;
    /// Owned by `owner`, which adds it to its list itself, or by nobody for null.
    explicit Mutex(OwnedMutexes* owner);

    /// False when the calling thread isn't the owner.
    bool release();
    void abandon();

  protected:
    [[nodiscard]] bool is_available(const OwnedMutexes& thread) const override;
    [[nodiscard]] DWORD outcome() const override;
    void take(OwnedMutexes& thread) override;
    void on_taken(const std::shared_ptr<WaitableObject>& self, OwnedMutexes& thread) override;

  private:
    OwnedMutexes* m_owner;
    DWORD m_times_owned;
    bool m_is_abandoned = false;
};

}  // namespace tvutil2
