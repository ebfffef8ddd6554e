#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/draw/engine.h"
#include "tvutil2/platform/draw/module/cairo_canvas.h"
#include "tvutil2/platform/draw/module/pango_text.h"

#include <cmath>
#include <cstdlib>
#include <new>

namespace tvutil2 {
namespace {

void add_path(cairo_t* cairo, const Path& path) {
    for (const auto& element : path.elements()) {
        switch (element.step) {
            case Path::Step::move:
                cairo_move_to(cairo, element.x, element.y);
                break;
            case Path::Step::line:
                cairo_line_to(cairo, element.x, element.y);
                break;
            case Path::Step::curve:
                cairo_curve_to(cairo, element.x1, element.y1, element.x2, element.y2, element.x,
                               element.y);
                break;
            case Path::Step::close:
                cairo_close_path(cairo);
                break;
        }
    }
}

cairo_status_t append_bytes(void* to, const unsigned char* data, unsigned size) {
    try {
        static_cast<std::string*>(to)->append(reinterpret_cast<const char*>(data), size);
        return CAIRO_STATUS_SUCCESS;
    } catch (const std::bad_alloc&) {
        return CAIRO_STATUS_NO_MEMORY;
    }
}

class CairoEngine : public Engine {
  public:
    void fill(const Canvas& canvas, const Path& path, std::uint32_t color) override {
        const CairoCanvas on(canvas);
        add_path(on.get(), path);
        on.set_color(color);
        cairo_fill(on.get());
    }

    void stroke(const Canvas& canvas, const Path& path, const Stroke& stroke,
                std::uint32_t color) override {
        const CairoCanvas on(canvas);
        add_path(on.get(), path);
        on.set_color(color);
        cairo_set_line_width(on.get(), stroke.width);
        if (stroke.is_round) {
            cairo_set_line_cap(on.get(), CAIRO_LINE_CAP_ROUND);
            cairo_set_line_join(on.get(), CAIRO_LINE_JOIN_ROUND);
        }
        cairo_set_dash(on.get(), stroke.dashes.data(), static_cast<int>(stroke.dashes.size()), 0);
        cairo_stroke(on.get());
    }

    void draw_image(const Canvas& canvas, const RECT& to, const Image& image, const RECT& from,
                    double opacity) override {
        const double to_width = static_cast<double>(to.right) - to.left;
        const double to_height = static_cast<double>(to.bottom) - to.top;
        const double width = static_cast<double>(from.right) - from.left;
        const double height = static_cast<double>(from.bottom) - from.top;
        if (to_width == 0 || to_height == 0 || width <= 0 || height <= 0) return;
        const CairoCanvas on(canvas);
        const auto whole = cairo_image(image.pixels, image.width, image.height);
        const CairoSurface part(
            cairo_surface_create_for_rectangle(whole.get(), from.left, from.top, width, height));
        cairo_translate(on.get(), to.left, to.top);
        cairo_scale(on.get(), to_width / width, to_height / height);
        cairo_rectangle(on.get(), 0, 0, width, height);
        cairo_clip(on.get());
        cairo_set_source_surface(on.get(), part.get(), 0, 0);
        auto* const pattern = cairo_get_source(on.get());
        cairo_pattern_set_extend(pattern, CAIRO_EXTEND_PAD);  // edges don't fade
        const bool is_scaled = std::abs(to_width) != width || std::abs(to_height) != height;
        cairo_pattern_set_filter(pattern, is_scaled ? CAIRO_FILTER_GOOD : CAIRO_FILTER_NEAREST);
        cairo_paint_with_alpha(on.get(), opacity);
    }

    std::shared_ptr<const Font> open_font(const FontRequest& request) override {
        return open_pango_font(request);
    }

    std::shared_ptr<const TextLayout> lay_out(const std::shared_ptr<const Font>& font,
                                              std::u16string_view text,
                                              const TextOptions& options) override {
        return lay_out_by_pango(font, text, options);
    }

    DWORD encode_png(const Image& image, std::string& bytes) override {
        const auto surface = cairo_image(image.pixels, image.width, image.height);
        const auto status = cairo_surface_write_to_png_stream(surface.get(), &append_bytes, &bytes);
        return status == CAIRO_STATUS_SUCCESS ? 0 : ERROR_NOT_ENOUGH_MEMORY;
    }
};

}  // namespace

extern "C" TVUTIL_API Engine* tvutil2_open_engine();

Engine* tvutil2_open_engine() {
    static auto* const engine = new CairoEngine;
    return engine;
}

}  // namespace tvutil2
