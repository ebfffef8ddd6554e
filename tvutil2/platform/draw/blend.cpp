#include "tvutil2/platform/draw/blend.h"

#include "tvutil2/platform/draw/context_object.h"
#include "tvutil2/platform/draw/engine.h"

#include <cstring>
#include <span>

namespace tvutil2 {
namespace {

// What is drawn over what, with colours multiplied by alpha: each channel of what is below is
// (value * rest + 127) / 255, two channels at a time.
std::uint32_t over(std::uint32_t top, std::uint32_t below) {
    constexpr std::uint32_t kPair = 0x00FF00FF;
    const auto rest = 255 - (top >> 24U);
    const auto dimmed = [rest](std::uint32_t pair) {
        pair = pair * rest + 0x00800080;
        return (pair + (pair >> 8U & kPair)) >> 8U & kPair;
    };
    return top + (dimmed(below & kPair) | dimmed(below >> 8U & kPair) << 8U);
}

// Most pieces are opaque or let everything through. Of a size that is known when this is compiled,
// the loops become few instructions.
template <std::size_t size = std::dynamic_extent>
void blend_piece(std::uint32_t* to, const std::uint32_t* from, std::size_t count = size) {
    std::uint32_t all = ~0U;
    std::uint32_t any = 0;
    for (std::size_t i = 0; i < count; ++i) {
        all &= from[i];
        any |= from[i];
    }
    if (all >= Surface::kBlack) {
        std::memcpy(to, from, count * sizeof *to);
    } else if (any != 0) {
        for (std::size_t i = 0; i < count; ++i) to[i] = over(from[i], to[i]);
    }
}

void blend_row(std::uint32_t* to, const std::uint32_t* from, std::size_t width) {
    constexpr std::size_t kPiece = 32;
    for (; width >= kPiece; width -= kPiece, to += kPiece, from += kPiece) {
        blend_piece<kPiece>(to, from);
    }
    blend_piece(to, from, width);
}

// Pixel by pixel, `from` to the corner of `to`.
void blend(const Drawing& drawing, const RECT& to, const Surface& pixels, const RECT& from) {
    for (const auto& part : drawing.clip().rects()) {
        const auto cut = common_part(part, to);
        if (is_empty(cut)) continue;
        for (auto y = cut.top; y < cut.bottom; ++y) {
            blend_row(drawing.surface().row(y) + cut.left,
                      pixels.row(from.top + y - to.top) + from.left + cut.left - to.left,
                      static_cast<std::size_t>(cut.right - cut.left));
        }
    }
}

}  // namespace

bool draw_surface(HDC context, const RECT& to, const Surface& pixels, const RECT& part) {
    const Drawing drawing(context);
    if (!drawing) return false;
    const auto from = common_part(part, pixels.area());
    const auto at = drawing.to_device(to);
    constexpr LONG kFar = 1 << 24;
    const auto is_far = [](LONG value) { return value < -kFar || value > kFar; };
    if (is_empty(from) || is_far(at.left) || is_far(at.top) || is_far(at.right) ||
        is_far(at.bottom)) {
        return true;
    }
    if (at.right - at.left == from.right - from.left &&
        at.bottom - at.top == from.bottom - from.top) {
        blend(drawing, at, pixels, from);
        return true;
    }
    auto* const engine = drawing_engine();
    if (engine == nullptr) return false;
    engine->draw_image(drawing.canvas(), at, {pixels.row(0), pixels.width(), pixels.height()}, from,
                       1);
    return true;
}

}  // namespace tvutil2
