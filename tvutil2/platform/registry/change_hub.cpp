#include "tvutil2/platform/registry/change_hub.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/service_thread.h"
#include "tvutil2/platform/objects/objects.h"

#include <algorithm>
#include <utility>

namespace tvutil2 {
LONG ChangeHub::open_page(const std::string& file, bool is_private, std::uint32_t store) {
    std::shared_ptr<SignalPage> old;
    {
        const std::lock_guard guard(m_lock);
        if (m_page && m_page_store == store) return ERROR_SUCCESS;
        auto page = std::make_shared<SignalPage>();
        if (const auto error = page->open(file, is_private); error != ERROR_SUCCESS) return error;
        old = std::exchange(m_page, std::move(page));
        m_page_store = store;
    }
    if (old) old->wake();
    return ERROR_SUCCESS;
}

void ChangeHub::drop_page(std::uint32_t store) {
    std::shared_ptr<SignalPage> old;
    {
        const std::lock_guard guard(m_lock);
        if (m_page_store != store) return;
        old = std::move(m_page);
    }
    if (old) old->wake();
}

void ChangeHub::announce() {
    if (const auto page = current_page()) page->announce();
}

std::shared_ptr<SignalPage> ChangeHub::current_page() {
    const std::lock_guard guard(m_lock);
    return m_page;
}

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

// The word is read before it is known that the page still counts, which watches there are and what
// the store says: whatever comes after one of these questions has moved the word on, and the wait
// returns at once. Without a page there is no store, and the watches end with it.
void ChangeHub::run() {
    for (;;) {
        const auto page = current_page();
        if (page) page->begin_watching();
        const auto seen = page ? page->value() : 0;
        std::vector<std::shared_ptr<Watch>> watches;
        {
            const std::lock_guard guard(m_lock);
            if (page != m_page) continue;
            watches = m_watches;
            if (!page && watches.empty()) {
                m_is_running = false;
                return;
            }
        }
        for (const auto& watch : watches) {
            if (page) {
                look(watch);
            } else {
                finish(watch, static_cast<LONG>(ERROR_KEY_DELETED));
            }
        }
        if (page) page->wait(seen);
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
        watch->counted_in = asked.counted_in;
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

void ChangeHub::go_on_from(const Watch& before, Watch& watch) {
    const std::lock_guard guard(m_lock);
    watch.since = before.since;
    watch.counted_in = before.counted_in;
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
        if (m_page) m_page->forget_watching();
        // Its state tells of waiters that don't exist here; nothing can be done with it any more.
        static_cast<void>(m_over.release());
        m_over = std::make_unique<std::condition_variable>();
    }
    m_lock.unlock();
}

}  // namespace tvutil2
