// A device context: where is drawn, and with what.
#pragma once

#include "tvutil2/platform/base/handle_table.h"
#include "tvutil2/platform/draw/device_context.h"
#include "tvutil2/platform/draw/graphics_object.h"
#include "tvutil2/platform/draw/rect.h"

#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace tvutil2 {

/// An object and the handle by which it was selected.
template <class T, class Handle>
struct Selected {
    std::shared_ptr<T> object;
    Handle handle = nullptr;
};

/// What SaveDC keeps and RestoreDC brings back.
struct ContextState {
    Selected<BrushObject, HBRUSH> brush;
    Selected<PenObject, HPEN> pen;
    Selected<FontObject, HFONT> font;
    Selected<BitmapObject, HBITMAP> bitmap;  // memory contexts only
    COLORREF text_color = RGB(0, 0, 0);
    COLORREF background = RGB(255, 255, 255);
    int background_mode = OPAQUE;
    UINT text_align = 0;
    int stretch_mode = BLACKONWHITE;
    POINT position{};
    POINT viewport{};
    std::optional<Region> clip;  // in pixels of the surface
};

class ContextObject : public HandleObject {
  public:
    static constexpr auto kHandleKind = HandleKind::context;

    /// A memory context, with one pixel.
    ContextObject(UINT dpi, HWND window);
    /// A lent one.
    ContextObject(std::shared_ptr<Surface> surface, POINT origin, Region clip, HWND window);
    ~ContextObject() override;

    [[nodiscard]] bool is_memory() const { return m_lent == nullptr; }
    [[nodiscard]] HWND window() const { return m_window; }

    /// Held by whoever looks at the rest.
    mutable std::mutex lock;
    ContextState state;
    std::vector<ContextState> saved;

    [[nodiscard]] UINT dpi() const { return is_memory() ? m_dpi : m_lent->dpi(); }
    [[nodiscard]] const std::shared_ptr<Surface>& surface() const {
        return is_memory() ? state.bitmap.object->surface() : m_lent;
    }
    /// From the caller's coordinates to pixels of the surface, and back.
    [[nodiscard]] POINT shift() const {
        return {plus(m_origin.x, state.viewport.x), plus(m_origin.y, state.viewport.y)};
    }
    [[nodiscard]] RECT to_device(const RECT& rect) const { return moved(rect, shift()); }
    [[nodiscard]] RECT from_device(const RECT& rect) const;

    /// Where drawing is let through, in pixels of the surface: always inside it.
    [[nodiscard]] const Region& clip();
    /// To be called when `state.clip` or the bitmap has changed.
    void clip_changed() { m_is_clip_known = false; }
    /// Without `state.clip`.
    [[nodiscard]] Region whole_clip() const;

  private:
    std::shared_ptr<Surface> m_lent;
    POINT m_origin{};
    Region m_base_clip;
    UINT m_dpi = 96;
    HWND m_window = nullptr;
    Region m_clip;
    bool m_is_clip_known = false;
};

/// A context for the length of one drawing function: it and its pixels belong to the caller.
class Drawing {
  public:
    /// Without effect, and the last error says why, when that is no context.
    explicit Drawing(HDC context);
    [[nodiscard]] explicit operator bool() const { return m_context != nullptr; }

    [[nodiscard]] ContextObject& context() const { return *m_context; }
    [[nodiscard]] ContextState& state() const { return m_context->state; }
    [[nodiscard]] Surface& surface() const { return *m_surface; }
    [[nodiscard]] const Region& clip() const { return m_context->clip(); }
    [[nodiscard]] POINT shift() const { return m_context->shift(); }
    [[nodiscard]] RECT to_device(const RECT& rect) const { return m_context->to_device(rect); }
    [[nodiscard]] Canvas canvas() const;

    /// Fills pixels of the surface; `rect` is cut to the clip.
    void fill(const RECT& rect, std::uint32_t pixel) const;
    void fill(const Region& region, std::uint32_t pixel) const;

  private:
    std::shared_ptr<ContextObject> m_context;
    std::unique_lock<std::mutex> m_context_lock;
    std::shared_ptr<Surface> m_surface;
    std::unique_lock<std::mutex> m_surface_lock;
};

}  // namespace tvutil2
