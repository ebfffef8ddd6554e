// Semaphores of this process.
#pragma once

#include "tvutil2/platform/objects/waitable.h"

namespace tvutil2 {

class Semaphore : public WaitableObject {
  public:
    static constexpr auto kHandleKind = HandleKind::semaphore;
    Semaphore(LONG count, LONG maximum)
        : WaitableObject(kHandleKind), m_count(count), m_maximum(maximum) {}

    /// False when that were more than the maximum: nothing changes then. `previous` may be null.
    bool release(LONG count, LONG* previous);

  protected:
    [[nodiscard]] bool is_available(const ThreadRecord& /*thread*/) const override {
        return m_count > 0;
    }
    void take(ThreadRecord& /*thread*/) override { --m_count; }

  private:
    LONG m_count;
    const LONG m_maximum;
};

}  // namespace tvutil2
