#include "tvutil2/platform/draw/shapes.h"

#include "tvutil2/platform/draw/context_object.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <utility>

using tvutil2::Drawing;
using tvutil2::fail_with;
using tvutil2::Path;
using tvutil2::pixel_of;

namespace {

constexpr COLORREF color_of(std::uint32_t pixel) {
    return RGB(pixel >> 16, pixel >> 8, pixel);
}

// Smooth drawing works with numbers that it can still tell a pixel in.
double held(LONG value) {
    constexpr LONG kFar = LONG{1} << 22;
    return std::clamp(value, -kFar, kFar);
}

void fill_frame(const Drawing& drawing, const RECT& rect, int width, std::uint32_t pixel) {
    if (tvutil2::is_empty(rect)) return;
    const auto inner_top = std::min<LONG>(tvutil2::plus(rect.top, width), rect.bottom);
    const auto inner_bottom = std::max<LONG>(tvutil2::plus(rect.bottom, -width), inner_top);
    const auto inner_left = std::min<LONG>(tvutil2::plus(rect.left, width), rect.right);
    const auto inner_right = std::max<LONG>(tvutil2::plus(rect.right, -width), inner_left);
    drawing.fill({rect.left, rect.top, rect.right, inner_top}, pixel);
    drawing.fill({rect.left, inner_bottom, rect.right, rect.bottom}, pixel);
    drawing.fill({rect.left, inner_top, inner_left, inner_bottom}, pixel);
    drawing.fill({inner_right, inner_top, rect.right, inner_bottom}, pixel);
}

bool pen_is_plain(const tvutil2::ContextState& state) {
    const auto& pen = *state.pen.object;
    return pen.record().lopnStyle == UINT{PS_SOLID};
}

std::array<double, 2> dashes_of(const tvutil2::PenObject& pen) {
    const auto dash = pen.width() * (pen.record().lopnStyle == UINT{PS_DASH} ? 4.0 : 1.0);
    return {dash, pen.width() * (pen.record().lopnStyle == UINT{PS_DASH} ? 2.0 : 1.0)};
}

bool stroke(const Drawing& drawing, const Path& path) {
    const auto& pen = *drawing.state().pen.object;
    if (pen.is_hollow()) return true;
    auto* const engine = tvutil2::drawing_engine();
    if (engine == nullptr) return false;
    const auto dashes = dashes_of(pen);
    tvutil2::Stroke how;
    how.width = pen.width();
    if (!pen_is_plain(drawing.state())) how.dashes = dashes;
    how.is_round = how.dashes.empty() && pen.width() > 1;
    engine->stroke(drawing.canvas(), path, how, pixel_of(pen.record().lopnColor));
    return true;
}

bool fill(const Drawing& drawing, const Path& path) {
    const auto& brush = *drawing.state().brush.object;
    if (brush.is_hollow()) return true;
    auto* const engine = tvutil2::drawing_engine();
    if (engine == nullptr) return false;
    engine->fill(drawing.canvas(), path, pixel_of(brush.color()));
    return true;
}

// A line of a solid pen along the pixels; false when it is slanted or otherwise.
bool draw_straight(const Drawing& drawing, POINT from, POINT to) {
    const auto& pen = *drawing.state().pen.object;
    if (!pen_is_plain(drawing.state()) || (from.x != to.x && from.y != to.y)) return false;
    const auto before = (pen.width() - 1) / 2;
    const auto behind = pen.width() - before;
    // Backwards, the first pixel is the one that is left out.
    const auto range = [](LONG a, LONG b) {
        return a <= b ? std::pair(a, b) : std::pair(tvutil2::plus(b, 1), tvutil2::plus(a, 1));
    };
    const auto pixel = pixel_of(pen.record().lopnColor);
    if (from.y == to.y) {
        const auto [left, right] = range(from.x, to.x);
        drawing.fill({left, tvutil2::plus(from.y, -before), right, tvutil2::plus(from.y, behind)},
                     pixel);
    } else {
        const auto [top, bottom] = range(from.y, to.y);
        drawing.fill({tvutil2::plus(from.x, -before), top, tvutil2::plus(from.x, behind), bottom},
                     pixel);
    }
    return true;
}

bool draw_line(const Drawing& drawing, POINT from, POINT to) {
    if (drawing.state().pen.object->is_hollow() || draw_straight(drawing, from, to)) return true;
    Path path;
    path.move_to(held(from.x) + 0.5, held(from.y) + 0.5)
        .line_to(held(to.x) + 0.5, held(to.y) + 0.5);
    return stroke(drawing, path);
}

POINT shifted(const Drawing& drawing, POINT point) {
    const auto by = drawing.shift();
    return {tvutil2::plus(point.x, by.x), tvutil2::plus(point.y, by.y)};
}

using AddOutline = void (*)(Path& path, double left, double top, double width, double height,
                            double radius);

// The outline runs in the middle of the pen, so that all of it is inside.
bool draw_outline(HDC context, RECT rect, double radius, AddOutline add) {
    const Drawing drawing(context);
    if (!drawing) return false;
    rect = drawing.to_device({std::min(rect.left, rect.right), std::min(rect.top, rect.bottom),
                              std::max(rect.left, rect.right), std::max(rect.top, rect.bottom)});
    const auto& pen = *drawing.state().pen.object;
    const double half = pen.is_hollow() ? 0 : pen.width() / 2.0;
    const auto left = held(rect.left) + half;
    const auto top = held(rect.top) + half;
    const auto width = held(rect.right) - half - left;
    const auto height = held(rect.bottom) - half - top;
    if (width <= 0 || height <= 0) return true;
    Path path;
    add(path, left, top, width, height, radius);
    return fill(drawing, path) && stroke(drawing, path);
}

Path path_of(const Drawing& drawing, std::span<const POINT> points) {
    Path path;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const auto at = shifted(drawing, points[i]);
        const auto x = held(at.x) + 0.5;
        const auto y = held(at.y) + 0.5;
        if (i == 0) {
            path.move_to(x, y);
        } else {
            path.line_to(x, y);
        }
    }
    return path;
}

}  // namespace

