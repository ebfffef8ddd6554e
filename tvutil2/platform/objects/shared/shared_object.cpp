#include "tvutil2/platform/objects/shared/shared_object.h"

#include "tvutil2/platform/objects/objects.h"
#include "tvutil2/platform/objects/shared/named_objects.h"

#include <algorithm>
#include <climits>

namespace tvutil2 {
namespace {

constexpr DWORD number_of(std::uint64_t pulses) {
    return static_cast<DWORD>(pulses >> 32);
}
constexpr DWORD open_ones(std::uint64_t pulses) {
    return static_cast<DWORD>(pulses);
}

}  // namespace

SharedObject::SharedObject(HandleKind kind, std::unique_ptr<SharedBlock> block, std::u16string name)
    : WaitableObject(kind), m_block(std::move(block)), m_name(std::move(name)) {}

SharedObject::~SharedObject() {
    named_objects::give_up(*this);
}

void SharedObject::note_pulses(WaitEntry& entry) const {
    entry.since = number_of(header().pulses.load());
}

void SharedObject::begin_wait() {
    header().sleepers.fetch_add(1);
}

void SharedObject::end_wait(bool has_taken) {
    header().sleepers.fetch_sub(1);
    if (!has_taken) pass_on();
}

void SharedObject::prepare_sleep(WaitEntry& entry) {
    entry.seen = header().sequence.load();
}

template <class Change>
void SharedObject::signal(const Change& change) {
    // Who is killed before it has woken the others is made good for by the kernel, which wakes one.
    const RobustList::Pending pending(RobustList::current(), robust());
    if (!change()) return;
    header().sequence.fetch_add(1);
    if (header().sleepers.load() > 0) wake_shared(header().sequence, INT_MAX);
}

void SharedEvent::reset() {
    header().state.store(0);
}

void SharedEvent::set() {
    signal([this] {
        header().state.store(1);
        return true;
    });
}

// One pulse more is open to those who wait already, of whom nobody sees the number of it as the
// present one.
void SharedEvent::pulse() {
    signal([this] {
        header().state.store(0);
        auto pulses = header().pulses.load();
        std::uint64_t next = 0;
        do {
            const auto waiting = std::uint64_t{header().sleepers.load()};
            const auto open = std::min(std::uint64_t{open_ones(pulses)} + 1, waiting);
            next = (std::uint64_t{number_of(pulses) + 1} << 32) | open;
        } while (!header().pulses.compare_exchange_weak(pulses, next));
        return true;
    });
}

bool SharedEvent::take_pulse(DWORD since) {
    auto pulses = header().pulses.load();
    do {
        if (number_of(pulses) == since) return false;
        if (is_manual()) return true;
        if (open_ones(pulses) == 0) return false;
    } while (!header().pulses.compare_exchange_weak(pulses, pulses - 1));
    return true;
}

bool SharedEvent::is_available(const ThreadRecord& /*thread*/) const {
    return header().state.load() != 0;
}

bool SharedEvent::try_take(ThreadRecord& /*thread*/, const WaitEntry& entry, DWORD& outcome) {
    outcome = WAIT_OBJECT_0;
    DWORD signalled = 1;
    const bool is_taken = is_manual() ? header().state.load() != 0
                                      : header().state.compare_exchange_strong(signalled, 0);
    return is_taken || take_pulse(entry.since);
}

void SharedEvent::give_back(ThreadRecord& /*thread*/, DWORD /*outcome*/) {
    if (!is_manual()) set();
}

bool SharedSemaphore::release(LONG count, LONG* previous) {
    bool fits = false;
    signal([&] {
        auto present = header().state.load();
        do {
            const auto maximum = block().traits();
            fits = present <= maximum && static_cast<DWORD>(count) <= maximum - present;
            if (!fits) return false;
        } while (
            !header().state.compare_exchange_weak(present, present + static_cast<DWORD>(count)));
        if (previous != nullptr) *previous = static_cast<LONG>(present);
        return true;
    });
    return fits;
}

bool SharedSemaphore::is_available(const ThreadRecord& /*thread*/) const {
    return header().state.load() != 0;
}

bool SharedSemaphore::try_take(ThreadRecord& /*thread*/, const WaitEntry& /*entry*/,
                               DWORD& outcome) {
    outcome = WAIT_OBJECT_0;
    auto count = header().state.load();
    do {
        if (count == 0) return false;
    } while (!header().state.compare_exchange_weak(count, count - 1));
    return true;
}

void SharedSemaphore::give_back(ThreadRecord& /*thread*/, DWORD /*outcome*/) {
    release(1, nullptr);
}

bool SharedMutex::is_available(const ThreadRecord& thread) const {
    const auto present = owner();
    return present == 0 || present == thread.host_id();
}

bool SharedMutex::try_take(ThreadRecord& thread, const WaitEntry& /*entry*/, DWORD& outcome) {
    outcome = WAIT_OBJECT_0;
    if (owner() == thread.host_id()) {
        ++m_depth;
        return true;
    }
    auto* const list = RobustList::current();
    const RobustList::Pending pending(list, robust());
    auto present = robust().word.load();
    do {
        if ((present & RobustWord::kOwner) != 0) return false;
    } while (!robust().word.compare_exchange_weak(
        present, thread.host_id() | (present & RobustWord::kSleepers)));
    list->add(robust());
    m_depth = 1;
    thread.add_shared(shared_from_this());
    if ((present & RobustWord::kLeft) != 0) outcome = WAIT_ABANDONED_0;
    return true;
}

void SharedMutex::free_word(DWORD mark) {
    auto* const list = RobustList::current();
    const RobustList::Pending pending(list, robust());
    list->remove(robust());
    const auto former = robust().word.load();
    robust().word.fetch_and(RobustWord::kSleepers);
    if (mark != 0) robust().word.fetch_or(mark);
    if ((former & RobustWord::kSleepers) != 0) wake_shared(robust().word, 1);
}

bool SharedMutex::release() {
    auto& thread = ThreadRecord::current();
    if (owner() != thread.host_id()) return false;
    if (--m_depth > 0) return true;
    const auto keep = shared_from_this();
    thread.remove_shared(this);
    free_word(0);
    return true;
}

// What a thread owns lives on without a handle, to be abandoned by its end. Where nobody could
// tell, it ends here instead, and the name is free.
void SharedMutex::on_closed() {
    auto& thread = ThreadRecord::current();
    if (owner() != thread.host_id()) return;
    // This function, its caller and the owner; further ones are handles, and waits.
    const auto keep = shared_from_this();
    if (keep.use_count() > 3 || !named_objects::is_only_holder(*this)) return;
    m_depth = 0;
    thread.remove_shared(this);
    free_word(RobustWord::kLeft);
}

void SharedMutex::abandon() {
    free_word(RobustWord::kLeft);
}

void SharedMutex::give_back(ThreadRecord& thread, DWORD outcome) {
    if (--m_depth > 0) return;
    thread.remove_shared(this);
    free_word(outcome == WAIT_ABANDONED_0 ? RobustWord::kLeft : 0);
}

// From now on every release of the word wakes somebody.
void SharedMutex::prepare_sleep(WaitEntry& entry) {
    auto present = robust().word.load();
    while ((present & RobustWord::kOwner) != 0 &&
           !robust().word.compare_exchange_weak(present, present | RobustWord::kSleepers)) {
    }
    entry.seen = present | RobustWord::kSleepers;
}

// It may have been woken for the mutex and leaves without it.
void SharedMutex::pass_on() {
    const auto present = robust().word.load();
    if ((present & RobustWord::kOwner) == 0 && (present & RobustWord::kSleepers) != 0) {
        wake_shared(robust().word, 1);
    }
}

}  // namespace tvutil2
