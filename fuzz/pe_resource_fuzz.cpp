// Resources of an executable that somebody else made: never more than was asked for, and never
// anything outside the file.
#include "tvutil2/platform/system/pe_file.h"

#include <algorithm>
#include <memory>

#include "fuzz/fuzz_input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // Of exactly its size, so that a sanitizer sees a read outside.
    const auto image = std::make_unique<std::byte[]>(size);
    if (size != 0) std::memcpy(image.get(), data, size);
    const tvutil2::MemoryBytes file({image.get(), size});
    for (const std::size_t most : {std::size_t{0}, std::size_t{100}, std::size_t{65535}}) {
        for (const WORD type : {WORD{6}, WORD{16}}) {
            const auto found = tvutil2::pe_resource(file, type, 1, most);
            fuzz::require(!found || found->size() <= std::min(most, size));
        }
    }
    return 0;
}
