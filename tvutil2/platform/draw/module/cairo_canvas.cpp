#include "tvutil2/platform/draw/module/cairo_canvas.h"

namespace tvutil2 {

CairoSurface cairo_image(const std::uint32_t* pixels, int width, int height) {
    auto* const data = reinterpret_cast<unsigned char*>(const_cast<std::uint32_t*>(pixels));
    return CairoSurface(
        cairo_image_surface_create_for_data(data, CAIRO_FORMAT_ARGB32, width, height, width * 4));
}

CairoCanvas::CairoCanvas(const Canvas& canvas)
    : m_surface(cairo_image(canvas.pixels, canvas.width, canvas.height)),
      m_cairo(cairo_create(m_surface.get())) {
    const bool is_whole = canvas.clip.size() == 1 && canvas.clip[0].left == 0 &&
                          canvas.clip[0].top == 0 && canvas.clip[0].right == canvas.width &&
                          canvas.clip[0].bottom == canvas.height;
    if (is_whole) return;
    for (const auto& rect : canvas.clip) {
        cairo_rectangle(m_cairo, rect.left, rect.top, rect.right - rect.left,
                        rect.bottom - rect.top);
    }
    cairo_clip(m_cairo);
}

CairoCanvas::~CairoCanvas() {
    cairo_destroy(m_cairo);
}

void CairoCanvas::set_color(std::uint32_t color) const {
    const auto part = [color](unsigned shift) { return (color >> shift & 0xFFU) / 255.0; };
    cairo_set_source_rgba(m_cairo, part(16), part(8), part(0), part(24));
}

}  // namespace tvutil2
