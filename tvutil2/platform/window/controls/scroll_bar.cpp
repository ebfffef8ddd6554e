#include "tvutil2/platform/window/controls/control.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/mouse.h"
#include "tvutil2/platform/window/paint.h"
#include "tvutil2/platform/window/parameters.h"
#include "tvutil2/platform/window/scroll_bars.h"
#include "tvutil2/platform/window/scroll_hold.h"
#include "tvutil2/platform/window/show.h"
#include "tvutil2/platform/window/window.h"

namespace tvutil2 {
namespace {

void paint_control(HWND window) {
    PAINTSTRUCT paint;
    auto* const context = BeginPaint(window, &paint);
    ScrollBars bars;
    ScrollBarPlace place;
    {
        const TreeLock tree;
        auto* const record = tree.table.find(window);
        if (record == nullptr) return;
        bars = scroll_bars_of(*record);
        const auto& client = record->client;
        place = {{0, 0, client.right - client.left, client.bottom - client.top},
                 is_vertical_bar(*record, SB_CTL),
                 dpi_of(*record)};
    }
    auto& state = bars.bars[SB_CTL];
    if (!IsWindowEnabled(window)) state.is_disabled = true;
    const bool is_focused = GetFocus() == window;
    place.draw(context, state, is_focused ? ScrollPart::thumb : bars.hot, bars.pressed);
    EndPaint(window, &paint);
}

WORD code_of_key(WPARAM key) {
    switch (key) {
        case VK_LEFT:
        case VK_UP:
            return SB_LINEUP;
        case VK_RIGHT:
        case VK_DOWN:
            return SB_LINEDOWN;
        case VK_PRIOR:
            return SB_PAGEUP;
        case VK_NEXT:
            return SB_PAGEDOWN;
        case VK_HOME:
            return SB_TOP;
        case VK_END:
            return SB_BOTTOM;
        default:
            return SB_ENDSCROLL;
    }
}

void press_key_in(HWND window, WPARAM key) {
    const auto code = code_of_key(key);
    if (code == SB_ENDSCROLL) return;
    const bool is_vertical =
        (static_cast<DWORD>(GetWindowLongW(window, GWL_STYLE)) & SBS_VERT) != 0;
    const UINT message = is_vertical ? WM_VSCROLL : WM_HSCROLL;
    for (const auto each : {code, SB_ENDSCROLL}) {
        SendMessageW(GetParent(window), message, MAKEWPARAM(each, 0), as_lparam(window));
    }
}

int set_bar_position(HWND window, int bar, int position) {
    SeenBar seen;
    const int before = look_at_bar(window, bar, seen) ? seen.state.position : 0;
    set_bar_info(window, bar, {sizeof(SCROLLINFO), SIF_POS, 0, 0, 0, position, 0});
    return before;
}

// The messages that set and ask values. False for any other.
bool handle_values(HWND window, UINT message, WPARAM wparam, LPARAM lparam, LRESULT& result) {
    SeenBar seen;
    switch (message) {
        case SBM_SETPOS:
            result = set_bar_position(window, SB_CTL, static_cast<int>(wparam));
            return true;
        case SBM_GETPOS:
            result = look_at_bar(window, SB_CTL, seen) ? seen.state.position : 0;
            return true;
        case SBM_SETRANGE:
            set_bar_info(window, SB_CTL,
                         {sizeof(SCROLLINFO), SIF_RANGE, static_cast<int>(wparam),
                          static_cast<int>(lparam), 0, 0, 0});
            return true;
        case SBM_GETRANGE:
            if (!look_at_bar(window, SB_CTL, seen)) return true;
            *reinterpret_cast<int*>(wparam) = seen.state.least;
            *reinterpret_cast<int*>(lparam) = seen.state.most;
            return true;
        case SBM_SETSCROLLINFO:
            result = set_bar_info(window, SB_CTL, *reinterpret_cast<const SCROLLINFO*>(lparam));
            return true;
        case SBM_GETSCROLLINFO:
            result = look_at_bar(window, SB_CTL, seen) ? TRUE : FALSE;
            if (result != 0) seen.state.get(*reinterpret_cast<SCROLLINFO*>(lparam));
            return true;
        default:
            return false;
    }
}

}  // namespace

LRESULT scroll_bar_procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    LRESULT result = 0;
    if (handle_values(window, message, wparam, lparam, result)) return result;
    switch (message) {
        case WM_PAINT:
            paint_control(window);
            return 0;
        case WM_ERASEBKGND:
            return TRUE;
        case WM_GETDLGCODE:
            return 1;  // DLGC_WANTARROWS
        case WM_LBUTTONDOWN:
        case WM_LBUTTONDBLCLK: {
            const auto style = static_cast<DWORD>(GetWindowLongW(window, GWL_STYLE));
            if ((style & WS_TABSTOP) != 0) SetFocus(window);
            auto point = POINT{GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam)};
            ClientToScreen(window, &point);
            hold_scroll_bar(window, SB_CTL, point);
            return 0;
        }
        case WM_MOUSEMOVE: {
            auto point = POINT{GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam)};
            ClientToScreen(window, &point);
            heat_scroll_bar(window, SB_CTL, point);
            return 0;
        }
        case WM_MOUSELEAVE:
            change_bar_looks(window, SB_CTL, ScrollPart::none, ScrollPart::none);
            return 0;
        case WM_SETFOCUS:
        case WM_KILLFOCUS:
        case WM_ENABLE:
            InvalidateRect(window, nullptr, FALSE);
            return 0;
        case WM_KEYDOWN:
            press_key_in(window, wparam);
            return 0;
        default:
            return DefWindowProcW(window, message, wparam, lparam);
    }
}

}  // namespace tvutil2
