// A canvas as cairo draws on it.
#pragma once

#include "tvutil2/platform/draw/engine.h"

#include <cairo.h>

#include <memory>

namespace tvutil2 {

struct CairoSurfaceEnd {
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};
using CairoSurface = std::unique_ptr<cairo_surface_t, CairoSurfaceEnd>;

/// Lives for one drawing: the pixels are the canvas's own. What can't be made for lack of memory is
/// cairo's object for that, on which drawing does nothing.
class CairoCanvas {
  public:
    explicit CairoCanvas(const Canvas& canvas);
    ~CairoCanvas();
    CairoCanvas(const CairoCanvas&) = delete;
    CairoCanvas& operator=(const CairoCanvas&) = delete;

    [[nodiscard]] cairo_t* get() const { return m_cairo; }
    /// 0xAARRGGBB, not multiplied.
    void set_color(std::uint32_t color) const;

  private:
    CairoSurface m_surface;
    cairo_t* m_cairo;
};

/// Pixels as cairo sees them. They must stay, and aren't written to.
[[nodiscard]] CairoSurface cairo_image(const std::uint32_t* pixels, int width, int height);

}  // namespace tvutil2
