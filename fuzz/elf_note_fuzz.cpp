// The version note of an executable that somebody else made.
#include "tvutil2/platform/system/elf_note.h"

#include <memory>

#include "fuzz/fuzz_input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto image = std::make_unique<std::byte[]>(size);
    if (size != 0) std::memcpy(image.get(), data, size);
    const tvutil2::MemoryBytes file({image.get(), size});
    fuzz::require(!tvutil2::elf_version(file) || tvutil2::is_elf_file(file));
    return 0;
}
