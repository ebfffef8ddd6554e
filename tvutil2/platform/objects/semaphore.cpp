#include "tvutil2/platform/objects/semaphore.h"

namespace tvutil2 {

bool Semaphore::release(LONG count, LONG* previous) {
    WakeList woken;
    const Locked guard(*this);
    if (count > m_maximum - m_count) return false;
    if (previous != nullptr) *previous = m_count;
    m_count += count;
    offer(woken);
    return true;
}

}  // namespace tvutil2
