#include "tvutil2/platform/registry/change_hub.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/service_thread.h"
#include "tvutil2/platform/objects/objects.h"

#include <algorithm>

namespace tvutil2 {
void ChangeHub::add(const std::shared_ptr<Watch>& watch) {
    {
        const std::lock_guard guard(m_lock);
        m_watches.push_back(watch);
        if (!m_is_running) {
            start_service_thread([this] { run(); });
            m_is_running = true;
        }
    }
    look(watch);
}

// The word is read before the store is asked: a write that comes after the question has moved it
// on, and the wait returns at once.
void ChangeHub::run() {
    for (;;) {
        const auto seen = m_page.value();
        std::vector<std::shared_ptr<Watch>> watches;
        {
            const std::lock_guard guard(m_lock);
            watches = m_watches;
        }
        for (const auto& watch : watches) look(watch);
        m_page.wait(seen);
    }
}

// Two threads may look at one watch at the same time, so each asks with a copy of its own.
void ChangeHub::look(const std::shared_ptr<Watch>& watch) {
    Watch asked;
    {
        const std::lock_guard guard(m_lock);
        if (watch->is_over) return;
        asked = *watch;
    }
    const auto result = m_check(asked);
    if (result == static_cast<LONG>(ERROR_NO_MORE_ITEMS)) return;
    {
        const std::lock_guard guard(m_lock);
        if (watch->is_over) return;
        watch->since = asked.since;
    }
    finish(watch, result);
}

void ChangeHub::finish(const std::shared_ptr<Watch>& watch, LONG result) {
    {
        const std::lock_guard guard(m_lock);
        if (watch->is_over) return;
        watch->is_over = true;
        watch->result = result;
        m_watches.erase(std::remove(m_watches.begin(), m_watches.end(), watch), m_watches.end());
        m_over->notify_all();
    }
    if (watch->event != nullptr) SetEvent(watch->event);
}

Changes ChangeHub::since_of(const Watch& watch) {
    const std::lock_guard guard(m_lock);
    return watch.since;
}

LONG ChangeHub::wait(const std::shared_ptr<Watch>& watch) {
    std::unique_lock guard(m_lock);
    m_over->wait(guard, [&] { return watch->is_over; });
    return watch->result;
}

void ChangeHub::release(const void* owner) {
    std::vector<std::shared_ptr<Watch>> ended;
    {
        const std::lock_guard guard(m_lock);
        for (const auto& watch : m_watches) {
            if (watch->owner == owner) ended.push_back(watch);
        }
    }
    for (const auto& watch : ended) finish(watch, static_cast<LONG>(ERROR_INVALID_HANDLE));
}

void ChangeHub::after_fork(bool in_child) {
    if (in_child) {
        m_watches.clear();
        m_is_running = false;
        // Its state tells of waiters that don't exist here; nothing can be done with it any more.
        static_cast<void>(m_over.release());
        m_over = std::make_unique<std::condition_variable>();
    }
    m_lock.unlock();
}

}  // namespace tvutil2
