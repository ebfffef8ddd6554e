// What is drawn on: a rectangle of pixels in memory, and device contexts lent on it.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"
#include "tvutil2/platform/draw/region.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace tvutil2 {

/// Pixels of 32 bits, 0xAARRGGBB with the colours multiplied by alpha, the rows from top to bottom
/// without gaps. Any thread may draw on it through a device context; who touches the pixels by
/// themselves holds lock() meanwhile.
class TVUTIL_API Surface {
  public:
    static constexpr std::uint32_t kBlack = 0xFF000000;
    /// Pixels in either direction, and in all.
    static constexpr int kLongest = 32767;
    static constexpr std::int64_t kMost = std::int64_t{1} << 28;

    /// All pixels are `fill`. `dpi` is the scale that text and lengths on it are meant for. Null
    /// with ERROR_INVALID_PARAMETER for a size that isn't above 0, ERROR_NOT_ENOUGH_MEMORY for one
    /// that is too large.
    static std::shared_ptr<Surface> create(int width, int height, UINT dpi = 96,
                                           std::uint32_t fill = kBlack);

    [[nodiscard]] int width() const { return m_width; }
    [[nodiscard]] int height() const { return m_height; }
    [[nodiscard]] RECT area() const { return {0, 0, m_width, m_height}; }
    [[nodiscard]] UINT dpi() const { return m_dpi; }
    [[nodiscard]] std::uint32_t* row(int y) {
        return m_pixels.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width);
    }
    [[nodiscard]] const std::uint32_t* row(int y) const {
        return m_pixels.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width);
    }
    [[nodiscard]] std::mutex& lock() const { return m_lock; }

    /// Writes a PNG in one step; `path` is the host's, and absolute. False with the last error, and
    /// then what was there is still there.
    [[nodiscard]] bool write_png(const std::string& path) const;

  private:
    Surface(int width, int height, UINT dpi, std::uint32_t fill);

    int m_width;
    int m_height;
    UINT m_dpi;
    std::vector<std::uint32_t> m_pixels;
    mutable std::mutex m_lock;
};

/// A device context on a surface, with the state of a new one. `origin` is the pixel that the
/// context's 0, 0 stands for; drawing is let through inside `clip`, which is in pixels of the
/// surface as well. `window` is what WindowFromDC answers. Null with ERROR_TOO_MANY_OPEN_FILES when
/// the handle table is full. One thread at a time uses a context.
[[nodiscard]] TVUTIL_API HDC lend_dc(std::shared_ptr<Surface> surface, POINT origin,
                                     const Region& clip, HWND window = nullptr);

/// Ends it. False with ERROR_INVALID_HANDLE for anything but a lent one.
TVUTIL_API bool return_dc(HDC context);

}  // namespace tvutil2
