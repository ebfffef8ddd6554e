// Resource images that no compiler wrote.
//
// Whatever is accepted must be read within its bytes: each resource of the types and names below
// in full, and each string of their blocks.
#include "tvutil2/platform/resource/resource.h"

#include <memory>

#include "fuzz/fuzz_input.h"

namespace {

const HMODULE kModule = reinterpret_cast<HMODULE>(std::uintptr_t{0x1234});

void read(HRSRC found) {
    if (found == nullptr) return;
    const auto size = SizeofResource(kModule, found);
    const auto* bytes = static_cast<const std::byte*>(LockResource(LoadResource(kModule, found)));
    fuzz::require(reinterpret_cast<std::uintptr_t>(bytes) % 4 == 0);
    unsigned int sum = 0;
    for (DWORD i = 0; i < size; ++i) sum += static_cast<unsigned int>(bytes[i]);
    fuzz::require(sum <= size * 255U);
    for (unsigned int index = 0; index < 16; ++index) {
        for (const char16_t unit : tvutil2::string_in_block({bytes, size}, index)) sum += unit;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // Of exactly its size, so that a sanitizer sees a read outside.
    const auto image = std::make_unique<std::uint8_t[]>(size);
    if (size != 0) std::memcpy(image.get(), data, size);
    if (!tvutil2::add_module_resources(kModule, image.get(), size)) return 0;
    const char16_t* const names[] = {MAKEINTRESOURCEW(0),   MAKEINTRESOURCEW(1),
                                     MAKEINTRESOURCEW(2),   MAKEINTRESOURCEW(4),
                                     MAKEINTRESOURCEW(5),   MAKEINTRESOURCEW(6),
                                     MAKEINTRESOURCEW(200), u"MAINMENU",
                                     u"onlyfrench",         u"A"};
    for (const auto* type : names) {
        for (const auto* name : names) {
            read(FindResourceW(kModule, name, type));
            read(FindResourceExW(kModule, type, name, 0x0407));
        }
    }
    for (UINT id = 0; id < 96; ++id) {
        char16_t text[8];
        const int length = LoadStringW(kModule, id, text, 8);
        fuzz::require(length >= 0 && length < 8 && (length == 0 || text[length] == 0));
    }
    tvutil2::remove_module_resources(kModule);
    return 0;
}
