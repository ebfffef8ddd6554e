#include "tvutil2/platform/draw/objects.h"

#include "tvutil2/platform/draw/context_object.h"
#include "tvutil2/platform/draw/font_names.h"
#include "tvutil2/platform/draw/graphics_object.h"
#include "tvutil2/platform/draw/theme.h"

#include <array>
#include <cstring>
#include <utility>

using tvutil2::BitmapObject;
using tvutil2::BrushObject;
using tvutil2::ContextObject;
using tvutil2::fail_with;
using tvutil2::FontObject;
using tvutil2::graphics_object;
using tvutil2::GraphicsObject;
using tvutil2::make_handle;
using tvutil2::PenObject;
using tvutil2::Region;
using tvutil2::Surface;

namespace tvutil2 {
namespace {

constexpr int kSystemColors = 31;

// The system's objects, made when the first is asked for, and then for ever.
class StockObjects {
  public:
    StockObjects() {
        for (std::size_t i = 0; i < m_system_brushes.size(); ++i) {
            m_system_brushes[i] = brush({BS_SOLID, 0, 0}, static_cast<int>(i));
        }
        constexpr std::array<COLORREF, 5> colors{RGB(255, 255, 255), RGB(192, 192, 192),
                                                 RGB(128, 128, 128), RGB(64, 64, 64), RGB(0, 0, 0)};
        for (std::size_t i = 0; i < colors.size(); ++i) {
            m_objects[i] = brush({BS_SOLID, colors[i], 0}, -1);
        }
        m_objects[NULL_BRUSH] = brush({BS_NULL, 0, 0}, -1);
        m_objects[WHITE_PEN] = pen(PS_SOLID, RGB(255, 255, 255));
        m_objects[BLACK_PEN] = pen(PS_SOLID, RGB(0, 0, 0));
        m_objects[NULL_PEN] = pen(PS_NULL, 0);
        m_objects[SYSTEM_FONT] =
            make_handle<HFONT>(std::make_shared<FontObject>(interface_font(system_dpi()), true));
        m_objects[DEFAULT_GUI_FONT] = m_objects[SYSTEM_FONT];
    }

    [[nodiscard]] HBRUSH system_brush(std::size_t index) const { return m_system_brushes[index]; }
    [[nodiscard]] HGDIOBJ object(std::size_t which) const { return m_objects[which]; }

    static const StockObjects& get() {
        static const auto* const instance = new StockObjects;
        return *instance;
    }

  private:
    static HBRUSH brush(const LOGBRUSH& record, int system_color) {
        return make_handle<HBRUSH>(std::make_shared<BrushObject>(record, system_color, true));
    }
    static HPEN pen(int style, COLORREF color) {
        const LOGPEN record{static_cast<UINT>(style), {1, 0}, color};
        return make_handle<HPEN>(std::make_shared<PenObject>(record, true));
    }

