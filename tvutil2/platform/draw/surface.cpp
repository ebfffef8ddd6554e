#include "tvutil2/platform/draw/surface.h"

#include "tvutil2/platform/draw/context_object.h"
#include "tvutil2/platform/draw/engine.h"
#include "tvutil2/platform/files/replaced_file.h"

#include <new>
#include <utility>

namespace tvutil2 {

Surface::Surface(int width, int height, UINT dpi, std::uint32_t fill)
    : m_width(width),
      m_height(height),
      m_dpi(dpi),
      m_pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), fill) {}

std::shared_ptr<Surface> Surface::create(int width, int height, UINT dpi, std::uint32_t fill) {
    if (width < 1 || height < 1) return fail_with(ERROR_INVALID_PARAMETER), nullptr;
    if (width > kLongest || height > kLongest || std::int64_t{width} * height > kMost) {
        return fail_with(ERROR_NOT_ENOUGH_MEMORY), nullptr;
    }
    try {
        return std::shared_ptr<Surface>(new Surface(width, height, dpi, fill));
    } catch (const std::bad_alloc&) {
        return fail_with(ERROR_NOT_ENOUGH_MEMORY), nullptr;
    }
}

bool Surface::write_png(const std::string& path) const {
    auto* const engine = drawing_engine();
    if (engine == nullptr) return false;
    std::string bytes;
    DWORD error = 0;
    {
        const std::lock_guard guard(m_lock);
        error = engine->encode_png({m_pixels.data(), m_width, m_height}, bytes);
    }
    if (error != 0) return fail_with(error);
    return replace_content(path, true, [&](const std::string&) { return std::move(bytes); });
}

HDC lend_dc(std::shared_ptr<Surface> surface, POINT origin, const Region& clip, HWND window) {
    if (!surface) return fail_with(ERROR_INVALID_PARAMETER), nullptr;
    return make_handle<HDC>(
        std::make_shared<ContextObject>(std::move(surface), origin, clip, window));
}

bool return_dc(HDC context) {
    const auto lent = object_of<ContextObject>(context);
    if (!lent || lent->is_memory()) return fail_with(ERROR_INVALID_HANDLE);
    return close_handle_of<ContextObject>(context);
}

}  // namespace tvutil2
