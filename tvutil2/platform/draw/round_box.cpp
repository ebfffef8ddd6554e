#include "tvutil2/platform/draw/round_box.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <memory>

namespace tvutil2 {
namespace {

constexpr int kLargestCorner = 64;
constexpr std::size_t kMostCorners = 32;

// Without a lock: a child after a fork may find one held for ever.
constinit std::array<std::atomic<const RoundCorner*>, kMostCorners> g_corners{};

std::unique_ptr<const RoundCorner> make_corner(Engine& engine, double radius, int line, int size) {
    constexpr std::uint32_t kWhite = 0xFFFFFFFF;
    const int side = 2 * size + 2;
    std::vector<std::uint32_t> pixels(static_cast<std::size_t>(side * side));
    const RECT all{0, 0, side, side};
    const Canvas canvas{pixels.data(), side, side, {&all, 1}};
    Path path;
    path.add_round_rect(line / 2.0, line / 2.0, side - line, side - line, radius - line / 2.0);
    if (line == 0) {
        engine.fill(canvas, path, kWhite);
    } else {
        engine.stroke(canvas, path, {.width = static_cast<double>(line), .dashes = {}}, kWhite);
    }
    auto corner = std::make_unique<RoundCorner>(RoundCorner{radius, line, size, {}});
    for (int y = 0; y < size; ++y) {
        const auto* const row = pixels.data() + std::ptrdiff_t{y} * side;
        for (int x = 0; x < size; ++x) {
            corner->coverage.push_back(static_cast<std::uint8_t>(row[x] >> 24U));
        }
    }
    return corner;
}

// Two channels at once, each in 16 bits.
std::uint32_t mixed(std::uint32_t below, std::uint32_t above, std::uint32_t part) {
    const auto channels = [part](std::uint32_t old, std::uint32_t ink) {
        const auto sum = ink * part + old * (255 - part) + 0x800080;
        return (sum + ((sum >> 8U) & 0xFF00FF)) >> 8U & 0xFF00FF;
    };
    return channels(below & 0xFF00FF, above & 0xFF00FF) |
           channels(below >> 8U & 0xFF00FF, above >> 8U & 0xFF00FF) << 8U;
}

// `from` is the pixel of the corner's outermost one, and the corner goes on in these directions.
void draw_corner(const Drawing& drawing, const RoundCorner& corner, POINT from, POINT step,
                 std::uint32_t pixel) {
    const auto last =
        POINT{from.x + step.x * (corner.size - 1), from.y + step.y * (corner.size - 1)};
    const RECT place{std::min(from.x, last.x), std::min(from.y, last.y),
                     std::max(from.x, last.x) + 1, std::max(from.y, last.y) + 1};
    for (const auto& part : drawing.clip().rects()) {
        const auto cut = common_part(part, place);
        for (auto y = cut.top; y < cut.bottom; ++y) {
            auto* const row = drawing.surface().row(y);
            const auto* const coverage =
                corner.coverage.data() + std::abs(std::ptrdiff_t{y} - from.y) * corner.size;
            for (auto x = cut.left; x < cut.right; ++x) {
                row[x] = mixed(row[x], pixel, coverage[std::abs(x - from.x)]);
            }
        }
    }
}

}  // namespace

const RoundCorner* round_corner(Engine& engine, double radius, int line) {
    const auto size =
        static_cast<int>(std::ceil(std::clamp<double>(radius, line, 2 * kLargestCorner)));
    if (size <= 0 || size > kLargestCorner) return nullptr;
    std::unique_ptr<const RoundCorner> fresh;
    for (auto& place : g_corners) {
        const auto* kept = place.load(std::memory_order_acquire);
        if (kept == nullptr) {
            if (!fresh) fresh = make_corner(engine, radius, line, size);
            if (place.compare_exchange_strong(kept, fresh.get())) return fresh.release();
        }
        if (kept->radius == radius && kept->line == line) return kept;
    }
    return nullptr;
}

bool draw_round_box(const Drawing& drawing, const RECT& box, const RoundCorner& corner,
                    std::uint32_t pixel) {
    const auto size = corner.size;
    const auto [left, top, right, bottom] = box;
    if (right - left < 2 * size || bottom - top < 2 * size) return false;
    const auto line = corner.line == 0 ? size : corner.line;
    drawing.fill(RECT{left + size, top, right - size, top + line}, pixel);
    drawing.fill(RECT{left + size, bottom - line, right - size, bottom}, pixel);
    if (corner.line == 0) {
        drawing.fill(RECT{left, top + size, right, bottom - size}, pixel);
    } else {
        drawing.fill(RECT{left, top + size, left + line, bottom - size}, pixel);
        drawing.fill(RECT{right - line, top + size, right, bottom - size}, pixel);
    }
    draw_corner(drawing, corner, {left, top}, {1, 1}, pixel);
    draw_corner(drawing, corner, {right - 1, top}, {-1, 1}, pixel);
    draw_corner(drawing, corner, {left, bottom - 1}, {1, -1}, pixel);
    draw_corner(drawing, corner, {right - 1, bottom - 1}, {-1, -1}, pixel);
    return true;
}

}  // namespace tvutil2
