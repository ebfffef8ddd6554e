#include "tvutil2/platform/window/controls/button.h"

#include "tvutil2/platform/draw/rect.h"
#include "tvutil2/platform/window/controls/button_paint.h"
#include "tvutil2/platform/window/dialogs/dialogs.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/hit_test.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/mouse.h"
#include "tvutil2/platform/window/show.h"
#include "tvutil2/platform/window/window.h"

#include <algorithm>
#include <utility>

namespace tvutil2 {
namespace {

DWORD type_of(HWND window) {
    return style_of(window) & BS_TYPEMASK;
}

LRESULT dialog_code(DWORD type) {
    if (type == BS_GROUPBOX) return DLGC_STATIC;
    if (is_radio(type)) return DLGC_BUTTON | DLGC_RADIOBUTTON;
    if (is_default(type)) return DLGC_BUTTON | DLGC_DEFPUSHBUTTON;
    return DLGC_BUTTON | (is_push(type) ? DLGC_UNDEFPUSHBUTTON : 0);
}

void set_pressed(HWND window, ButtonState& state, bool is_pressed) {
    if (std::exchange(state.is_pressed, is_pressed) != is_pressed) repaint(window);
}

// Only the checked one of a group is stopped at by Tab.
void set_check(HWND window, ButtonState& state, LRESULT check) {
    const auto type = type_of(window);
    if (is_push(type) || type == BS_GROUPBOX) return;
    const bool is_two_state = type != BS_3STATE && type != BS_AUTO3STATE;
    state.check =
        is_two_state && check != BST_UNCHECKED ? BST_CHECKED : std::clamp<LRESULT>(check, 0, 2);
    if (is_radio(type)) {
        const auto style = style_of(window);
        const auto stop = state.check == BST_CHECKED ? WS_TABSTOP : 0U;
        if ((style & WS_TABSTOP) != stop) {
            SetWindowLongW(window, GWL_STYLE, static_cast<LONG>((style & ~WS_TABSTOP) | stop));
        }
    }
    repaint(window);
}

void uncheck_others(HWND window) {
    auto* const parent = GetParent(window);
    // Around the group at most once, whatever becomes of it meanwhile.
    auto* each = GetNextDlgGroupItem(parent, window, FALSE);
    for (int left = 10000; each != nullptr && each != window && left > 0; --left) {
        if ((SendMessageW(each, WM_GETDLGCODE, 0, 0) & DLGC_RADIOBUTTON) != 0 &&
            (style_of(each) & BS_TYPEMASK) == BS_AUTORADIOBUTTON) {
            SendMessageW(each, BM_SETCHECK, BST_UNCHECKED, 0);
        }
        each = GetNextDlgGroupItem(parent, each, FALSE);
    }
}

// What a click changes by itself, before the parent hears of it.
void change_check(HWND window, ButtonState& state) {
    switch (type_of(window)) {
        case BS_AUTOCHECKBOX:
            SendMessageW(window, BM_SETCHECK, state.check == BST_UNCHECKED ? 1 : 0, 0);
            break;
        case BS_AUTO3STATE:
            SendMessageW(window, BM_SETCHECK, static_cast<WPARAM>((state.check + 1) % 3), 0);
            break;
        case BS_AUTORADIOBUTTON:
            uncheck_others(window);
            SendMessageW(window, BM_SETCHECK, BST_CHECKED, 0);
            break;
        default:
            break;
    }
}

void hold(HWND window, ButtonState& state) {
    SetCapture(window);
    state.is_held = true;
    set_pressed(window, state, true);
}

// The end of holding it: a click, or nothing.
void let_go(HWND window, ButtonState& state, bool clicks) {
    if (!std::exchange(state.is_held, false)) return;
    set_pressed(window, state, false);
    if (GetCapture() == window) ReleaseCapture();
    if (!clicks || !IsWindow(window)) return;
    change_check(window, state);
    if (IsWindow(window)) notify_parent(window, BN_CLICKED);
}

bool is_inside(HWND window, LPARAM lparam) {
    RECT client{};
    GetClientRect(window, &client);
    return PtInRect(&client, {GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam)}) != 0;
}

void follow_pointer(HWND window, ButtonState& state, LPARAM lparam) {
    if (state.is_held) {
        set_pressed(window, state, is_inside(window, lparam));
    } else if (!state.is_hot) {
        state.is_hot = true;
        TRACKMOUSEEVENT track{sizeof track, TME_LEAVE, window, 0};
        TrackMouseEvent(&track);
        repaint(window);
    }
}

void change_focus(HWND window, ButtonState& state, bool has_focus) {
    if (!has_focus) let_go(window, state, false);
    repaint(window);
    if ((style_of(window) & BS_NOTIFY) != 0) {
        notify_parent(window, has_focus ? BN_SETFOCUS : BN_KILLFOCUS);
    }
}

LRESULT state_bits(HWND window, const ButtonState& state) {
    return state.check | (state.is_pressed ? BST_PUSHED : 0) |
           (GetFocus() == window ? BST_FOCUS : 0) | (state.is_hot ? BST_HOT : 0);
}

// A dialog marks its default with the types of push buttons: a command link stays one.
void set_type(HWND window, WPARAM wanted, LPARAM redraws) {
    auto type = static_cast<DWORD>(wanted) & BS_TYPEMASK;
    if (is_link(type_of(window)) && type <= BS_DEFPUSHBUTTON) type += BS_COMMANDLINK;
    const auto style = (style_of(window) & ~BS_TYPEMASK) | type;
    SetWindowLongW(window, GWL_STYLE, static_cast<LONG>(style));
    if (redraws != 0) repaint(window);
}

// The person's doings. False for any other message.
bool handle_input(HWND window, ButtonState& state, UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
        case WM_LBUTTONDOWN:
        case WM_LBUTTONDBLCLK:
            if (GetFocus() != window) SetFocus(window);
            hold(window, state);
            return true;
        case WM_LBUTTONUP:
            let_go(window, state, is_inside(window, lparam));
            return true;
        case WM_MOUSEMOVE:
            follow_pointer(window, state, lparam);
            return true;
        case WM_MOUSELEAVE:
            state.is_hot = false;
            repaint(window);
            return true;
        case WM_CAPTURECHANGED:
            let_go(window, state, false);
            return true;
        case WM_KEYDOWN:
            if (wparam == VK_SPACE && !state.is_held) hold(window, state);
            return wparam == VK_SPACE;
        case WM_KEYUP:
            if (wparam == VK_SPACE) let_go(window, state, true);
            return wparam == VK_SPACE;
        case WM_SETFOCUS:
        case WM_KILLFOCUS:
            change_focus(window, state, message == WM_SETFOCUS);
            return true;
        case BM_CLICK:
            if (!IsWindowEnabled(window)) return true;
            state.is_held = true;
            let_go(window, state, true);
            return true;
        default:
            return false;
    }
}

}  // namespace