    std::array<HBRUSH, kSystemColors> m_system_brushes{};
    std::array<HGDIOBJ, DEFAULT_GUI_FONT + 1> m_objects{};
};

template <class Record>
int copy_record(const Record& record, int size, void* buffer) {
    constexpr auto kSize = static_cast<int>(sizeof record);
    if (buffer == nullptr) return kSize;
    const auto copied = std::clamp(size, 0, kSize);
    std::memcpy(buffer, &record, static_cast<std::size_t>(copied));
    return copied;
}

int complexity(const Region& region) {
    if (region.is_empty()) return NULLREGION;
    return region.is_rectangle() ? SIMPLEREGION : COMPLEXREGION;
}

BITMAP bitmap_record(const Surface& surface) {
    BITMAP record{};
    record.bmWidth = surface.width();
    record.bmHeight = surface.height();
    record.bmWidthBytes = surface.width() * 4;
    record.bmPlanes = 1;
    record.bmBitsPixel = 32;
    return record;
}

}  // namespace

COLORREF BrushObject::color() const {
    return m_system_color < 0 ? m_brush.lbColor : GetSysColor(m_system_color);
}

std::shared_ptr<const Font> FontObject::font() {
    const std::lock_guard guard(m_lock);
    if (!m_font) {
        if (auto* const engine = drawing_engine(); engine != nullptr) {
            m_font = engine->open_font(font_request(m_record));
        }
    }
    return m_font;
}

std::shared_ptr<BrushObject> brush_of(HBRUSH handle) {
    const auto value = reinterpret_cast<std::uintptr_t>(handle);
    if (value - 1 < kSystemColors) handle = StockObjects::get().system_brush(value - 1);
    return graphics_object<BrushObject>(handle);
}

HBITMAP make_bitmap(std::shared_ptr<Surface> pixels) {
    return make_handle<HBITMAP>(std::make_shared<BitmapObject>(std::move(pixels)));
}

bool region_of(HRGN handle, Region& region) {
    const auto object = graphics_object<RegionObject>(handle);
    if (!object) return false;
    region = object->get();
    return true;
}

HRGN make_region(Region region) {
    return make_handle<HRGN>(std::make_shared<RegionObject>(std::move(region)));
}

}  // namespace tvutil2

using tvutil2::RegionObject;

HBRUSH GetSysColorBrush(int index) {
    if (index < 0 || index >= tvutil2::kSystemColors) return nullptr;
    return tvutil2::StockObjects::get().system_brush(static_cast<std::size_t>(index));
}

HGDIOBJ GetStockObject(int which) {
    if (which < 0 || which > DEFAULT_GUI_FONT) return nullptr;
    return tvutil2::StockObjects::get().object(static_cast<std::size_t>(which));
}

HBRUSH CreateSolidBrush(COLORREF color) {
    const LOGBRUSH brush{BS_SOLID, color, 0};
    return CreateBrushIndirect(&brush);
}

HBRUSH CreateBrushIndirect(const LOGBRUSH* brush) {
    if (brush == nullptr || brush->lbStyle > BS_NULL) {
        return fail_with(ERROR_INVALID_PARAMETER), nullptr;
    }
    return make_handle<HBRUSH>(std::make_shared<BrushObject>(*brush));
}

HPEN CreatePen(int style, int width, COLORREF color) {
    if (style < PS_SOLID || style > PS_NULL) style = PS_SOLID;
    const LOGPEN pen{static_cast<UINT>(style), {std::abs(width), 0}, color};
    return make_handle<HPEN>(std::make_shared<PenObject>(pen));
}

HFONT CreateFontIndirectW(const LOGFONTW* font) {
    if (font == nullptr) return fail_with(ERROR_INVALID_PARAMETER), nullptr;
    auto record = *font;
    record.lfFaceName[LF_FACESIZE - 1] = 0;
    return make_handle<HFONT>(std::make_shared<FontObject>(record));
}

HBITMAP CreateCompatibleBitmap(HDC context, int width, int height) {
    UINT dpi = 0;
    if (const auto of = tvutil2::object_of<ContextObject>(context)) {
        const std::lock_guard guard(of->lock);
        dpi = of->dpi();
    } else {
        return nullptr;
    }
    const bool is_none = width == 0 || height == 0;
    auto surface = Surface::create(is_none ? 1 : width, is_none ? 1 : height, dpi);
    return surface ? tvutil2::make_bitmap(std::move(surface)) : nullptr;
}

BOOL DeleteObject(HGDIOBJ object) {
    const auto found = tvutil2::object_of<GraphicsObject>(object);
    if (!found) return FALSE;
    if (found->is_stock()) return TRUE;
    if (found->type() == GraphicsObject::Type::bitmap &&
        static_cast<const BitmapObject&>(*found).is_selected()) {
        return fail_with(ERROR_INVALID_HANDLE);
    }
    return tvutil2::close_handle_of<GraphicsObject>(object) ? TRUE : FALSE;
}

