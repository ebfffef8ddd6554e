#include "tvutil2/platform/objects/waitable.h"

#include "tvutil2/platform/base/fork_lock.h"
#include "tvutil2/platform/objects/apc.h"

#include <new>

namespace tvutil2 {
namespace {

std::atomic<bool> g_is_forking{false};

// Behind the lock there are a few steps, over before a thread could fall asleep for it. Who looked
// for its turn comes here while the one that gave it is still on its way out.
void lock_soon(std::mutex& lock) {
    constexpr int kTries = 100;
    for (int i = 0; Patience::has_company() && i < kTries; ++i) {
        if (lock.try_lock()) return;
        Patience::relax();
    }
    lock.lock();
}

}  // namespace

WaitableObject::WaitableObject(HandleKind kind) : HandleObject(kind) {
    guard_forks();
}

void WaitableObject::attach(handle_table::Slot& slot, std::uint64_t word) {
    m_slot = &slot;
    slot.quick.store(word, std::memory_order_release);
}

void WaitableObject::lock(bool is_first) {
    lock_soon(m_lock);
    while (is_first && g_is_forking) {
        m_lock.unlock();
        g_is_forking.wait(true);
        m_lock.lock();
    }
    if (m_slot != nullptr) word().fetch_or(handle_table::Slot::kQueued);
}

void WaitableObject::unlock() {
    using handle_table::Slot;
    if (m_slot != nullptr && m_first == nullptr) {
        auto state = word().load();
        while ((state & Slot::kGone) == 0 &&
               !word().compare_exchange_weak(state, state & ~Slot::kQueued)) {
        }
    }
    m_lock.unlock();
}

void WaitableObject::offer(WakeList& woken) {
    for (auto* entry = m_first; entry != nullptr;) {
        auto& waiter = *entry->waiter;
        auto* const next = entry->next;
        if (!is_available(*waiter.thread)) return;
        if (waiter.wants_all) {
            waiter.settle(Waiter::kLookAgain, woken);
        } else {
            unlink(*entry);
            if (waiter.settle(outcome() + entry->index, woken)) take(*waiter.thread);
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

void WaitableObject::forget_other_threads(const ThreadRecord& thread) {
    // One that still came to the lock turned round without touching anything else.
    new (&m_lock) std::mutex;
    lock(false);
    m_first = m_last = nullptr;
    after_fork(thread);
    unlock();
}

// A fork while another thread holds an object's lock would leave the child with a lock that nobody
// opens, and a half-made change behind it. So threads are kept out of the locks and those inside
// are waited for. In the child the queues are emptied, since those who waited aren't there.
void WaitableObject::guard_forks() {
    static const ForkMember is_fork_safe(
        ForkRank::objects, nullptr, [](void* /*what*/) { before_fork(); },
        [](void* /*what*/) { after_fork_in_parent(); },
        [](void* /*what*/) { after_fork_in_child(); });
}

void WaitableObject::before_fork() {
    ThreadRecord::current().apcs()->lock().lock();
    lock_thread_numbers();
    g_is_forking = true;
    handle_table::visit_live([](HandleObject& object) {
        if (auto* const waitable = object.waitable()) {
            const std::lock_guard guard(waitable->m_lock);
        }
    });
}

void WaitableObject::after_fork_in_parent() {
    g_is_forking = false;
    g_is_forking.notify_all();
    unlock_thread_numbers();
    ThreadRecord::current().apcs()->lock().unlock();
}

void WaitableObject::after_fork_in_child() {
    after_fork_in_parent();
    auto& thread = ThreadRecord::current();
    thread.after_fork();
    handle_table::visit_live([&thread](HandleObject& object) {
        if (auto* const waitable = object.waitable()) waitable->forget_other_threads(thread);
    });
}

}  // namespace tvutil2
