#include "tvutil2/platform/picture/system_icons.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/draw/engine.h"
#include "tvutil2/platform/draw/graphics_object.h"
#include "tvutil2/platform/draw/theme.h"

namespace tvutil2 {
namespace {

// Draws in a square from 0 to 32.
class Sign {
  public:
    Sign(Engine& engine, Surface& surface)
        : m_engine(engine),
          m_area(surface.area()),
          m_canvas{surface.row(0), surface.width(), surface.height(), {&m_area, 1}},
          m_scale(surface.width() / 32.0) {}

    void disc(COLORREF color) {
        Path path;
        path.add_ellipse(2 * m_scale, 2 * m_scale, 28 * m_scale, 28 * m_scale);
        m_engine.fill(m_canvas, path, pixel_of(color));
    }
    void triangle(COLORREF color) {
        Path path;
        path.move_to(16 * m_scale, 5 * m_scale)
            .line_to(29 * m_scale, 27 * m_scale)
            .line_to(3 * m_scale, 27 * m_scale)
            .close();
        m_engine.fill(m_canvas, path, pixel_of(color));
        m_engine.stroke(m_canvas, path, {.width = 4 * m_scale, .dashes = {}, .is_round = true},
                        pixel_of(color));
    }
    void line(double x1, double y1, double x2, double y2, double width, COLORREF color) {
        Path path;
        path.move_to(x1 * m_scale, y1 * m_scale).line_to(x2 * m_scale, y2 * m_scale);
        stroke(path, width, color);
    }
    void dot(double x, double y, double radius, COLORREF color) {
        Path path;
        path.add_ellipse((x - radius) * m_scale, (y - radius) * m_scale, 2 * radius * m_scale,
                         2 * radius * m_scale);
        m_engine.fill(m_canvas, path, pixel_of(color));
    }
    void hook(COLORREF color) {
        const auto at = [this](double value) { return value * m_scale; };
        Path path;
        path.move_to(at(11.6), at(12.4))
            .curve_to(at(11.8), at(6.6), at(20.6), at(6.8), at(20.4), at(12.2))
            .curve_to(at(20.2), at(15.2), at(16), at(15.4), at(16), at(18.8));
        stroke(path, 2.8, color);
    }
    void window(COLORREF frame, COLORREF bar, COLORREF inside) {
        Path outer;
        outer.add_round_rect(3 * m_scale, 5 * m_scale, 26 * m_scale, 22 * m_scale, 3 * m_scale);
        m_engine.fill(m_canvas, outer, pixel_of(bar));
        Path inner;
        inner.add_rect(4.5 * m_scale, 11 * m_scale, 23 * m_scale, 14 * m_scale);
        m_engine.fill(m_canvas, inner, pixel_of(inside));
        stroke(outer, 1.2, frame);
    }

  private:
    void stroke(const Path& path, double width, COLORREF color) {
        m_engine.stroke(m_canvas, path, {.width = width * m_scale, .dashes = {}, .is_round = true},
                        pixel_of(color));
    }

    Engine& m_engine;
    RECT m_area;
    Canvas m_canvas;
    double m_scale;
};

}  // namespace

std::shared_ptr<Surface> system_icon(unsigned id, int size) {
    constexpr unsigned kApplication = 32512;
    constexpr unsigned kLast = 32516;
    if (id < kApplication || id > kLast) {
        return fail_with(ERROR_RESOURCE_NAME_NOT_FOUND), nullptr;
    }
    auto* const engine = drawing_engine();
    if (engine == nullptr) return nullptr;
    auto surface = Surface::create(size, size, system_dpi(), 0);
    if (!surface) return nullptr;
    const auto& colors = theme().palette;
    const bool is_light = theme().mode == ThemeMode::light;
    const auto white = is_light ? RGB(255, 255, 255) : RGB(16, 16, 16);
    const auto ink = RGB(32, 28, 0);
    Sign sign(*engine, *surface);
    switch (id - kApplication) {
        case 1:
            sign.disc(colors.error);
            sign.line(11.5, 11.5, 20.5, 20.5, 2.8, white);
            sign.line(20.5, 11.5, 11.5, 20.5, 2.8, white);
            break;
        case 2:
            sign.disc(colors.information);
            sign.hook(white);
            sign.dot(16, 23.6, 1.9, white);
            break;
        case 3:
            sign.triangle(colors.warning);
            sign.line(16, 12, 16, 18.5, 2.8, ink);
            sign.dot(16, 23.4, 1.8, ink);
            break;
        case 4:
            sign.disc(colors.information);
            sign.dot(16, 9.6, 1.9, white);
            sign.line(16, 15, 16, 23, 2.8, white);
            break;
        default:
            sign.window(colors.border, colors.accent, GetSysColor(COLOR_WINDOW));
    }
    return surface;
}

}  // namespace tvutil2
