#include "tvutil2/platform/objects/waitable.h"

#include "tvutil2/platform/objects/mutex.h"
#include "tvutil2/platform/objects/objects.h"

#include <algorithm>
#include <functional>

namespace tvutil2 {

void WaitableObject::offer(WakeList& woken) {
    for (auto* entry = m_first; entry != nullptr;) {
        auto& waiter = *entry->waiter;
        auto* const next = entry->next;
        if (!is_available(*waiter.thread)) return;
        if (waiter.wants_all) {
            if (waiter.settle(Waiter::kLookAgain)) woken.add(&waiter.outcome);
        } else {
            unlink(*entry);
            if (waiter.settle(outcome() + entry->index)) {
                take(*waiter.thread);
                woken.add(&waiter.outcome);
            }
        }
        entry = next;
    }
}

void WaitableObject::link(WaitEntry& entry) {
    entry.previous = m_last;
    entry.next = nullptr;
    (m_last == nullptr ? m_first : m_last->next) = &entry;
    m_last = &entry;
    entry.is_linked = true;
}

void WaitableObject::unlink(WaitEntry& entry) {
    if (!entry.is_linked) return;
    (entry.previous == nullptr ? m_first : entry.previous->next) = entry.next;
    (entry.next == nullptr ? m_last : entry.next->previous) = entry.previous;
    entry.is_linked = false;
}

// One call's wait. Its entries, one for each object, are in the objects' queues only while run()
// runs.
class Wait {
  public:
    Wait(std::span<const std::shared_ptr<WaitableObject>> objects, std::span<WaitEntry> entries,
         bool wants_all)
        : m_objects(objects),
          m_entries(entries),
          m_thread(OwnedMutexes::current()),
          m_waiter{&m_thread, wants_all, Waiter::kWaiting} {
        m_thread.make_room(objects.size());
    }

    DWORD run(DWORD milliseconds) {
        return m_waiter.wants_all ? run_all(milliseconds) : run_any(milliseconds);
    }

  private:
    DWORD run_any(DWORD milliseconds) {
        const auto entered = enter_queues(milliseconds != 0);
        if (is_waiting() && milliseconds != 0) {
            const Deadline deadline(milliseconds);
            while (is_waiting() && sleep(deadline)) {
            }
        }
        m_waiter.settle(WAIT_TIMEOUT);
        const auto result = m_waiter.outcome.load();
        for (std::size_t i = 0; i < entered; ++i) {
            const auto& object = m_objects[i];
            const std::lock_guard guard(object->lock());
            object->unlink(m_entries[i]);
            if (result != WAIT_TIMEOUT && i == result % WAIT_ABANDONED_0) {
                object->on_taken(object, m_thread);
            }
        }
        return result;
    }

    // Takes the first available object; else queues at each, if it may wait. How many it has
    // queued at.
    std::size_t enter_queues(bool may_wait) {
        std::size_t i = 0;
        for (; i < m_objects.size() && is_waiting(); ++i) {
            const auto& object = m_objects[i];
            const std::lock_guard guard(object->lock());
            if (object->is_available(m_thread)) {
                if (m_waiter.settle(object->outcome() + static_cast<DWORD>(i))) {
                    object->take(m_thread);
                    object->on_taken(object, m_thread);
                }
                return i;
            }
            if (may_wait) link(i);
        }
        return i;
    }

    DWORD run_all(DWORD milliseconds) {
        // All who lock several objects do so in one order, so that they can't block each other.
        std::array<WaitableObject*, MAXIMUM_WAIT_OBJECTS> storage;
        const std::span in_order(storage.data(), m_objects.size());
        for (std::size_t i = 0; i < m_objects.size(); ++i) in_order[i] = m_objects[i].get();
        std::sort(in_order.begin(), in_order.end(), std::less<>());
        const Deadline deadline(milliseconds);
        for (bool is_over = milliseconds == 0;;) {
            for (auto* object : in_order) object->lock().lock();
            const bool is_ready =
                std::all_of(m_objects.begin(), m_objects.end(),
                            [this](const auto& object) { return object->is_available(m_thread); });
            if (is_ready || is_over) return leave_all(is_ready);
            m_waiter.outcome.store(Waiter::kWaiting);
            for (std::size_t i = 0; i < m_objects.size(); ++i) {
                if (!m_entries[i].is_linked) link(i);
            }
            for (auto* object : in_order) object->lock().unlock();
            // One more look after the deadline: what became ready just then isn't missed.
            while (is_waiting() && !is_over) is_over = !sleep(deadline);
        }
    }

    // Ends a wait for all with every lock held: takes all, if they are ready, and unlocks.
    DWORD leave_all(bool is_ready) {
        DWORD result = is_ready ? WAIT_OBJECT_0 : WAIT_TIMEOUT;
        for (std::size_t i = 0; i < m_objects.size(); ++i) {
            const auto& object = m_objects[i];
            object->unlink(m_entries[i]);
            if (!is_ready) continue;
            if (object->outcome() == WAIT_ABANDONED_0 && result == WAIT_OBJECT_0) {
                result = WAIT_ABANDONED_0 + static_cast<DWORD>(i);
            }
            object->take(m_thread);
            object->on_taken(object, m_thread);
        }
        for (const auto& object : m_objects) object->lock().unlock();
        return result;
    }

    void link(std::size_t i) {
        m_entries[i].waiter = &m_waiter;
        m_entries[i].index = static_cast<DWORD>(i);
        m_objects[i]->link(m_entries[i]);
    }

    [[nodiscard]] bool is_waiting() const { return m_waiter.outcome.load() == Waiter::kWaiting; }
    // False when the deadline has passed.
    bool sleep(const Deadline& deadline) {
        return futex_wait(m_waiter.outcome, Waiter::kWaiting, deadline);
    }

    std::span<const std::shared_ptr<WaitableObject>> m_objects;
    std::span<WaitEntry> m_entries;
    OwnedMutexes& m_thread;
    Waiter m_waiter;
};

DWORD wait_for(const std::shared_ptr<WaitableObject>& object, DWORD milliseconds) {
    WaitEntry entry;
    return Wait({&object, 1}, {&entry, 1}, false).run(milliseconds);
}

DWORD wait_for(std::span<const std::shared_ptr<WaitableObject>> objects, bool wants_all,
               DWORD milliseconds) {
    std::array<WaitEntry, MAXIMUM_WAIT_OBJECTS> entries;
    return Wait(objects, entries, wants_all).run(milliseconds);
}

}  // namespace tvutil2
