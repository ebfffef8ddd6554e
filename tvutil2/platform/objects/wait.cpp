#include "tvutil2/platform/objects/wait.h"

#include "tvutil2/platform/objects/apc.h"
#include "tvutil2/platform/objects/objects.h"
#include "tvutil2/platform/objects/shared/shared_object.h"
#include "tvutil2/platform/objects/shared/shared_sleep.h"

#include <algorithm>
#include <functional>

namespace tvutil2 {

// One call's wait. Its entries, one for each object, are in the objects' queues only while run()
// runs.
class Wait {
  public:
    Wait(std::span<WaitableObject* const> objects, std::span<WaitEntry> entries, bool wants_all,
         bool is_alertable)
        : m_objects(objects),
          m_entries(entries),
          m_thread(ThreadRecord::current()),
          m_apcs(is_alertable ? m_thread.apcs().get() : nullptr),
          m_waiter{&m_thread, wants_all, Waiter::kAwake} {
        m_thread.make_room(objects.size());
        for (auto* object : objects) m_has_shared = m_has_shared || object->shared() != nullptr;
        m_is_next = m_has_shared;
    }

    DWORD run(DWORD milliseconds) {
        const auto result = m_waiter.wants_all ? run_all(milliseconds) : run_any(milliseconds);
        if (m_apcs != nullptr) {
            m_apcs->watch(nullptr);
            if (result == WAIT_IO_COMPLETION) m_apcs->run();
        }
        return result;
    }

  private:
    DWORD run_any(DWORD milliseconds) {
        const auto entered = enter_queues(milliseconds != 0);
        if (m_waiter.is_waiting()) wait_for_outcome(milliseconds);
        m_waiter.settle(WAIT_TIMEOUT);
        const auto result = m_waiter.outcome.load();
        const bool is_served = result < WAIT_TIMEOUT && result != WAIT_IO_COMPLETION;
        // Behind the lock, who served has done with the entry and with all that belongs to it.
        for (std::size_t i = 0; i < entered; ++i) {
            const bool has_taken = is_served && i == result % WAIT_ABANDONED_0;
            if (m_objects[i]->shared() != nullptr) {
                end_wait(i, has_taken);
                continue;
            }
            const WaitableObject::Locked guard(*m_objects[i]);
            m_objects[i]->unlink(m_entries[i]);
            if (has_taken) m_objects[i]->on_taken(m_thread);
        }
        return result;
    }

    void wait_for_outcome(DWORD milliseconds) {
        if (m_apcs != nullptr && !m_apcs->watch(&m_waiter)) m_waiter.settle(WAIT_IO_COMPLETION);
        if (milliseconds == 0) return;
        const Deadline deadline(milliseconds);
        bool is_over = false;
        while (m_waiter.is_waiting() && !is_over) {
            if (m_has_shared) look_at_shared();
            if (m_waiter.is_waiting()) is_over = !sleep(deadline);
        }
        if (m_has_shared && m_waiter.is_waiting()) look_at_shared();
    }

    // Objects of several processes. They are taken first and settled then; who was served by
    // another object meanwhile gives them back.

    void begin_wait(std::size_t i, bool may_wait) {
        auto& shared = *m_objects[i]->shared();
        if (m_entries[i].has_begun) return;
        shared.note_pulses(m_entries[i]);
        m_entries[i].has_begun = may_wait;
        if (may_wait) shared.begin_wait();
    }

    void end_wait(std::size_t i, bool has_taken) {
        if (m_entries[i].has_begun) m_objects[i]->shared()->end_wait(has_taken);
        m_entries[i].has_begun = false;
    }

    bool claim_shared(std::size_t i) {
        auto& shared = *m_objects[i]->shared();
        auto& entry = m_entries[i];
        if (!shared.try_take(m_thread, entry, entry.outcome)) return false;
        if (!m_waiter.settle(entry.outcome + static_cast<DWORD>(i))) {
            shared.give_back(m_thread, entry.outcome);
        }
        return true;
    }

    void prepare_shared() {
        for (std::size_t i = 0; i < m_objects.size(); ++i) {
            auto* const shared = m_objects[i]->shared();
            if (shared != nullptr) shared->prepare_sleep(m_entries[i]);
        }
    }

    void look_at_shared() {
        prepare_shared();
        for (std::size_t i = 0; i < m_objects.size() && m_waiter.is_waiting(); ++i) {
            if (m_objects[i]->shared() != nullptr && claim_shared(i)) return;
        }
    }

