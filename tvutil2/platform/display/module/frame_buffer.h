// What a window shows: a copy of its surface, taken when all of it is painted, so that nothing half
// painted is ever seen.
#pragma once

#include "tvutil2/platform/draw/surface.h"

#include <cairo.h>

#include <cstdint>
#include <mutex>
#include <vector>

namespace tvutil2 {

/// For all threads.
class FrameBuffer {
  public:
    void take(const Surface& surface, const Region& damage);
    /// Draws the part of it that begins at `corner`. A window that is larger than what has been
    /// painted of it has the last pixels at its edges.
    void draw(cairo_t* cairo, POINT corner, int scale);

  private:
    std::mutex m_lock;
    int m_width = 0, m_height = 0;
    std::vector<std::uint32_t> m_pixels;
};

}  // namespace tvutil2
