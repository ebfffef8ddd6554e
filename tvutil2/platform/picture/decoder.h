// Picture files decoded, as the picture module carries it out.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"
#include "tvutil2/platform/draw/surface.h"

#include <cstdint>
#include <memory>
#include <span>

namespace tvutil2 {

/// Makes room for a picture of a size, as a Surface has it; null when there is none.
class PictureRoom {
  public:
    virtual std::uint32_t* make(int width, int height) = 0;

  protected:
    ~PictureRoom() = default;
};

/// The module's one function: a picture of any format that the host decodes, or its first frame. 0,
/// ERROR_INVALID_DATA for what isn't one or is cut off, or ERROR_NOT_ENOUGH_MEMORY for one that has
/// more than `most` pixels or is larger than a Surface may be; it isn't decoded then.
using DecodePicture = DWORD(std::span<const std::byte> bytes, std::int64_t most, PictureRoom& room);
inline constexpr auto kDecodePicture = "tvutil2_decode_picture";

/// A picture as a surface of its size. Null with the error of the module, or with
/// ERROR_MOD_NOT_FOUND where that isn't installed.
[[nodiscard]] TVUTIL_API std::shared_ptr<Surface> decode_picture(
    std::span<const std::byte> bytes, std::int64_t most = Surface::kMost);

}  // namespace tvutil2
