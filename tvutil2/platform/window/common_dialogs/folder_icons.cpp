#include "tvutil2/platform/window/common_dialogs/folder_icons.h"

#include "tvutil2/platform/draw/theme.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <span>

namespace tvutil2 {
namespace {

constexpr int kSide = 16;
constexpr int kSamples = 4;  // a pixel is looked at in that many places across and down

enum class Tint : std::uint8_t { folder, folder_back, line, paper, screen };

// A rectangle with round corners, in pixels at 96 dots an inch.
struct Shape {
    double left, top, right, bottom, radius;
    Tint tint;

    [[nodiscard]] bool holds(double x, double y) const {
        if (x < left || x >= right || y < top || y >= bottom) return false;
        const auto dx = std::max({left + radius - x, x - (right - radius), 0.0});
        const auto dy = std::max({top + radius - y, y - (bottom - radius), 0.0});
        return dx * dx + dy * dy <= radius * radius;
    }
};

constexpr Shape kFolder[] = {{1, 2.5, 7.5, 8, 1.2, Tint::folder_back},
                             {1, 4, 15, 13, 1.2, Tint::folder_back},
                             {1, 5.5, 15, 13.5, 1.4, Tint::folder}};
constexpr Shape kFile[] = {{3, 1, 13, 15, 1.2, Tint::line},
                           {4, 2, 12, 14, 0.5, Tint::paper},
                           {5.5, 5, 10.5, 6, 0, Tint::line},
                           {5.5, 7.5, 10.5, 8.5, 0, Tint::line},
                           {5.5, 10, 9, 11, 0, Tint::line}};
constexpr Shape kDrive[] = {{1, 4, 15, 12.5, 2, Tint::line},
                            {2, 5, 14, 11.5, 1.2, Tint::paper},
                            {2.5, 8.5, 13.5, 9.3, 0, Tint::line},
                            {11, 9.9, 12.5, 10.9, 0.4, Tint::screen}};
constexpr Shape kComputer[] = {{1, 2, 15, 11.5, 1.4, Tint::line},
                               {2, 3, 14, 10.5, 0.6, Tint::screen},
                               {7, 11.5, 9, 13, 0, Tint::line},
                               {4.5, 13, 11.5, 14, 0.4, Tint::line}};
constexpr Shape kDesktop[] = {{1, 2.5, 15, 13.5, 1.4, Tint::line},
                              {2, 3.5, 14, 12.5, 0.6, Tint::screen},
                              {2, 10.5, 14, 12.5, 0.3, Tint::paper}};

constexpr std::array<std::span<const Shape>, 6> kIcons{kFolder,   kFile,    kDrive,
                                                       kComputer, kDesktop, {}};

struct Color {
    double red, green, blue;
};

Color color_of(Tint tint) {
    const bool is_light = theme().mode == ThemeMode::light;
    switch (tint) {
        case Tint::folder:
            return {240, 190, 80};
        case Tint::folder_back:
            return {205, 150, 45};
        case Tint::paper:
            return is_light ? Color{250, 250, 250} : Color{70, 70, 74};
        case Tint::screen:
            return {60, 130, 210};
        default:
            return is_light ? Color{110, 115, 122} : Color{180, 184, 190};
    }
}

std::uint32_t pixel_of(std::span<const Shape> shapes, int x, int y, double scale) {
    Color sum{};
    int covered = 0;
    for (int i = 0; i < kSamples * kSamples; ++i) {
        const int column = i % kSamples;
        const int row = i / kSamples;
        const auto at_x = (x + (column + 0.5) / kSamples) / scale;
        const auto at_y = (y + (row + 0.5) / kSamples) / scale;
        const auto top = std::find_if(shapes.rbegin(), shapes.rend(),
                                      [&](const Shape& shape) { return shape.holds(at_x, at_y); });
        if (top == shapes.rend()) continue;
        const auto color = color_of(top->tint);
        sum = {sum.red + color.red, sum.green + color.green, sum.blue + color.blue};
        ++covered;
    }
    const auto part = [](double value) {
        return static_cast<std::uint32_t>(std::lround(value / (kSamples * kSamples)));
    };
    return part(covered * 255.0) << 24 | part(sum.red) << 16 | part(sum.green) << 8 |
           part(sum.blue);
}

}  // namespace

HIMAGELIST make_folder_icons(UINT dpi) {
    const auto side = scaled(kSide, dpi);
    auto* const list =
        ImageList_Create(side, side, ILC_COLOR32, static_cast<int>(kIcons.size()), 1);
    for (const auto& shapes : kIcons) {
        const auto surface = Surface::create(side, side, dpi, 0);
        if (!surface) continue;
        for (int y = 0; y < side; ++y) {
            for (int x = 0; x < side; ++x) {
                surface->row(y)[x] = pixel_of(shapes, x, y, static_cast<double>(side) / kSide);
            }
        }
        auto* const icon = make_icon(surface, {side, side});
        ImageList_AddIcon(list, icon);
        DestroyIcon(icon);
    }
    return list;
}

}  // namespace tvutil2
