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
    std::size_t total = 0;
    const bool is_whole = tvutil2::visit_pe_resources(file, [&](const tvutil2::PeResource& each) {
        fuzz::require(each.data.size() <= size && each.name.text.size() * 2 <= size);
        total += each.data.size() + 32;
        return total < 1000000;
    });
    fuzz::require(!is_whole || tvutil2::is_pe_file(file));
    return 0;
}
