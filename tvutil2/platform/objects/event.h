// Events of this process.
#pragma once

#include "tvutil2/platform/objects/waitable.h"

namespace tvutil2 {

/// The state is the quick word of the handle's row.
class Event : public WaitableObject {
  public:
    static constexpr auto kHandleKind = HandleKind::event;
    Event(bool is_manual, bool is_signalled)
        : WaitableObject(kHandleKind), m_is_manual(is_manual), m_is_signalled(is_signalled) {}

    void on_inserted(handle_table::Slot& slot, std::uintptr_t handle) override;
    void set();
    void reset();
    /// Lets through who waits now: one of an auto-reset event, all of a manual-reset one.
    void pulse();

  protected:
    [[nodiscard]] bool is_available(const ThreadRecord& thread) const override;
    void take(ThreadRecord& thread) override;

  private:
    const bool m_is_manual;
    const bool m_is_signalled;  ///< until there is a handle
};

}  // namespace tvutil2
