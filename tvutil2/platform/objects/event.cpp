#include "tvutil2/platform/objects/event.h"

namespace tvutil2 {

void Event::set() {
    WakeList woken;
    const std::lock_guard guard(lock());
    m_is_signalled = true;
    offer(woken);
}

void Event::reset() {
    const std::lock_guard guard(lock());
    m_is_signalled = false;
}

}  // namespace tvutil2
