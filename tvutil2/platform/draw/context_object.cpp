#include "tvutil2/platform/draw/context_object.h"

#include "tvutil2/platform/draw/objects.h"

#include <cwchar>
#include <utility>

namespace tvutil2 {
namespace {

template <class T, class Handle>
Selected<T, Handle> stock(int which) {
    const auto handle = static_cast<Handle>(GetStockObject(which));
    return {graphics_object<T>(handle), handle};
}

// What every memory context begins with. Nobody sees its pixel.
Selected<BitmapObject, HBITMAP> one_pixel() {
    static const auto handle =
        make_handle<HBITMAP>(std::make_shared<BitmapObject>(Surface::create(1, 1), true));
    return {graphics_object<BitmapObject>(handle), handle};
}

// Never destroyed: other threads may be drawing when the process ends.
const ContextState& first_state() {
    static const auto* const state = [] {
        auto* const made = new ContextState;
        made->brush = stock<BrushObject, HBRUSH>(WHITE_BRUSH);
        made->pen = stock<PenObject, HPEN>(BLACK_PEN);
        made->font = stock<FontObject, HFONT>(SYSTEM_FONT);
        return made;
    }();
    return *state;
}

// The C library has one of these for each kind of processor.
void fill_pixels(std::uint32_t* pixels, std::size_t count, std::uint32_t pixel) {
    static_assert(sizeof(wchar_t) == sizeof *pixels);
    std::wmemset(reinterpret_cast<wchar_t*>(pixels), static_cast<wchar_t>(pixel), count);
}

}  // namespace

ContextObject::ContextObject(UINT dpi, HWND window)
    : HandleObject(kHandleKind), state(first_state()), m_dpi(dpi), m_window(window) {
    state.bitmap = one_pixel();
}

ContextObject::ContextObject(std::shared_ptr<Surface> surface, POINT origin, Region clip,
                             HWND window)
    : HandleObject(kHandleKind),
      state(first_state()),
      m_lent(std::move(surface)),
      m_origin(origin),
      m_base_clip(std::move(clip)),
      m_window(window) {
    m_base_clip.intersect(m_lent->area());
}

ContextObject::~ContextObject() {
    if (is_memory()) state.bitmap.object->leave_context();
}

RECT ContextObject::from_device(const RECT& rect) const {
    const auto by = shift();
    return moved(rect, {saturated(-std::int64_t{by.x}), saturated(-std::int64_t{by.y})});
}

Region ContextObject::whole_clip() const {
    return is_memory() ? Region(surface()->area()) : m_base_clip;
}

const Region& ContextObject::clip() {
    if (!m_is_clip_known) {
        m_clip = whole_clip();
        if (state.clip) m_clip.intersect(*state.clip);
        m_is_clip_known = true;
    }
    return m_clip;
}

Drawing::Drawing(HDC context) : m_context(object_of<ContextObject>(context)) {
    if (!m_context) return;
    m_context_lock = std::unique_lock(m_context->lock);
    m_surface = m_context->surface();
    m_surface_lock = std::unique_lock(m_surface->lock());
}

Canvas Drawing::canvas() const {
    return {m_surface->row(0), m_surface->width(), m_surface->height(), clip().rects()};
}

void Drawing::fill(const RECT& rect, std::uint32_t pixel) const {
    for (const auto& part : clip().rects()) {
        const auto cut = common_part(part, rect);
        if (is_empty(cut)) continue;
        const auto width = static_cast<std::size_t>(cut.right - cut.left);
        for (auto y = cut.top; y < cut.bottom; ++y) {
            fill_pixels(m_surface->row(y) + cut.left, width, pixel);
        }
    }
}

void Drawing::fill(const Region& region, std::uint32_t pixel) const {
    for (const auto& rect : region.rects()) fill(rect, pixel);
}

}  // namespace tvutil2
