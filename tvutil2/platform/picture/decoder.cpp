#include "tvutil2/platform/picture/decoder.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/draw/theme.h"
#include "tvutil2/platform/process/own_module.h"

#include <utility>

namespace tvutil2 {
namespace {

class SurfaceRoom final : public PictureRoom {
  public:
    std::uint32_t* make(int width, int height) override {
        surface = Surface::create(width, height, system_dpi(), 0);
        return surface ? surface->row(0) : nullptr;
    }
    std::shared_ptr<Surface> surface;
};

}  // namespace

std::shared_ptr<Surface> decode_picture(std::span<const std::byte> bytes, std::int64_t most) {
    auto* const decode =
        reinterpret_cast<DecodePicture*>(own_module_function("picture", kDecodePicture));
    if (decode == nullptr) return nullptr;
    SurfaceRoom room;
    const auto error = decode(bytes, most, room);
    if (error != 0) return fail_with(error), nullptr;
    return std::move(room.surface);
}

}  // namespace tvutil2
