#include "tvutil2/platform/objects/apc.h"

#include "tvutil2/platform/objects/objects.h"
#include "tvutil2/platform/objects/waitable.h"

namespace tvutil2 {

bool ApcQueue::post(Work work) {
    WakeList woken;
    const std::lock_guard guard(m_lock);
    if (m_is_closed) return false;
    m_work.push_back(std::move(work));
    if (m_waiter != nullptr) m_waiter->settle(WAIT_IO_COMPLETION, woken);
    return true;
}

bool ApcQueue::watch(Waiter* waiter) {
    const std::lock_guard guard(m_lock);
    m_waiter = waiter;
    return m_work.empty();
}

bool ApcQueue::is_empty() const {
    const std::lock_guard guard(m_lock);
    return m_work.empty();
}

void ApcQueue::run() {
    for (;;) {
        Work work;
        {
            const std::lock_guard guard(m_lock);
            if (m_work.empty()) return;
            work = std::move(m_work.front());
            m_work.pop_front();
        }
        work();
    }
}

void ApcQueue::close() {
    std::deque<Work> dropped;  // destroyed behind the lock
    const std::lock_guard guard(m_lock);
    m_is_closed = true;
    dropped.swap(m_work);
}

}  // namespace tvutil2
