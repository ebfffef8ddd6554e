// Listings of windows, as another process may have left them.
#include "tvutil2/platform/window/listing.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const auto windows = tvutil2::decode_listing(bytes);
    // What is read comes out of what was given, and nothing of that is left over.
    std::size_t used = 4;
    if (!windows) return 0;
    for (const auto& each : *windows) used += 24 + 2 * (each.class_name.size() + each.title.size());
    if (used != size) std::abort();
    return 0;
}
