#include "tvutil2/platform/objects/mutex.h"

#include "tvutil2/platform/objects/objects.h"
#include "tvutil2/platform/objects/quick.h"

namespace tvutil2 {

void Mutex::on_inserted(handle_table::Slot& slot, std::uintptr_t handle) {
    m_handle = handle;
    slot.depth.store(1, std::memory_order_relaxed);
    const DWORD owner = m_first_owner == nullptr ? 0 : m_first_owner->number();
    if (owner != 0) m_first_owner->add(handle);
    attach(slot, quick::new_word(handle, quick::Kind::mutex, owner));
}

DWORD Mutex::owner() const {
    return static_cast<DWORD>(word() & quick::kValue);
}

bool Mutex::release() {
    auto& thread = ThreadRecord::current();
    {
        WakeList woken;
        const Locked guard(*this);
        if (owner() != thread.number()) return false;
        const auto depth = slot().depth.load(std::memory_order_relaxed);
        if (depth > 1) {
            slot().depth.store(depth - 1, std::memory_order_relaxed);
            return true;
        }
        word().fetch_and(~quick::kValue);
        offer(woken);
    }
    thread.remove(m_handle);
    return true;
}

void Mutex::abandon(std::uintptr_t handle, const ThreadRecord& owner) {
    // Also where the handle is closed: somebody may wait still.
    const handle_table::Pin pin(handle, true);
    if (!pin) return;
    auto& mutex = static_cast<Mutex&>(*pin.object());
    WakeList woken;
    const Locked guard(mutex);
    if (mutex.owner() != owner.number()) return;
    mutex.word().fetch_or(quick::kAbandoned);
    mutex.word().fetch_and(~quick::kValue);
    mutex.offer(woken);
}

bool Mutex::is_available(const ThreadRecord& thread) const {
    return owner() == 0 || owner() == thread.number();
}

DWORD Mutex::outcome() const {
    return (word() & quick::kAbandoned) != 0 ? WAIT_ABANDONED_0 : WAIT_OBJECT_0;
}

void Mutex::take(ThreadRecord& thread) {
    if (owner() == thread.number()) {
        slot().depth.fetch_add(1, std::memory_order_relaxed);
        return;
    }
    slot().depth.store(1, std::memory_order_relaxed);
    word().fetch_and(~quick::kAbandoned);
    word().fetch_or(thread.number());
}

void Mutex::on_taken(ThreadRecord& thread) {
    if (slot().depth.load(std::memory_order_relaxed) == 1) thread.add(m_handle);
}

// The other threads don't exist in the child.
void Mutex::after_fork(const ThreadRecord& thread) {
    if (is_available(thread)) return;
    word().fetch_or(quick::kAbandoned);
    word().fetch_and(~quick::kValue);
}

}  // namespace tvutil2
