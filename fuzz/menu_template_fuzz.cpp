// Menu templates that no compiler wrote: read within their bytes, and no larger than these.
#include "tvutil2/platform/window/menus/menu_template.h"

#include <cstring>
#include <memory>

#include "fuzz/fuzz_input.h"

namespace {

std::size_t units_of(const std::vector<tvutil2::MenuTemplateItem>& items) {
    std::size_t sum = 0;
    for (const auto& each : items) sum += 1 + each.text.size() + units_of(each.items);
    return sum;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // Of exactly its size, so that a sanitizer sees a read outside.
    const auto bytes = std::make_unique<std::byte[]>(size);
    if (size != 0) std::memcpy(bytes.get(), data, size);
    const auto items = tvutil2::read_menu_template({bytes.get(), size});
    if (items) fuzz::require(units_of(*items) <= size);
    return 0;
}
