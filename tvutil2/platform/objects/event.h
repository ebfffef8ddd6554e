// Events.
#pragma once

#include "tvutil2/platform/objects/waitable.h"

namespace tvutil2 {

class Event : public WaitableObject {
  public:
    static constexpr auto kHandleKind = HandleKind::event;
    Event(bool is_manual, bool is_signalled)
        : WaitableObject(kHandleKind), m_is_manual(is_manual), m_is_signalled(is_signalled) {}

    void set();
    void reset();

  protected:
    [[nodiscard]] bool is_available(const OwnedMutexes& /*thread*/) const override {
        return m_is_signalled;
    }
    void take(OwnedMutexes& /*thread*/) override { m_is_signalled = m_is_manual; }

  private:
    const bool m_is_manual;
    bool m_is_signalled;
};

}  // namespace tvutil2
