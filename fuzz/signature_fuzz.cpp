// Where the signature of a PE or ELF file stands, in a file that somebody else made.
#include "tvutil2/platform/trust/embedded_signature.h"

#include <memory>

#include "fuzz/fuzz_input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto image = std::make_unique<std::byte[]>(size);
    if (size != 0) std::memcpy(image.get(), data, size);
    const tvutil2::MemoryBytes file({image.get(), size});
    fuzz::require(tvutil2::size_without_signature(file, size) <= size);
    const auto found = tvutil2::find_signature(file, size);
    if (!found) return 0;
    // Every byte is signed, or is one of those that can't be: none is left out, none counts twice.
    std::uint64_t next = 0;
    for (const auto& range : found->signed_ranges) {
        fuzz::require(range.offset >= next);
        next = range.offset + range.size;
    }
    fuzz::require(next < size && found->bytes.size() <= size - next);
    return 0;
}
