#include "tvutil2/platform/draw/device_context.h"

#include "tvutil2/platform/draw/context_object.h"
#include "tvutil2/platform/draw/objects.h"
#include "tvutil2/platform/draw/theme.h"

#include <utility>

using tvutil2::BitmapObject;
using tvutil2::BrushObject;
using tvutil2::ContextObject;
using tvutil2::ContextState;
using tvutil2::fail_with;
using tvutil2::FontObject;
using tvutil2::GraphicsObject;
using tvutil2::PenObject;
using tvutil2::Region;

namespace {

// A context while its state is looked at.
class Locked {
  public:
    explicit Locked(HDC context) : m_context(tvutil2::object_of<ContextObject>(context)) {
        if (m_context) m_lock = std::unique_lock(m_context->lock);
    }
    explicit operator bool() const { return m_object != nullptr; }
    ContextObject* operator->() const { return m_object; }

  private:
    std::shared_ptr<ContextObject> m_context;
    ContextObject* m_object = m_context.get();
    std::unique_lock<std::mutex> m_lock;
};

// Sets one thing of the state and gives what was there.
template <class T>
T exchange_in(HDC context, T ContextState::*member, T value, T on_failure) {
    const Locked locked(context);
    return locked ? std::exchange(locked->state.*member, value) : on_failure;
}

template <class T>
T look_at(HDC context, T ContextState::*member, T on_failure) {
    const Locked locked(context);
    return locked ? locked->state.*member : on_failure;
}

template <class T, class Handle>
HGDIOBJ select_into(tvutil2::Selected<T, Handle>& place, std::shared_ptr<GraphicsObject> object,
                    HGDIOBJ handle) {
    const HGDIOBJ old = place.handle;
    place = {std::static_pointer_cast<T>(std::move(object)), static_cast<Handle>(handle)};
    return old;
}

HGDIOBJ select_bitmap(ContextObject& context, const std::shared_ptr<GraphicsObject>& object,
                      HGDIOBJ handle) {
    auto& place = context.state.bitmap;
    if (!context.is_memory()) return fail_with(ERROR_INVALID_PARAMETER), nullptr;
    if (object == place.object) return place.handle;
    if (!static_cast<BitmapObject&>(*object).enter_context()) {
        return fail_with(ERROR_BUSY), nullptr;
    }
    place.object->leave_context();
    context.clip_changed();
    return select_into(place, object, handle);
}

int complexity(const Region& region) {
    if (region.is_empty()) return NULLREGION;
    return region.is_rectangle() ? SIMPLEREGION : COMPLEXREGION;
}

int changed_clip(ContextObject& context, Region clip) {
    context.state.clip = std::move(clip);
    context.clip_changed();
    return complexity(context.clip());
}

}  // namespace

HDC CreateCompatibleDC(HDC like) {
    auto dpi = tvutil2::system_dpi();
    if (like != nullptr) {
        const Locked locked(like);
        if (!locked) return nullptr;
        dpi = locked->dpi();
    }
    return tvutil2::make_handle<HDC>(std::make_shared<ContextObject>(dpi, nullptr));
}

BOOL DeleteDC(HDC context) {
    {
        const Locked locked(context);
        if (!locked) return FALSE;
        if (!locked->is_memory()) return fail_with(ERROR_INVALID_HANDLE);
    }
    return tvutil2::close_handle_of<ContextObject>(context) ? TRUE : FALSE;
}

HWND WindowFromDC(HDC context) {
    const Locked locked(context);
    return locked ? locked->window() : nullptr;
}

int GetDeviceCaps(HDC context, int what) {
    if (context == nullptr) return 0;
    const Locked locked(context);
    if (!locked) return 0;
    switch (what) {
        case LOGPIXELSX:
        case LOGPIXELSY:
            return static_cast<int>(locked->dpi());
        case HORZRES:
            return locked->surface()->width();
        case VERTRES:
            return locked->surface()->height();
        case BITSPIXEL:
            return 32;
        case PLANES:
            return 1;
        default:
            return 0;
    }
}

HGDIOBJ SelectObject(HDC context, HGDIOBJ object) {
    const auto found = tvutil2::object_of<GraphicsObject>(object);
    if (!found) return nullptr;
    if (found->type() == GraphicsObject::Type::region) {
        const auto kind = SelectClipRgn(context, static_cast<HRGN>(object));
        return reinterpret_cast<HGDIOBJ>(static_cast<std::intptr_t>(kind));
    }
    const Locked locked(context);
    if (!locked) return nullptr;
    auto& state = locked->state;
    switch (found->type()) {
        case GraphicsObject::Type::brush:
            return select_into(state.brush, found, object);
        case GraphicsObject::Type::pen:
            return select_into(state.pen, found, object);
        case GraphicsObject::Type::font:
            return select_into(state.font, found, object);
        default:
            return select_bitmap(*locked.operator->(), found, object);
    }
}

HGDIOBJ GetCurrentObject(HDC context, UINT type) {
    const Locked locked(context);
    if (!locked) return nullptr;
    switch (type) {
        case OBJ_PEN:
            return locked->state.pen.handle;
        case OBJ_BRUSH:
            return locked->state.brush.handle;
        case OBJ_FONT:
            return locked->state.font.handle;
        case OBJ_BITMAP:
            return locked->state.bitmap.handle;
        default:
            return fail_with(ERROR_INVALID_PARAMETER), nullptr;
    }
}

int SaveDC(HDC context) {
    const Locked locked(context);
    if (!locked) return 0;
    locked->saved.push_back(locked->state);
    return static_cast<int>(locked->saved.size());
}

