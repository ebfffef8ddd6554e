#include "tvutil2/platform/window/controls/field.h"

#include "tvutil2/platform/draw/device_context.h"
#include "tvutil2/platform/draw/look.h"
#include "tvutil2/platform/draw/rect.h"
#include "tvutil2/platform/draw/shapes.h"
#include "tvutil2/platform/window/controls/control.h"
#include "tvutil2/platform/window/default_paint.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/mouse.h"
#include "tvutil2/platform/window/paint.h"
#include "tvutil2/platform/window/scrolling.h"
#include "tvutil2/platform/window/window.h"

#include <algorithm>
#include <utility>

namespace tvutil2 {
namespace {

constexpr int kFrame = 2;

bool has_frame(HWND window) {
    const auto ex_style = static_cast<DWORD>(GetWindowLongW(window, GWL_EXSTYLE));
    return (style_of(window) & WS_BORDER) != 0 || (ex_style & WS_EX_CLIENTEDGE) != 0;
}

void calculate_client(HWND window, RECT& rect) {
    const auto dpi = GetDpiForWindow(window);
    const auto style = style_of(window);
    const int side = has_frame(window) ? scaled(kFrame, dpi) : 0;
    int bar = 0;
    look_metric(SM_CXVSCROLL, dpi, bar);
    rect.left += side;
    rect.top += side;
    rect.right = std::max(rect.left, rect.right - side - ((style & WS_VSCROLL) != 0 ? bar : 0));
    rect.bottom = std::max(rect.top, rect.bottom - side - ((style & WS_HSCROLL) != 0 ? bar : 0));
}

void paint_frame(HWND window, const FieldLook& field) {
    RECT place{};
    RECT client{};
    GetWindowRect(window, &place);
    GetClientRect(window, &client);
    MapWindowPoints(window, nullptr, reinterpret_cast<POINT*>(&client), 2);
    const auto inside = moved(client, {-place.left, -place.top});
    const auto area = moved(place, {-place.left, -place.top});
    auto* const context = GetWindowDC(window);
    ExcludeClipRect(context, inside.left, inside.top, inside.right, inside.bottom);
    if (has_frame(window)) {
        ControlLook look;
        look.is_disabled = (style_of(window) & WS_DISABLED) != 0;
        look.is_default = GetFocus() == window;
        look.is_hot = field.is_hot;
        // What the corners leave free.
        FillRect(context, &area, GetSysColorBrush(COLOR_3DFACE));
        ask_colors(window, context, field.color_message);
        draw_field(context, area, look, GetBkColor(context));
    }
    paint_scroll_bars(window, context);
    ReleaseDC(window, context);
}

void heat(HWND window, FieldLook& look) {
    cool_scroll_bars(window);
    if (std::exchange(look.is_hot, true)) return;
    TRACKMOUSEEVENT track{sizeof track, TME_LEAVE, window, 0};
    TrackMouseEvent(&track);
}

}  // namespace

bool handle_field_message(HWND window, FieldLook& look, UINT message, WPARAM /*wparam*/,
                          LPARAM lparam, LRESULT& result) {
    result = 0;
    switch (message) {
        case WM_NCCALCSIZE:
            calculate_client(window, *reinterpret_cast<RECT*>(lparam));
            return true;
        case WM_NCPAINT:
            paint_frame(window, look);
            return true;
        case WM_MOUSEMOVE:
            heat(window, look);
            return false;
        case WM_MOUSELEAVE:
            look.is_hot = false;
            cool_scroll_bars(window);
            return true;
        case WM_SETFOCUS:
        case WM_KILLFOCUS:
        case WM_ENABLE:
            repaint_frame(window);
            return false;
        default:
            return false;
    }
}

}  // namespace tvutil2
