#include "tvutil2/platform/picture/decoder.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/draw/theme.h"
#include "tvutil2/platform/process/own_module.h"

#include <algorithm>

namespace tvutil2 {

std::shared_ptr<Surface> decode_picture(std::span<const std::byte> bytes) {
    auto* const decode =
        reinterpret_cast<DecodePicture*>(own_module_function("picture", kDecodePicture));
    if (decode == nullptr) return nullptr;
    DecodedPicture picture;
    const auto error = decode(bytes, picture);
    if (error != 0) return fail_with(error), nullptr;
    auto surface = Surface::create(picture.width, picture.height, system_dpi(), 0);
    if (surface) std::ranges::copy(picture.pixels, surface->row(0));
    return surface;
}

}  // namespace tvutil2
