// What the system does with input that a window doesn't want.
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/hit_test.h"
#include "tvutil2/platform/window/input.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/mouse.h"
#include "tvutil2/platform/window/scrolling.h"
#include "tvutil2/platform/window/show.h"
#include "tvutil2/platform/window/system_commands.h"
#include "tvutil2/platform/window/window.h"

namespace tvutil2 {
namespace {

bool has_style(HWND window, DWORD style) {
    return (static_cast<DWORD>(GetWindowLongW(window, GWL_STYLE)) & style) == style;
}

HWND parent_of_child(HWND window) {
    return has_style(window, WS_CHILD) ? GetParent(window) : nullptr;
}

bool is_edge(LRESULT hit) {
    return hit >= HTLEFT && hit <= HTBOTTOMRIGHT;
}

void press_frame(HWND window, LRESULT hit, LPARAM point) {
    if (hit == HTCAPTION) {
        SetActiveWindow(GetAncestor(window, GA_ROOT));
        SendMessageW(window, WM_SYSCOMMAND, SC_MOVE | static_cast<WPARAM>(HTCAPTION), point);
    } else if (is_edge(hit)) {
        SendMessageW(window, WM_SYSCOMMAND, SC_SIZE | static_cast<WPARAM>(hit - HTLEFT + 1), point);
    }
}

void carry_out(HWND window, WPARAM command) {
    const auto part = static_cast<LRESULT>(command & 0xF);
    switch (command & 0xFFF0) {
        case SC_CLOSE:
            SendMessageW(window, WM_CLOSE, 0, 0);
            break;
        case SC_MINIMIZE:
            ShowWindow(window, SW_MINIMIZE);
            break;
        case SC_MAXIMIZE:
            ShowWindow(window, SW_MAXIMIZE);
            break;
        case SC_RESTORE:
            ShowWindow(window, SW_RESTORE);
            break;
        case SC_MOVE:
            if (part == HTCAPTION) drag_window(window, HTCAPTION);
            break;
        case SC_SIZE:
            if (part != 0) drag_window(window, part - 1 + HTLEFT);
            break;
        default:
            break;
    }
}

LRESULT ask_for_activation(HWND window, WPARAM wparam, LPARAM lparam) {
    auto* const parent = parent_of_child(window);
    const auto answer =
        parent != nullptr ? SendMessageW(parent, WM_MOUSEACTIVATE, wparam, lparam) : 0;
    if (answer != 0) return answer;
    const auto style = static_cast<DWORD>(GetWindowLongW(window, GWL_EXSTYLE));
    return (style & WS_EX_NOACTIVATE) != 0 ? MA_NOACTIVATE : MA_ACTIVATE;
}

// A parent goes before its child, so that it can set another cursor.
LRESULT set_cursor(HWND window, WPARAM wparam, LPARAM lparam) {
    auto* const parent = parent_of_child(window);
    if (parent != nullptr && SendMessageW(parent, WM_SETCURSOR, wparam, lparam) != 0) return TRUE;
    if (reinterpret_cast<HWND>(wparam) != window) return FALSE;
    show_cursor_of_hit(window, static_cast<std::int16_t>(LOWORD(static_cast<WPARAM>(lparam))));
    return TRUE;
}

void zoom(HWND window) {
    if (has_style(window, WS_MAXIMIZEBOX)) {
        SendMessageW(window, WM_SYSCOMMAND, IsZoomed(window) ? SC_RESTORE : SC_MAXIMIZE, 0);
    }
}

}  // namespace

bool handle_input_message(HWND window, UINT message, WPARAM wparam, LPARAM lparam,
                          LRESULT& result) {
    result = 0;
    if (handle_scroll_message(window, message, wparam, lparam)) return true;
    switch (message) {
        case WM_ACTIVATE:
            if (LOWORD(wparam) != WA_INACTIVE && !has_style(window, WS_MINIMIZE)) SetFocus(window);
            return true;
        case WM_MOUSEACTIVATE:
            result = ask_for_activation(window, wparam, lparam);
            return true;
        case WM_SETCURSOR:
            result = set_cursor(window, wparam, lparam);
            return true;
        case WM_CANCELMODE:
            if (GetCapture() == window) ReleaseCapture();
            return true;
        case WM_NCLBUTTONDOWN:
            press_frame(window, static_cast<LRESULT>(wparam), lparam);
            return true;
        case WM_NCLBUTTONUP:
            if (static_cast<LRESULT>(wparam) == HTCLOSE) {
                SendMessageW(window, WM_SYSCOMMAND, SC_CLOSE, lparam);
            }
            return true;
        case WM_NCLBUTTONDBLCLK:
            if (static_cast<LRESULT>(wparam) == HTCAPTION) zoom(window);
            return true;
        case WM_SYSCOMMAND:
            carry_out(window, wparam);
            return true;
        case WM_SYSKEYDOWN:
            if (wparam == VK_F4 && GetKeyState(VK_MENU) < 0) {
                PostMessageW(GetAncestor(window, GA_ROOT), WM_SYSCOMMAND, SC_CLOSE, 0);
            }
            return true;
        case WM_RBUTTONUP: {
            POINT point{GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam)};
            ClientToScreen(window, &point);
            SendMessageW(window, WM_CONTEXTMENU, reinterpret_cast<WPARAM>(window),
                         MAKELPARAM(static_cast<WORD>(point.x), static_cast<WORD>(point.y)));
            return true;
        }
        case WM_CONTEXTMENU:
        case WM_MOUSEWHEEL:
        case WM_MOUSEHWHEEL:
            if (auto* const parent = parent_of_child(window)) {
                result = SendMessageW(parent, message, wparam, lparam);
            }
            return true;
        default:
            return false;
    }
}

}  // namespace tvutil2
