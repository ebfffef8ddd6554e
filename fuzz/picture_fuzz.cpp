// Files of pictures, of any format, through the module that decodes them.
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/picture/decoder.h"
#include "tvutil2/platform/picture/ole_picture.h"

#include "fuzz/fuzz_input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::int64_t kMost = 1 << 20;
    const auto bytes = std::as_bytes(std::span(data, size));
    std::vector<std::byte> file(bytes.begin(), bytes.end());
    tvutil2::crop_gif_to_image(file);
    if (const auto picture = tvutil2::decode_picture(file, kMost)) {
        fuzz::require(std::int64_t{picture->width()} * picture->height() <= kMost);
        return 0;
    }
    const auto error = GetLastError();
    fuzz::require(error == ERROR_INVALID_DATA || error == ERROR_NOT_ENOUGH_MEMORY);
    return 0;
}
