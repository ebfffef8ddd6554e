// Picture files decoded, as the picture module carries it out.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"
#include "tvutil2/platform/draw/surface.h"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace tvutil2 {

struct DecodedPicture {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels;  ///< as a Surface has them
};

/// The module's one function: a picture of any format that the host decodes, or its first frame. 0,
/// ERROR_INVALID_DATA for what isn't one or is cut off, or ERROR_NOT_ENOUGH_MEMORY for one that is
/// larger than a Surface may be; it isn't decoded then.
using DecodePicture = DWORD(std::span<const std::byte> bytes, DecodedPicture& picture);
inline constexpr auto kDecodePicture = "tvutil2_decode_picture";

/// A picture as a surface of its size. Null with the error of the module, or with
/// ERROR_MOD_NOT_FOUND where that isn't installed.
[[nodiscard]] TVUTIL_API std::shared_ptr<Surface> decode_picture(std::span<const std::byte> bytes);

}  // namespace tvutil2
