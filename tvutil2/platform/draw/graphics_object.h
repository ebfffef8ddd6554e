// What stands behind handles of brushes, pens, fonts, bitmaps and regions.
//
// A context shares what is selected into it, so that an object whose handle is closed meanwhile
// lives until it is selected out.
#pragma once

#include "tvutil2/platform/base/handle_table.h"
#include "tvutil2/platform/draw/draw_types.h"
#include "tvutil2/platform/draw/engine.h"
#include "tvutil2/platform/draw/region.h"
#include "tvutil2/platform/draw/surface.h"

#include <atomic>
#include <memory>
#include <mutex>

namespace tvutil2 {

class GraphicsObject : public HandleObject {
  public:
    static constexpr auto kHandleKind = HandleKind::graphics;
    enum class Type : std::uint8_t { brush, pen, font, bitmap, region };

    GraphicsObject(Type type, bool is_stock)
        : HandleObject(kHandleKind), m_type(type), m_is_stock(is_stock) {}
    [[nodiscard]] Type type() const { return m_type; }
    /// The system's own: deleting it does nothing.
    [[nodiscard]] bool is_stock() const { return m_is_stock; }

  private:
    Type m_type;
    bool m_is_stock;
};

class BrushObject : public GraphicsObject {
  public:
    static constexpr auto kType = Type::brush;
    explicit BrushObject(const LOGBRUSH& brush, int system_color = -1, bool is_stock = false)
        : GraphicsObject(kType, is_stock), m_brush(brush), m_system_color(system_color) {}
    [[nodiscard]] bool is_hollow() const { return m_brush.lbStyle == BS_NULL; }
    [[nodiscard]] COLORREF color() const;
    [[nodiscard]] LOGBRUSH record() const { return {m_brush.lbStyle, color(), 0}; }

  private:
    LOGBRUSH m_brush;
    int m_system_color;
};

class PenObject : public GraphicsObject {
  public:
    static constexpr auto kType = Type::pen;
    explicit PenObject(const LOGPEN& pen, bool is_stock = false)
        : GraphicsObject(kType, is_stock), m_pen(pen) {}
    [[nodiscard]] bool is_hollow() const { return m_pen.lopnStyle == UINT{PS_NULL}; }
    /// Pixels; 0 counts as 1.
    [[nodiscard]] int width() const { return m_pen.lopnWidth.x < 1 ? 1 : m_pen.lopnWidth.x; }
    [[nodiscard]] const LOGPEN& record() const { return m_pen; }

  private:
    LOGPEN m_pen;
};

class FontObject : public GraphicsObject {
  public:
    static constexpr auto kType = Type::font;
    explicit FontObject(const LOGFONTW& record, bool is_stock = false)
        : GraphicsObject(kType, is_stock), m_record(record) {}
    [[nodiscard]] const LOGFONTW& record() const { return m_record; }
    /// Opened when it is first asked for. Null with the last error where there is no drawing
    /// module.
    [[nodiscard]] std::shared_ptr<const Font> font();

  private:
    LOGFONTW m_record;
    std::mutex m_lock;
    std::shared_ptr<const Font> m_font;
};

class BitmapObject : public GraphicsObject {
  public:
    static constexpr auto kType = Type::bitmap;
    explicit BitmapObject(std::shared_ptr<Surface> pixels, bool is_stock = false)
        : GraphicsObject(kType, is_stock), m_surface(std::move(pixels)) {}
    [[nodiscard]] const std::shared_ptr<Surface>& surface() const { return m_surface; }
    /// A bitmap is in one context at a time. False when it is in one already.
    [[nodiscard]] bool enter_context() { return is_stock() || !m_is_selected.exchange(true); }
    void leave_context() { m_is_selected = false; }
    [[nodiscard]] bool is_selected() const { return m_is_selected; }

  private:
    std::shared_ptr<Surface> m_surface;
    std::atomic<bool> m_is_selected = false;
};

class RegionObject : public GraphicsObject {
  public:
    static constexpr auto kType = Type::region;
    explicit RegionObject(Region region)
        : GraphicsObject(kType, false), m_region(std::move(region)) {}
    [[nodiscard]] Region get() const {
        const std::lock_guard guard(m_lock);
        return m_region;
    }
    void set(Region region) {
        const std::lock_guard guard(m_lock);
        m_region = std::move(region);
    }

  private:
    mutable std::mutex m_lock;
    Region m_region;
};

/// The object behind a handle if it is a T; otherwise null with ERROR_INVALID_HANDLE.
template <class T>
[[nodiscard]] std::shared_ptr<T> graphics_object(HGDIOBJ handle) {
    auto object = object_of<GraphicsObject>(handle);
    if (object && object->type() == T::kType) return std::static_pointer_cast<T>(object);
    SetLastError(ERROR_INVALID_HANDLE);
    return nullptr;
}

/// The brush behind a handle, which may be one more than a system colour's index.
[[nodiscard]] std::shared_ptr<BrushObject> brush_of(HBRUSH handle);

/// A bitmap of those pixels; null when the handle table is full.
[[nodiscard]] HBITMAP make_bitmap(std::shared_ptr<Surface> pixels);

/// What a region handle holds; false with ERROR_INVALID_HANDLE.
[[nodiscard]] bool region_of(HRGN handle, Region& region);
/// Null when the handle table is full.
[[nodiscard]] HRGN make_region(Region region);

/// A pixel of that colour, opaque.
[[nodiscard]] constexpr std::uint32_t pixel_of(COLORREF color) {
    return Surface::kBlack | std::uint32_t{GetRValue(color)} << 16 |
           std::uint32_t{GetGValue(color)} << 8 | GetBValue(color);
}

}  // namespace tvutil2
