#include "tvutil2/platform/draw/look.h"

#include "tvutil2/platform/draw/context_object.h"
#include "tvutil2/platform/draw/round_box.h"

#include <algorithm>
#include <cmath>

namespace tvutil2 {
namespace {

// In pixels at 96 dots an inch.
constexpr double kCorner = 4;
constexpr double kBoxCorner = 3;
constexpr double kGlyphLine = 1.25;
constexpr int kCheckSize = 16;

// A rectangle as outlines have it.
struct Box {
    double x, y, width, height;
    [[nodiscard]] Box inset(double by) const {
        return {x + by, y + by, std::max(0.0, width - 2 * by), std::max(0.0, height - 2 * by)};
    }
};

class Painter {
  public:
    explicit Painter(HDC context) : m_drawing(context), m_engine(drawing_engine()) {}
    explicit operator bool() const { return static_cast<bool>(m_drawing) && m_engine != nullptr; }

    [[nodiscard]] double scale() const { return m_drawing.surface().dpi() / 96.0; }
    /// The width of a thin line: whole pixels, so that it is crisp.
    [[nodiscard]] double line() const { return std::max(1.0, std::floor(scale() + 0.25)); }
    /// That of a frame which marks something: it covers a thinner one.
    [[nodiscard]] double thick_line() const {
        return std::max(2 * line(), std::round(1.5 * scale()));
    }
    [[nodiscard]] Box box(const RECT& rect) const {
        constexpr LONG kFar = 1 << 20;
        const auto at = m_drawing.to_device(rect);
        const auto left = std::clamp(at.left, -kFar, kFar);
        const auto top = std::clamp(at.top, -kFar, kFar);
        return {static_cast<double>(left), static_cast<double>(top),
                static_cast<double>(std::clamp(at.right, left, kFar) - left),
                static_cast<double>(std::clamp(at.bottom, top, kFar) - top)};
    }
    /// A square in the middle, on whole pixels.
    [[nodiscard]] Box square(const RECT& rect, double side) const {
        const auto all = box(rect);
        const auto size = std::floor(std::min({side, all.width, all.height}));
        return {all.x + std::floor((all.width - size) / 2),
                all.y + std::floor((all.height - size) / 2), size, size};
    }

    void fill(const Path& path, COLORREF color) const {
        m_engine->fill(m_drawing.canvas(), path, pixel_of(color));
    }
    void stroke(const Path& path, double width, COLORREF color) const {
        m_engine->stroke(m_drawing.canvas(), path, {.width = width, .dashes = {}, .is_round = true},
                         pixel_of(color));
    }
    void fill_round(const Box& box, double radius, COLORREF color) const {
        if (draw_by_corners(box, radius, 0, color)) return;
        Path path;
        path.add_round_rect(box.x, box.y, box.width, box.height, radius);
        fill(path, color);
    }
    /// A frame whose outer edge is the box.
    void frame_round(const Box& box, double radius, double width, COLORREF color) const {
        if (draw_by_corners(box, radius, width, color)) return;
        const auto middle = box.inset(width / 2);
        Path path;
        path.add_round_rect(middle.x, middle.y, middle.width, middle.height, radius - width / 2);
        stroke(path, width, color);
    }

  private:
    bool draw_by_corners(const Box& box, double radius, double width, COLORREF color) const {
        const auto whole = [](double value) { return static_cast<int>(std::floor(value)); };
        const RECT at{whole(box.x), whole(box.y), whole(box.x + box.width),
                      whole(box.y + box.height)};
        const bool is_on_pixels = at.left == box.x && at.top == box.y &&
                                  at.right == box.x + box.width &&
                                  at.bottom == box.y + box.height && whole(width) == width;
        if (!is_on_pixels || radius <= 0) return false;
        const auto* const corner = round_corner(*m_engine, radius, whole(width));
        return corner != nullptr && draw_round_box(m_drawing, at, *corner, pixel_of(color));
    }