int GetObjectW(HGDIOBJ object, int size, void* buffer) {
    const auto found = tvutil2::object_of<GraphicsObject>(object);
    if (!found) return 0;
    const auto copy = [&](const auto& record) {
        return tvutil2::copy_record(record, size, buffer);
    };
    switch (found->type()) {
        case GraphicsObject::Type::brush:
            return copy(static_cast<const BrushObject&>(*found).record());
        case GraphicsObject::Type::pen:
            return copy(static_cast<const PenObject&>(*found).record());
        case GraphicsObject::Type::font:
            return copy(static_cast<const FontObject&>(*found).record());
        case GraphicsObject::Type::bitmap:
            return copy(
                tvutil2::bitmap_record(*static_cast<const BitmapObject&>(*found).surface()));
        case GraphicsObject::Type::region:
            break;
    }
    return fail_with(ERROR_INVALID_HANDLE), 0;
}

HRGN CreateRectRgn(int left, int top, int right, int bottom) {
    return tvutil2::make_region(Region(RECT{std::min(left, right), std::min(top, bottom),
                                            std::max(left, right), std::max(top, bottom)}));
}

HRGN CreateRectRgnIndirect(const RECT* rect) {
    if (rect == nullptr) return fail_with(ERROR_INVALID_PARAMETER), nullptr;
    return CreateRectRgn(rect->left, rect->top, rect->right, rect->bottom);
}

BOOL SetRectRgn(HRGN region, int left, int top, int right, int bottom) {
    const auto object = graphics_object<RegionObject>(region);
    if (!object) return FALSE;
    object->set(Region(RECT{std::min(left, right), std::min(top, bottom), std::max(left, right),
                            std::max(top, bottom)}));
    return TRUE;
}

int CombineRgn(HRGN target, HRGN first, HRGN second, int mode) {
    const auto object = graphics_object<RegionObject>(target);
    Region result;
    Region other;
    if (!object || !tvutil2::region_of(first, result)) return ERROR_REGION;
    if (mode != RGN_COPY && !tvutil2::region_of(second, other)) return ERROR_REGION;
    switch (mode) {
        case RGN_AND:
            result.intersect(other);
            break;
        case RGN_OR:
            result.unite(other);
            break;
        case RGN_XOR:
            result.exclusive_or(other);
            break;
        case RGN_DIFF:
            result.subtract(other);
            break;
        case RGN_COPY:
            break;
        default:
            return fail_with(ERROR_INVALID_PARAMETER), ERROR_REGION;
    }
    const auto kind = tvutil2::complexity(result);
    object->set(std::move(result));
    return kind;
}

int OffsetRgn(HRGN region, int x, int y) {
    const auto object = graphics_object<RegionObject>(region);
    if (!object) return ERROR_REGION;
    auto moved = object->get();
    moved.offset(x, y);
    const auto kind = tvutil2::complexity(moved);
    object->set(std::move(moved));
    return kind;
}

int GetRgnBox(HRGN region, RECT* box) {
    Region found;
    if (box == nullptr) return fail_with(ERROR_INVALID_PARAMETER), ERROR_REGION;
    if (!tvutil2::region_of(region, found)) return ERROR_REGION;
    *box = found.bounds();
    return tvutil2::complexity(found);
}

BOOL PtInRegion(HRGN region, int x, int y) {
    Region found;
    return tvutil2::region_of(region, found) && found.contains({x, y}) ? TRUE : FALSE;
}

BOOL RectInRegion(HRGN region, const RECT* rect) {
    Region found;
    return rect != nullptr && tvutil2::region_of(region, found) && found.touches(*rect) ? TRUE
                                                                                        : FALSE;
}

BOOL EqualRgn(HRGN first, HRGN second) {
    Region a;
    Region b;
    return tvutil2::region_of(first, a) && tvutil2::region_of(second, b) && a == b ? TRUE : FALSE;
}
