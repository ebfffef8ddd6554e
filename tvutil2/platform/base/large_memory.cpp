#include "tvutil2/platform/base/large_memory.h"

#include <sys/mman.h>

#include <cstdint>

namespace tvutil2 {

void hint_large_pages(void* memory, std::size_t size) {
    // Above what the host's C library ever takes from its common heap.
    constexpr std::size_t kLeast = std::size_t{64} << 20;
    constexpr std::uintptr_t kLargePage = std::uintptr_t{2} << 20;
    if (size < kLeast) return;
    auto* const start = static_cast<char*>(memory);
    const auto before =
        (kLargePage - reinterpret_cast<std::uintptr_t>(start) % kLargePage) % kLargePage;
    madvise(start + before, (size - before) / kLargePage * kLargePage, MADV_HUGEPAGE);
}

}  // namespace tvutil2