int FillRect(HDC context, const RECT* rect, HBRUSH brush) {
    const auto with = tvutil2::brush_of(brush);
    if (!with || rect == nullptr) return 0;
    const Drawing drawing(context);
    if (!drawing) return 0;
    if (!with->is_hollow()) drawing.fill(drawing.to_device(*rect), pixel_of(with->color()));
    return 1;
}

int FrameRect(HDC context, const RECT* rect, HBRUSH brush) {
    const auto with = tvutil2::brush_of(brush);
    if (!with || rect == nullptr) return 0;
    const Drawing drawing(context);
    if (!drawing) return 0;
    if (!with->is_hollow()) {
        fill_frame(drawing, drawing.to_device(*rect), 1, pixel_of(with->color()));
    }
    return 1;
}

BOOL InvertRect(HDC context, const RECT* rect) {
    const Drawing drawing(context);
    if (!drawing || rect == nullptr) return FALSE;
    for (const auto& part : drawing.clip().rects()) {
        const auto cut = tvutil2::common_part(part, drawing.to_device(*rect));
        for (auto y = cut.top; y < cut.bottom; ++y) {
            auto* const row = drawing.surface().row(y);
            for (auto x = cut.left; x < cut.right; ++x) row[x] ^= 0x00FFFFFF;
        }
    }
    return TRUE;
}

BOOL FillRgn(HDC context, HRGN region, HBRUSH brush) {
    const auto with = tvutil2::brush_of(brush);
    tvutil2::Region area;
    if (!with || !tvutil2::region_of(region, area)) return FALSE;
    const Drawing drawing(context);
    if (!drawing) return FALSE;
    area.offset(drawing.shift().x, drawing.shift().y);
    if (!with->is_hollow()) drawing.fill(area, pixel_of(with->color()));
    return TRUE;
}

COLORREF SetPixel(HDC context, int x, int y, COLORREF color) {
    const Drawing drawing(context);
    if (!drawing) return CLR_INVALID;
    const auto at = shifted(drawing, {x, y});
    if (!drawing.clip().contains(at)) return CLR_INVALID;
    drawing.surface().row(at.y)[at.x] = pixel_of(color);
    return color & 0xFFFFFF;
}