BOOL RestoreDC(HDC context, int number) {
    const Locked locked(context);
    if (!locked) return FALSE;
    const auto depth = static_cast<int>(locked->saved.size());
    if (number < 0) number += depth + 1;
    if (number < 1 || number > depth) return fail_with(ERROR_INVALID_PARAMETER);
    auto& state = locked->state;
    auto restored = std::move(locked->saved[static_cast<std::size_t>(number) - 1]);
    // The bitmap that was there may be elsewhere by now; then the one that is here stays.
    if (restored.bitmap.object != state.bitmap.object) {
        if (restored.bitmap.object->enter_context()) {
            state.bitmap.object->leave_context();
        } else {
            restored.bitmap = state.bitmap;
        }
    }
    state = std::move(restored);
    locked->saved.resize(static_cast<std::size_t>(number) - 1);
    locked->clip_changed();
    return TRUE;
}

COLORREF SetTextColor(HDC context, COLORREF color) {
    return exchange_in(context, &ContextState::text_color, color, CLR_INVALID);
}
COLORREF GetTextColor(HDC context) {
    return look_at(context, &ContextState::text_color, CLR_INVALID);
}
COLORREF SetBkColor(HDC context, COLORREF color) {
    return exchange_in(context, &ContextState::background, color, CLR_INVALID);
}
COLORREF GetBkColor(HDC context) {
    return look_at(context, &ContextState::background, CLR_INVALID);
}
int SetBkMode(HDC context, int mode) {
    if (mode != TRANSPARENT && mode != OPAQUE) return fail_with(ERROR_INVALID_PARAMETER), 0;
    return exchange_in(context, &ContextState::background_mode, mode, 0);
}
int GetBkMode(HDC context) {
    return look_at(context, &ContextState::background_mode, 0);
}
UINT SetTextAlign(HDC context, UINT align) {
    return exchange_in(context, &ContextState::text_align, align, GDI_ERROR);
}
UINT GetTextAlign(HDC context) {
    return look_at(context, &ContextState::text_align, GDI_ERROR);
}
int SetStretchBltMode(HDC context, int mode) {
    if (mode < BLACKONWHITE || mode > HALFTONE) return fail_with(ERROR_INVALID_PARAMETER), 0;
    return exchange_in(context, &ContextState::stretch_mode, mode, 0);
}

BOOL SetViewportOrgEx(HDC context, int x, int y, POINT* old) {
    const Locked locked(context);
    if (!locked) return FALSE;
    const auto before = std::exchange(locked->state.viewport, POINT{x, y});
    if (old != nullptr) *old = before;
    return TRUE;
}

BOOL OffsetViewportOrgEx(HDC context, int x, int y, POINT* old) {
    POINT now{};
    if (GetViewportOrgEx(context, &now) == FALSE) return FALSE;
    return SetViewportOrgEx(context, tvutil2::plus(now.x, x), tvutil2::plus(now.y, y), old);
}

BOOL GetViewportOrgEx(HDC context, POINT* origin) {
    const Locked locked(context);
    if (!locked || origin == nullptr) return FALSE;
    *origin = locked->state.viewport;
    return TRUE;
}

int SelectClipRgn(HDC context, HRGN region) {
    return ExtSelectClipRgn(context, region, RGN_COPY);
}

int ExtSelectClipRgn(HDC context, HRGN region, int mode) {
    Region with;
    const bool is_reset = region == nullptr && mode == RGN_COPY;
    if (!is_reset && !tvutil2::region_of(region, with)) return ERROR_REGION;
    const Locked locked(context);
    if (!locked) return ERROR_REGION;
    if (is_reset) return changed_clip(*locked.operator->(), locked->whole_clip());
    const auto origin = locked->shift();
    with.offset(tvutil2::saturated(std::int64_t{origin.x} - locked->state.viewport.x),
                tvutil2::saturated(std::int64_t{origin.y} - locked->state.viewport.y));
    auto clip = locked->state.clip.value_or(locked->whole_clip());
    switch (mode) {
        case RGN_AND:
            clip.intersect(with);
            break;
        case RGN_OR:
            clip.unite(with);
            break;
        case RGN_XOR:
            clip.exclusive_or(with);
            break;
        case RGN_DIFF:
            clip.subtract(with);
            break;
        case RGN_COPY:
            clip = std::move(with);
            break;
        default:
            return fail_with(ERROR_INVALID_PARAMETER), ERROR_REGION;
    }
    return changed_clip(*locked.operator->(), std::move(clip));
}

int IntersectClipRect(HDC context, int left, int top, int right, int bottom) {
    const Locked locked(context);
    if (!locked) return ERROR_REGION;
    auto clip = locked->state.clip.value_or(locked->whole_clip());
    clip.intersect(locked->to_device({left, top, right, bottom}));
    return changed_clip(*locked.operator->(), std::move(clip));
}

int ExcludeClipRect(HDC context, int left, int top, int right, int bottom) {
    const Locked locked(context);
    if (!locked) return ERROR_REGION;
    auto clip = locked->state.clip.value_or(locked->whole_clip());
    clip.subtract(locked->to_device({left, top, right, bottom}));
    return changed_clip(*locked.operator->(), std::move(clip));
}

int GetClipBox(HDC context, RECT* box) {
    const Locked locked(context);
    if (!locked || box == nullptr) return ERROR_REGION;
    const auto& clip = locked->clip();
    *box = clip.is_empty() ? RECT{} : locked->from_device(clip.bounds());
    return complexity(clip);
}

BOOL RectVisible(HDC context, const RECT* rect) {
    const Locked locked(context);
    return locked && rect != nullptr && locked->clip().touches(locked->to_device(*rect)) ? TRUE
                                                                                         : FALSE;
}
