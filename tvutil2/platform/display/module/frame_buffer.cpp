#include "tvutil2/platform/display/module/frame_buffer.h"

#include <algorithm>

namespace tvutil2 {

void FrameBuffer::take(const Surface& surface, const Region& damage) {
    const std::lock_guard guard(m_lock);
    const std::lock_guard surface_guard(surface.lock());
    const auto whole = surface.area();
    auto rects = damage.rects();
    if (m_width != surface.width() || m_height != surface.height()) {
        m_width = surface.width();
        m_height = surface.height();
        m_pixels.resize(static_cast<std::size_t>(m_width) * static_cast<std::size_t>(m_height));
        rects = {&whole, 1};
    }
    for (auto rect : rects) {
        rect = {std::max(rect.left, LONG{0}), std::max(rect.top, LONG{0}),
                std::min<LONG>(rect.right, m_width), std::min<LONG>(rect.bottom, m_height)};
        const auto left = static_cast<std::size_t>(rect.left);
        for (LONG y = rect.top; y < rect.bottom && rect.left < rect.right; ++y) {
            const auto at = static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width) + left;
            std::copy_n(surface.row(static_cast<int>(y)) + left, rect.right - rect.left,
                        m_pixels.data() + at);
        }
    }
}

void FrameBuffer::draw(cairo_t* cairo, POINT corner, int scale) {
    const std::lock_guard guard(m_lock);
    if (m_pixels.empty()) return;
    auto* const image =
        cairo_image_surface_create_for_data(reinterpret_cast<unsigned char*>(m_pixels.data()),
                                            CAIRO_FORMAT_RGB24, m_width, m_height, m_width * 4);
    cairo_surface_set_device_scale(image, scale, scale);
    cairo_set_source_surface(cairo, image, -static_cast<double>(corner.x) / scale,
                             -static_cast<double>(corner.y) / scale);
    cairo_pattern_set_extend(cairo_get_source(cairo), CAIRO_EXTEND_PAD);
    cairo_pattern_set_filter(cairo_get_source(cairo), CAIRO_FILTER_NEAREST);
    cairo_paint(cairo);
    // What the drawing context keeps of it may not outlive the lock.
    cairo_set_source_rgb(cairo, 0, 0, 0);
    cairo_surface_finish(image);
    cairo_surface_destroy(image);
}

}  // namespace tvutil2