COLORREF GetPixel(HDC context, int x, int y) {
    const Drawing drawing(context);
    if (!drawing) return CLR_INVALID;
    const auto at = shifted(drawing, {x, y});
    if (!drawing.clip().contains(at)) return CLR_INVALID;
    return color_of(drawing.surface().row(at.y)[at.x]);
}

BOOL MoveToEx(HDC context, int x, int y, POINT* old) {
    const Drawing drawing(context);
    if (!drawing) return FALSE;
    const auto before = std::exchange(drawing.state().position, POINT{x, y});
    if (old != nullptr) *old = before;
    return TRUE;
}

BOOL LineTo(HDC context, int x, int y) {
    const Drawing drawing(context);
    if (!drawing) return FALSE;
    const auto from = std::exchange(drawing.state().position, POINT{x, y});
    return draw_line(drawing, shifted(drawing, from), shifted(drawing, {x, y})) ? TRUE : FALSE;
}

BOOL Polyline(HDC context, const POINT* points, int count) {
    const Drawing drawing(context);
    if (!drawing) return FALSE;
    if (points == nullptr || count < 2) return fail_with(ERROR_INVALID_PARAMETER);
    const std::span all(points, static_cast<std::size_t>(count));
    const bool is_straight = std::ranges::adjacent_find(all, [](POINT a, POINT b) {
                                 return a.x != b.x && a.y != b.y;
                             }) == all.end();
    if (!is_straight || !pen_is_plain(drawing.state())) {
        return stroke(drawing, path_of(drawing, all)) ? TRUE : FALSE;
    }
    for (std::size_t i = 1; i < all.size(); ++i) {
        draw_line(drawing, shifted(drawing, all[i - 1]), shifted(drawing, all[i]));
    }
    return TRUE;
}

BOOL Rectangle(HDC context, int left, int top, int right, int bottom) {
    {
        const Drawing drawing(context);
        if (!drawing) return FALSE;
        const auto& state = drawing.state();
        if (pen_is_plain(state) || state.pen.object->is_hollow()) {
            const auto rect = drawing.to_device({std::min(left, right), std::min(top, bottom),
                                                 std::max(left, right), std::max(top, bottom)});
            if (!state.brush.object->is_hollow()) {
                drawing.fill(rect, pixel_of(state.brush.object->color()));
            }
            if (!state.pen.object->is_hollow()) {
                const auto& pen = *state.pen.object;
                fill_frame(drawing, rect, pen.width(), pixel_of(pen.record().lopnColor));
            }
            return TRUE;
        }
    }
    const AddOutline add = [](Path& path, double x, double y, double width, double height, double) {
        path.add_rect(x, y, width, height);
    };
    return draw_outline(context, {left, top, right, bottom}, 0, add) ? TRUE : FALSE;
}

BOOL RoundRect(HDC context, int left, int top, int right, int bottom, int corner_width,
               int corner_height) {
    const AddOutline add = [](Path& path, double x, double y, double width, double height,
                              double radius) { path.add_round_rect(x, y, width, height, radius); };
    const auto radius = (std::abs(double{held(corner_width)}) + std::abs(held(corner_height))) / 4;
    return draw_outline(context, {left, top, right, bottom}, radius, add) ? TRUE : FALSE;
}

BOOL Ellipse(HDC context, int left, int top, int right, int bottom) {
    const AddOutline add = [](Path& path, double x, double y, double width, double height, double) {
        path.add_ellipse(x, y, width, height);
    };
    return draw_outline(context, {left, top, right, bottom}, 0, add) ? TRUE : FALSE;
}

BOOL Polygon(HDC context, const POINT* points, int count) {
    const Drawing drawing(context);
    if (!drawing) return FALSE;
    if (points == nullptr || count < 2) return fail_with(ERROR_INVALID_PARAMETER);
    auto path = path_of(drawing, {points, static_cast<std::size_t>(count)});
    path.close();
    return fill(drawing, path) && stroke(drawing, path) ? TRUE : FALSE;
}