    Drawing m_drawing;
    Engine* m_engine;
};

COLORREF face_of(const ControlLook& look, const Palette& colors) {
    if (look.is_disabled) return colors.disabled_face;
    if (look.is_pressed) return colors.pressed_face;
    return look.is_hot ? colors.hot_face : colors.face;
}

COLORREF accent_of(const ControlLook& look, const Palette& colors) {
    if (look.is_disabled) return GetSysColor(COLOR_GRAYTEXT);
    if (look.is_pressed) return colors.pressed_accent;
    return look.is_hot ? colors.hot_accent : colors.accent;
}

COLORREF on_accent(const ControlLook& look, const Palette& colors) {
    return look.is_disabled ? colors.disabled_face : colors.accent_text;
}

COLORREF border_of(const ControlLook& look, const Palette& colors) {
    return look.is_disabled ? colors.disabled_border : colors.border;
}

// Glyphs are drawn in a square from 0 to 1.
Path glyph_path(Glyph glyph, const Box& at) {
    Path path;
    const auto x = [&](double part) { return at.x + part * at.width; };
    const auto y = [&](double part) { return at.y + part * at.height; };
    const auto polyline = [&](std::initializer_list<std::pair<double, double>> points) {
        bool is_first = true;
        for (const auto& [px, py] : points) {
            if (is_first) {
                path.move_to(x(px), y(py));
            } else {
                path.line_to(x(px), y(py));
            }
            is_first = false;
        }
    };
    switch (glyph) {
        case Glyph::up:
            polyline({{0.15, 0.67}, {0.5, 0.32}, {0.85, 0.67}});
            break;
        case Glyph::down:
            polyline({{0.15, 0.33}, {0.5, 0.68}, {0.85, 0.33}});
            break;
        case Glyph::left:
            polyline({{0.67, 0.15}, {0.32, 0.5}, {0.67, 0.85}});
            break;
        case Glyph::right:
            polyline({{0.33, 0.15}, {0.68, 0.5}, {0.33, 0.85}});
            break;
        case Glyph::check:
            polyline({{0.1, 0.52}, {0.38, 0.8}, {0.9, 0.22}});
            break;
        case Glyph::close:
            polyline({{0, 0}, {1, 1}});
            polyline({{1, 0}, {0, 1}});
            break;
        case Glyph::minimize:
            polyline({{0, 0.5}, {1, 0.5}});
            break;
        case Glyph::maximize:
            path.add_round_rect(x(0), y(0), at.width, at.height, at.width * 0.12);
            break;
        case Glyph::restore:
            path.add_round_rect(x(0), y(0.22), at.width * 0.78, at.height * 0.78, at.width * 0.1);
            polyline({{0.24, 0}, {0.9, 0}, {1, 0.1}, {1, 0.76}});
            break;
        case Glyph::help:
            path.move_to(x(0.25), y(0.28))
                .curve_to(x(0.25), y(-0.1), x(0.78), y(-0.1), x(0.78), y(0.27))
                .curve_to(x(0.78), y(0.5), x(0.5), y(0.48), x(0.5), y(0.72));
            polyline({{0.5, 0.98}, {0.5, 0.99}});
            break;
        case Glyph::command:
            polyline({{0.05, 0.5}, {0.92, 0.5}});
            polyline({{0.56, 0.14}, {0.92, 0.5}, {0.56, 0.86}});
            break;
        case Glyph::bullet:
            path.add_ellipse(x(0.2), y(0.2), at.width * 0.6, at.height * 0.6);
            break;
    }
    return path;
}

}  // namespace

bool draw_push_button(HDC context, const RECT& rect, const ControlLook& look) {
    const Painter painter(context);
    if (!painter) return false;
    const auto& colors = theme().palette;
    const auto box = painter.box(rect);
    const auto corner = kCorner * painter.scale();
    const bool is_accented =
        look.is_default && !look.is_disabled && theme().mode != ThemeMode::high_contrast;
    painter.fill_round(box, corner, is_accented ? accent_of(look, colors) : face_of(look, colors));
    const bool is_marked = look.is_default && !look.is_disabled;
    painter.frame_round(box, corner,
                        is_marked && !is_accented ? painter.thick_line() : painter.line(),
                        is_marked ? accent_of(look, colors) : border_of(look, colors));
    return true;
}

COLORREF button_text_color(const ControlLook& look) {
    if (look.is_disabled) return GetSysColor(COLOR_GRAYTEXT);
    const bool is_accented = look.is_default && theme().mode != ThemeMode::high_contrast;
    return is_accented ? theme().palette.accent_text : GetSysColor(COLOR_BTNTEXT);
}

int check_size(UINT dpi) {
    return scaled(kCheckSize, dpi);
}

bool draw_check_box(HDC context, const RECT& rect, const ControlLook& look) {
    const Painter painter(context);
    if (!painter) return false;
    const auto& colors = theme().palette;
    const auto scale = painter.scale();
    const auto box = painter.square(rect, std::round(kCheckSize * scale));
    if (!look.is_checked && !look.is_mixed) {
        painter.fill_round(box, kBoxCorner * scale, face_of(look, colors));
        painter.frame_round(box, kBoxCorner * scale, painter.line(), border_of(look, colors));
        return true;
    }
    painter.fill_round(box, kBoxCorner * scale, accent_of(look, colors));
    const auto ink = on_accent(look, colors);
    const auto inner = box.inset(box.width * 0.22);
    if (look.is_mixed) {
        Path dash;
        dash.move_to(inner.x + inner.width * 0.1, inner.y + inner.height / 2)
            .line_to(inner.x + inner.width * 0.9, inner.y + inner.height / 2);
        painter.stroke(dash, 2 * scale, ink);
    } else {
        painter.stroke(glyph_path(Glyph::check, inner), 1.6 * scale, ink);
    }
    return true;
}

bool draw_radio_button(HDC context, const RECT& rect, const ControlLook& look) {
    const Painter painter(context);
    if (!painter) return false;
    const auto& colors = theme().palette;
    const auto box = painter.square(rect, std::round(kCheckSize * painter.scale()));
    if (!look.is_checked) {
        painter.fill_round(box, box.width / 2, face_of(look, colors));
        painter.frame_round(box, box.width / 2, painter.line(), border_of(look, colors));
        return true;
    }
    painter.fill_round(box, box.width / 2, accent_of(look, colors));
    const auto dot = box.inset(box.width * (look.is_hot ? 0.25 : look.is_pressed ? 0.36 : 0.31));
    painter.fill_round(dot, dot.width / 2, on_accent(look, colors));
    return true;
}

bool draw_field(HDC context, const RECT& rect, const ControlLook& look, COLORREF inside) {
    const Painter painter(context);
    if (!painter) return false;
    const auto& colors = theme().palette;
    const auto box = painter.box(rect);
    const auto corner = kCorner * painter.scale();
    const auto line = painter.line();
    painter.fill_round(box, corner, inside);
    const bool has_focus = look.is_default && !look.is_disabled;
    if (has_focus) {
        // The thick lower edge: what of an accented field a field that is shorter leaves.
        painter.fill_round(box, corner, colors.accent);
        const Box above{box.x, box.y, box.width, std::max(0.0, box.height - 2 * line)};
        painter.fill_round(above.inset(0), corner, border_of(look, colors));
        Box inner = box.inset(line);
        inner.height = std::max(0.0, inner.height - line);
        painter.fill_round(inner, std::max(0.0, corner - line), inside);
        return true;
    }
    painter.frame_round(box, corner, line, border_of(look, colors));
    return true;
}

bool draw_group_frame(HDC context, const RECT& rect) {
    const Painter painter(context);
    if (!painter) return false;
    painter.frame_round(painter.box(rect), kCorner * painter.scale(), painter.line(),
                        theme().palette.divider);
    return true;
}

bool draw_round_area(HDC context, const RECT& rect, int radius, COLORREF color) {
    const Painter painter(context);
    if (!painter) return false;
    painter.fill_round(painter.box(rect), radius * painter.scale(), color);
    return true;
}

bool draw_focus_ring(HDC context, const RECT& rect) {
    const Painter painter(context);
    if (!painter) return false;
    painter.frame_round(painter.box(rect), kCorner * painter.scale(), painter.thick_line(),
                        theme().palette.focus);
    return true;
}

bool draw_glyph(HDC context, const RECT& rect, Glyph glyph, int size, COLORREF color) {
    const Painter painter(context);
    if (!painter) return false;
    const auto box = painter.square(rect, size);
    const auto path = glyph_path(glyph, box);
    if (glyph == Glyph::bullet) {
        painter.fill(path, color);
    } else {
        painter.stroke(path, std::max(1.0, kGlyphLine * painter.scale()), color);
    }
    return true;
}

}  // namespace tvutil2
