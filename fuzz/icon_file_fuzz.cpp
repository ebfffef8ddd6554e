// Files of icons, and GIFs whose logical screen is cut to their first image.
#include "tvutil2/platform/picture/icon_file.h"
#include "tvutil2/platform/picture/ole_picture.h"

#include <memory>

#include "fuzz/fuzz_input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const auto copy = std::make_unique<std::byte[]>(size - 1);
    if (size > 1) std::memcpy(copy.get(), data + 1, size - 1);
    const std::span file(copy.get(), size - 1);
    for (const bool is_resource : {false, true}) {
        const auto entry = tvutil2::best_icon(file, is_resource, data[0] * 2);
        if (!entry) continue;
        fuzz::require(entry->width > 0 && entry->height > 0 && entry->head.size() == 12);
        const auto found = tvutil2::icon_data(*entry, file);
        fuzz::require(found.empty() || found.size() == entry->size);
    }
    std::vector<std::byte> gif(file.begin(), file.end());
    tvutil2::crop_gif_to_image(gif);
    fuzz::require(gif.size() <= file.size() + 1);
    return 0;
}