    // Takes the first available object; else queues at each, if it may wait. How many it has
    // queued at.
    std::size_t enter_queues(bool may_wait) {
        std::size_t i = 0;
        for (; i < m_objects.size() && m_waiter.is_waiting(); ++i) {
            auto& object = *m_objects[i];
            if (object.shared() != nullptr) {
                begin_wait(i, may_wait);
                if (claim_shared(i)) return i + 1;
                continue;
            }
            const WaitableObject::Locked guard(object);
            if (object.is_available(m_thread)) {
                if (m_waiter.settle(object.outcome() + static_cast<DWORD>(i))) {
                    object.take(m_thread);
                    object.on_taken(m_thread);
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
        std::copy(m_objects.begin(), m_objects.end(), in_order.begin());
        std::sort(in_order.begin(), in_order.end(), std::less<>());
        const Deadline deadline(milliseconds);
        bool is_over = false;
        for (;;) {
            for (auto* object : in_order) object->lock(object == in_order.front());
            if (m_has_shared) prepare_for_all(milliseconds != 0);
            const bool is_ready =
                std::all_of(m_objects.begin(), m_objects.end(),
                            [this](auto* object) { return object->is_available(m_thread); });
            if (is_ready && take_all_shared()) return leave_all(in_order, WAIT_OBJECT_0);
            m_waiter.outcome.store(Waiter::kAwake);
            const bool is_alerted = m_apcs != nullptr && !m_apcs->watch(&m_waiter);
            if (is_alerted) return leave_all(in_order, WAIT_IO_COMPLETION);
            if (is_over || milliseconds == 0) return leave_all(in_order, WAIT_TIMEOUT);
            for (std::size_t i = 0; i < m_objects.size(); ++i) {
                if (!m_entries[i].is_linked && m_objects[i]->shared() == nullptr) link(i);
            }
            unlock_all(in_order);
            // One more look after the deadline: what became ready just then isn't missed.
            // Nobody settles a wait for what is shared: any wake-up is the word to look again.
            while (m_waiter.is_waiting() && !is_over) {
                is_over = !sleep(deadline);
                if (m_has_shared) break;
            }
        }
    }

    void prepare_for_all(bool may_wait) {
        for (std::size_t i = 0; i < m_objects.size(); ++i) {
            if (m_objects[i]->shared() != nullptr) begin_wait(i, may_wait);
        }
        prepare_shared();
    }

    // All of those that are shared, or none.
    bool take_all_shared() {
        for (std::size_t i = 0; i < m_objects.size(); ++i) {
            auto* const shared = m_objects[i]->shared();
            if (shared == nullptr) continue;
            shared->note_pulses(m_entries[i]);
            if (shared->try_take(m_thread, m_entries[i], m_entries[i].outcome)) continue;
            while (i-- > 0) {
                auto* const taken = m_objects[i]->shared();
                if (taken != nullptr) taken->give_back(m_thread, m_entries[i].outcome);
            }
            return false;
        }
        return true;
    }

    // Ends a wait for all with every lock held: takes all, unless it ends for another reason.
    DWORD leave_all(std::span<WaitableObject* const> in_order, DWORD result) {
        const bool takes = result == WAIT_OBJECT_0;
        for (std::size_t i = 0; i < m_objects.size(); ++i) {
            auto& object = *m_objects[i];
            const bool is_shared = object.shared() != nullptr;
            object.unlink(m_entries[i]);
            if (is_shared) end_wait(i, takes);
            if (!takes) continue;
            const auto outcome = is_shared ? m_entries[i].outcome : object.outcome();
            if (outcome == WAIT_ABANDONED_0 && result == WAIT_OBJECT_0) {
                result = WAIT_ABANDONED_0 + static_cast<DWORD>(i);
            }
            object.take(m_thread);
            object.on_taken(m_thread);
        }
        unlock_all(in_order);
        return result;
    }

    static void unlock_all(std::span<WaitableObject* const> in_order) {
        std::for_each(in_order.rbegin(), in_order.rend(), [](auto* object) { object->unlock(); });
    }

    void link(std::size_t i) {
        m_entries[i].waiter = &m_waiter;
        m_entries[i].index = static_cast<DWORD>(i);
        m_objects[i]->link(m_entries[i]);
        if (m_entries[i].previous == nullptr) m_is_next = true;
    }

    // False when the deadline has passed.
    bool sleep(const Deadline& deadline) {
        const auto fall_asleep = [this, &deadline] {
            if (!m_waiter.fall_asleep()) return true;
            const bool is_in_time = m_has_shared
                                        ? sleep_on_shared(m_waiter, m_objects, m_entries, deadline)
                                        : futex_wait(m_waiter.outcome, Waiter::kAsleep, deadline);
            m_waiter.wake_up();
            return is_in_time;
        };
        // Behind others it takes as long as they do.
        if (!m_is_next) return fall_asleep();
        const auto is_over = [this] {
            return !m_waiter.is_waiting() || (m_has_shared && has_news(m_objects, m_entries));
        };
        return m_thread.patience().wait(is_over, fall_asleep);
    }

    std::span<WaitableObject* const> m_objects;
    std::span<WaitEntry> m_entries;
    ThreadRecord& m_thread;
    ApcQueue* m_apcs;
    Waiter m_waiter;
    bool m_has_shared = false;
    bool m_is_next = false;  // to get one of the objects, as far as is known
};

DWORD wait_for(std::span<WaitableObject* const> objects, bool wants_all, DWORD milliseconds,
               bool is_alertable) {
    if (objects.size() <= 1) {
        WaitEntry entry;
        return Wait(objects, {&entry, 1}, false, is_alertable).run(milliseconds);
    }
    std::array<WaitEntry, MAXIMUM_WAIT_OBJECTS> entries;
    return Wait(objects, entries, wants_all, is_alertable).run(milliseconds);
}

}  // namespace tvutil2
