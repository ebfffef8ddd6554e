// Events and mutexes that nobody waits for: their whole state is a few bits beside the generation
// of their handle, changed by one compare-exchange that a stale handle can't pass.
//
// As soon as somebody waits the row is marked as queued. From then on the state is changed under
// the object's lock only, by those who serve the queue, until the queue is empty again.
#pragma once

#include "tvutil2/platform/base/handle_slot.h"
#include "tvutil2/platform/objects/thread_record.h"

namespace tvutil2::quick {

using handle_table::Slot;

enum class Kind : std::uint8_t { none, auto_event, manual_event, mutex };

inline constexpr std::uint64_t kAbandoned = std::uint64_t{1} << 29;
inline constexpr unsigned kKindShift = 26;
/// Of an event 1 for signalled; of a mutex the owner's number.
inline constexpr std::uint64_t kValue = (std::uint64_t{1} << kKindShift) - 1;
static_assert(ThreadRecord::kMaxNumber <= kValue);

[[nodiscard]] constexpr Kind kind_of(std::uint64_t word) {
    return static_cast<Kind>((word >> kKindShift) & 7U);
}
[[nodiscard]] constexpr std::uint64_t new_word(std::uintptr_t handle, Kind kind,
                                               std::uint64_t value) {
    return handle_table::generation_of(handle) << 32 |
           static_cast<std::uint64_t>(kind) << kKindShift | value;
}

enum class Result : std::uint8_t {
    done,
    refused,  ///< not signalled, owned by another thread, not owned by this one
    ask,      ///< the object must be asked: somebody waits, it has another kind, it isn't there
};

/// The row of a handle and the word in it, if it belongs to that handle and is of a quick kind.
struct Row {
    explicit Row(std::uintptr_t handle)
        : slot(handle_table::slot_of(handle)),
          word(slot == nullptr ? 0 : slot->quick.load(std::memory_order_acquire)) {
        if (slot == nullptr || word >> 32 != handle_table::generation_of(handle)) slot = nullptr;
    }
    [[nodiscard]] Kind kind() const { return slot == nullptr ? Kind::none : kind_of(word); }
    [[nodiscard]] bool is_queued() const { return (word & Slot::kQueued) != 0; }
    [[nodiscard]] std::uint64_t value() const { return word & kValue; }
    /// False when the word has changed; `word` is the present one then.
    bool change_to(std::uint64_t next) {
        return slot->quick.compare_exchange_strong(word, next, std::memory_order_acq_rel,
                                                   std::memory_order_acquire);
    }
    [[nodiscard]] bool is_of(std::uintptr_t handle) const {
        return word >> 32 == handle_table::generation_of(handle);
    }

    Slot* slot;
    std::uint64_t word;
};

/// Takes the object as a wait does. `is_abandoned` is set if it was.
[[nodiscard]] inline Result take(std::uintptr_t handle, ThreadRecord& thread, bool& is_abandoned) {
    for (Row row(handle);;) {
        auto next = row.word;
        switch (row.kind()) {
            case Kind::manual_event:
                if (row.is_queued()) return Result::ask;
                return row.value() != 0 ? Result::done : Result::refused;
            case Kind::auto_event:
                if (row.is_queued()) return Result::ask;
                if (row.value() == 0) return Result::refused;
                --next;
                break;
            case Kind::mutex:
                if (row.value() == thread.number() && (row.word & Slot::kGone) == 0) {
                    const auto depth = row.slot->depth.load(std::memory_order_relaxed);
                    row.slot->depth.store(depth + 1, std::memory_order_relaxed);
                    return Result::done;
                }
                if (row.is_queued()) return Result::ask;
                if (row.value() != 0) return Result::refused;
                next = (next & ~kAbandoned) | thread.number();
                thread.make_room();
                break;
            default:
                return Result::ask;
        }
        const bool was_abandoned = (row.word & kAbandoned) != 0;
        if (row.change_to(next)) {
            if (row.kind() == Kind::mutex) {
                row.slot->depth.store(1, std::memory_order_relaxed);
                thread.add(handle);
                is_abandoned = was_abandoned;
            }
            return Result::done;
        }
        if (!row.is_of(handle)) return Result::ask;
    }
}

/// Sets or resets an event. Written even if it is set already: who takes it sees what was done
/// before.
[[nodiscard]] inline Result signal(std::uintptr_t handle, bool is_set) {
    for (Row row(handle);;) {
        const auto kind = row.kind();
        if ((kind != Kind::auto_event && kind != Kind::manual_event) || row.is_queued()) {
            return Result::ask;
        }
        if (row.change_to((row.word & ~kValue) | (is_set ? 1U : 0U))) return Result::done;
        if (!row.is_of(handle)) return Result::ask;
    }
}

/// Gives a mutex back.
[[nodiscard]] inline Result release(std::uintptr_t handle, ThreadRecord& thread) {
    for (Row row(handle);;) {
        if (row.kind() != Kind::mutex || (row.word & Slot::kGone) != 0) return Result::ask;
        if (row.value() != thread.number()) return Result::refused;
        const auto depth = row.slot->depth.load(std::memory_order_relaxed);
        if (depth > 1) {
            row.slot->depth.store(depth - 1, std::memory_order_relaxed);
            return Result::done;
        }
        if (row.is_queued()) return Result::ask;
        if (row.change_to(row.word & ~kValue)) {
            thread.remove(handle);
            return Result::done;
        }
        if (!row.is_of(handle)) return Result::ask;
    }
}

}  // namespace tvutil2::quick