LRESULT button_procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    // Kept for as long as this runs, whatever becomes of the window meanwhile.
    const auto state = state_of<ButtonState>(window);
    if (!state) return DefWindowProcW(window, message, wparam, lparam);
    const bool is_group = type_of(window) == BS_GROUPBOX;
    switch (message) {
        case WM_PAINT:
            paint_button(window, *state);
            return 0;
        case WM_ERASEBKGND:
            return TRUE;
        case WM_NCHITTEST:
            if (is_group) return HTTRANSPARENT;
            break;
        case WM_GETDLGCODE:
            return dialog_code(type_of(window));
        case BM_GETCHECK:
            return state->check;
        case BM_SETCHECK:
            set_check(window, *state, static_cast<LRESULT>(wparam));
            return 0;
        case BM_GETSTATE:
            return state_bits(window, *state);
        case BM_SETSTATE:
            set_pressed(window, *state, wparam != 0);
            return 0;
        case BM_SETSTYLE:
            set_type(window, wparam, lparam);
            return 0;
        case BCM_SETNOTE:
            state->note = reinterpret_cast<const char16_t*>(lparam);
            repaint(window);
            return TRUE;
        default:
            break;
    }
    if (!is_group && handle_input(window, *state, message, wparam, lparam)) return 0;
    LRESULT result = 0;
    if (handle_control_message(window, *state, message, wparam, lparam, result)) return result;
    return DefWindowProcW(window, message, wparam, lparam);
}

}  // namespace tvutil2
