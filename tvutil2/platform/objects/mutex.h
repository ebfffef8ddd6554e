// Mutexes of this process.
#pragma once

#include "tvutil2/platform/objects/waitable.h"

namespace tvutil2 {

/// Owner and state are the quick word of the handle's row.
class Mutex : public WaitableObject {
  public:
    static constexpr auto kHandleKind = HandleKind::mutex;
    /// Owned by `owner`, or by nobody for null.
    explicit Mutex(ThreadRecord* owner) : WaitableObject(kHandleKind), m_first_owner(owner) {}

    void on_inserted(handle_table::Slot& slot, std::uintptr_t handle) override;
    /// False when the calling thread isn't the owner.
    bool release();
    /// The owner of the mutex ends. Nothing happens when it isn't that thread's any more.
    static void abandon(std::uintptr_t handle, const ThreadRecord& owner);

  protected:
    [[nodiscard]] bool is_available(const ThreadRecord& thread) const override;
    [[nodiscard]] DWORD outcome() const override;
    void take(ThreadRecord& thread) override;
    void on_taken(ThreadRecord& thread) override;
    void after_fork(const ThreadRecord& thread) override;

  private:
    [[nodiscard]] DWORD owner() const;

    ThreadRecord* m_first_owner;
    std::uintptr_t m_handle = 0;
};

}  // namespace tvutil2
