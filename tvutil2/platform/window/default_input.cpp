// What the system does with input that a window doesn't want.
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/hit_test.h"
#include "tvutil2/platform/window/input.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/menus/menu_bar.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/mouse.h"
#include "tvutil2/platform/window/scrolling.h"
#include "tvutil2/platform/window/show.h"
#include "tvutil2/platform/window/system_commands.h"
#include "tvutil2/platform/window/window.h"

#include <utility>

namespace tvutil2 {
namespace {

bool has_style(HWND window, DWORD style) {
    return (static_cast<DWORD>(GetWindowLongW(window, GWL_STYLE)) & style) == style;
}

HWND parent_of_child(HWND window) {
    return has_style(window, WS_CHILD) ? GetParent(window) : nullptr;
}

WPARAM as_wparam(HWND window) {
    return reinterpret_cast<WPARAM>(window);
}

bool is_edge(LRESULT hit) {
    return hit >= HTLEFT && hit <= HTBOTTOMRIGHT;
}

void press_frame(HWND window, LRESULT hit, LPARAM point) {
    if (hit == HTCAPTION) {
        SetActiveWindow(GetAncestor(window, GA_ROOT));
        SendMessageW(window, WM_SYSCOMMAND, SC_MOVE | static_cast<WPARAM>(HTCAPTION), point);
    } else if (hit == HTMENU) {
        SendMessageW(window, WM_SYSCOMMAND, SC_MOUSEMENU | static_cast<WPARAM>(HTMENU), point);
    } else if (is_edge(hit)) {
        SendMessageW(window, WM_SYSCOMMAND, SC_SIZE | static_cast<WPARAM>(hit - HTLEFT + 1), point);
    }
}

void carry_out(HWND window, WPARAM command, LPARAM lparam) {
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
        case SC_MOUSEMENU:
            enter_menu_bar(window, POINT{GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam)});
            break;
        case SC_KEYMENU:
            enter_menu_bar(GetAncestor(window, GA_ROOT), static_cast<char16_t>(lparam));
            break;
        default:
            break;
    }
}

// Alt pressed and let go again with nothing in between, or F10, leads to the menu bar.
void follow_menu_key(HWND window, UINT message, WPARAM key) {
    static thread_local WPARAM t_pressed = 0;
    if (message == WM_SYSKEYDOWN) {
        t_pressed = key == VK_MENU || (key == VK_F10 && GetKeyState(VK_SHIFT) >= 0) ? key : 0;
    } else if (std::exchange(t_pressed, 0) == key && key != 0) {
        SendMessageW(GetAncestor(window, GA_ROOT), WM_SYSCOMMAND, SC_KEYMENU, 0);
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
        case WM_NCMOUSEMOVE:
            if (static_cast<LRESULT>(wparam) == HTMENU) {
                heat_menu_bar(window, {GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam)});
            } else {
                cool_menu_bar(window);
            }
            return true;
        case WM_MOUSEMOVE:
        case WM_MOUSELEAVE:
            cool_menu_bar(window);
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
            // To a menu each press is one of its own.
            if (static_cast<LRESULT>(wparam) == HTMENU) press_frame(window, HTMENU, lparam);
            return true;
        case WM_SYSCOMMAND:
            carry_out(window, wparam, lparam);
            return true;
        case WM_SYSKEYUP:
            follow_menu_key(window, message, wparam);
            return true;
        case WM_SYSCHAR:
            SendMessageW(GetAncestor(window, GA_ROOT), WM_SYSCOMMAND, SC_KEYMENU,
                         static_cast<LPARAM>(wparam));
            return true;
        case WM_KEYUP:
            if (wparam == VK_APPS) SendMessageW(window, WM_CONTEXTMENU, as_wparam(window), -1);
            return true;
        case WM_SYSKEYDOWN:
            follow_menu_key(window, message, wparam);
            if (wparam == VK_F10 && GetKeyState(VK_SHIFT) < 0) {
                SendMessageW(window, WM_CONTEXTMENU, as_wparam(window), -1);
            }
            if (wparam == VK_F4 && GetKeyState(VK_MENU) < 0) {
                PostMessageW(GetAncestor(window, GA_ROOT), WM_SYSCOMMAND, SC_CLOSE, 0);
            }
            return true;
        case WM_RBUTTONUP: {
            POINT point{GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam)};
            ClientToScreen(window, &point);
            SendMessageW(window, WM_CONTEXTMENU, as_wparam(window),
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
