#include "tvutil2/platform/objects/event.h"

#include "tvutil2/platform/objects/quick.h"

namespace tvutil2 {

void Event::on_inserted(handle_table::Slot& slot, std::uintptr_t handle) {
    const auto kind = m_is_manual ? quick::Kind::manual_event : quick::Kind::auto_event;
    attach(slot, quick::new_word(handle, kind, m_is_signalled ? 1 : 0));
}

void Event::set() {
    WakeList woken;
    const Locked guard(*this);
    word().fetch_or(1);
    offer(woken);
}

void Event::reset() {
    const Locked guard(*this);
    word().fetch_and(~quick::kValue);
}

void Event::pulse() {
    WakeList woken;
    const Locked guard(*this);
    word().fetch_or(1);
    offer(woken);
    word().fetch_and(~quick::kValue);
}

bool Event::is_available(const ThreadRecord& /*thread*/) const {
    return (word() & quick::kValue) != 0;
}

void Event::take(ThreadRecord& /*thread*/) {
    if (!m_is_manual) word().fetch_and(~quick::kValue);
}

}  // namespace tvutil2
