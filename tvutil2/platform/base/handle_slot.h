// A row of the handle table, for those who look into it on a hot path.
//
// Rows are never freed, so that any handle, however stale, leads to one. What belongs to a handle
// is told by the generation that stands beside it in the same atomic word: who changes the word by
// compare-exchange has looked at the generation in the same step, and takes no lock and no share.
#pragma once

#include "tvutil2/platform/base/handle_table.h"

#include <array>
#include <atomic>
#include <bit>

namespace tvutil2::handle_table {

struct alignas(64) Slot {
    /// Bits 32 to 63 are the generation, bit 31 says closed, bits 0 to 30 count the pins. A closed
    /// row without pins is free.
    std::atomic<std::uint64_t> share{std::uint64_t{1} << 32 | kClosed};
    /// Bits 32 to 63 are the generation, 0 while the row isn't live; the rest is state of an object
    /// that has so little of it (objects/quick.h).
    std::atomic<std::uint64_t> quick{0};
    /// Times that the owner of a mutex has taken it. Changed by the owner only.
    std::atomic<std::uint32_t> depth{0};
    std::shared_ptr<HandleObject> object;

    static constexpr std::uint64_t kClosed = std::uint64_t{1} << 31;
    /// In `quick`: the state is changed under the object's own lock only, since somebody waits.
    static constexpr std::uint64_t kQueued = std::uint64_t{1} << 31;
    /// In `quick`: the handle is closed, and kQueued stays.
    static constexpr std::uint64_t kGone = std::uint64_t{1} << 30;
};

inline constexpr std::uint32_t kMaxHandles = std::uint32_t{1} << 24;
inline constexpr std::uint32_t kFirstChunk = 256;

/// Rows stand in chunks, each as large as all before it and one more of the first, so that they
/// never move.
extern std::array<std::atomic<Slot*>, 17> g_chunks;

[[nodiscard]] constexpr unsigned chunk_of(std::uint32_t index) {
    return 31U - static_cast<unsigned>(std::countl_zero(index / kFirstChunk + 1));
}
[[nodiscard]] constexpr std::uint32_t start_of(unsigned chunk) {
    return kFirstChunk * ((1U << chunk) - 1);
}
[[nodiscard]] constexpr std::uint32_t index_of(std::uintptr_t handle) {
    return static_cast<std::uint32_t>(handle) >> 2U;
}
[[nodiscard]] constexpr std::uint64_t generation_of(std::uintptr_t handle) {
    return handle >> 32U;
}

/// Null for an index that no handle ever had.
[[nodiscard]] inline Slot* slot_at(std::uint32_t index) {
    if (index >= kMaxHandles) return nullptr;
    const auto chunk = chunk_of(index);
    auto* const first = g_chunks[chunk].load(std::memory_order_acquire);
    return first == nullptr ? nullptr : first + (index - start_of(chunk));
}

/// The row that a handle points at, be the handle live or not.
[[nodiscard]] inline Slot* slot_of(std::uintptr_t handle) {
    return (handle & 3U) != 0 ? nullptr : slot_at(index_of(handle));
}

}  // namespace tvutil2::handle_table
