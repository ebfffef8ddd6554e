#include "tvutil2/platform/window/controls/combo_box.h"

#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/draw/device_context.h"
#include "tvutil2/platform/draw/look.h"
#include "tvutil2/platform/draw/objects.h"
#include "tvutil2/platform/draw/rect.h"
#include "tvutil2/platform/draw/shapes.h"
#include "tvutil2/platform/draw/text.h"
#include "tvutil2/platform/window/controls/combo_state.h"
#include "tvutil2/platform/window/controls/edit.h"
#include "tvutil2/platform/window/controls/list_box.h"
#include "tvutil2/platform/window/dialogs/dialogs.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/mouse.h"
#include "tvutil2/platform/window/paint.h"
#include "tvutil2/platform/window/show.h"
#include "tvutil2/platform/window/window.h"

#include <algorithm>
#include <utility>

namespace tvutil2 {
namespace {

constexpr int kArrowWidth = 24;
constexpr int kSideMargin = 7;  // where a box with an edit has its text
constexpr int kEditId = 1001;

bool has_edit(HWND window) {
    return (style_of(window) & 0x3) != CBS_DROPDOWNLIST;
}

// As high as the other fields of a dialog are, which have 14 units.
int field_height(HWND window, const ComboState& state) {
    return line_height(window, state) * 14 / 8;
}

void arrange(HWND window, const ComboState& state) {
    const auto client = client_of(window);
    if (state.edit == nullptr) return;
    const auto dpi = GetDpiForWindow(window);
    const auto line = scaled(2, dpi);
    MoveWindow(state.edit, client.left + line + scaled(2, dpi), client.top + line,
               std::max<LONG>(client.right - scaled(kArrowWidth + 4, dpi), 0),
               std::max<LONG>(client.bottom - 2 * line, 0), TRUE);
}

void take_field_height(HWND window, const ComboState& state) {
    RECT place{};
    GetWindowRect(window, &place);
    SetWindowPos(window, nullptr, 0, 0, place.right - place.left, field_height(window, state),
                 SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
}

// Keys that the box wants of its edit.
LRESULT combo_edit_procedure(HWND edit, UINT message, WPARAM wparam, LPARAM lparam) {
    auto* const window = GetParent(edit);
    const auto state = state_of<ComboState>(window);
    if (!state || state->edit_procedure == nullptr) {
        return DefWindowProcW(edit, message, wparam, lparam);
    }
    const bool is_key = message == WM_KEYDOWN || message == WM_SYSKEYDOWN;
    if (is_key && press_combo_key(window, *state, wparam, message == WM_SYSKEYDOWN)) return 0;
    if (message == WM_MOUSEWHEEL) return SendMessageW(window, message, wparam, lparam);
    if (message == WM_GETDLGCODE && lparam != 0 && state->is_open) {
        const auto key = reinterpret_cast<const MSG*>(lparam)->wParam;
        if (key == VK_RETURN || key == VK_ESCAPE) return DLGC_WANTMESSAGE;
    }
    return CallWindowProcW(state->edit_procedure, edit, message, wparam, lparam);
}

void create(HWND window, ComboState& state) {
    const auto style = style_of(window);
    const DWORD list_style = WS_POPUP | LBS_HASSTRINGS | WS_VSCROLL |
                             ((style & CBS_SORT) != 0 ? LBS_SORT : 0) |
                             ((style & CBS_DISABLENOSCROLL) != 0 ? LBS_DISABLENOSCROLL : 0);
    state.list = CreateWindowExW(WS_EX_TOPMOST | WS_EX_TOOLWINDOW | WS_EX_NOACTIVATE, u"ComboLBox",
                                 u"", list_style, 0, 0, 1, 1, GetAncestor(window, GA_ROOT), nullptr,
                                 nullptr, nullptr);
    if (const auto list = list_of(state)) list->combo = window;
    if (has_edit(window)) {
        state.edit = CreateWindowExW(
            WS_EX_NOPARENTNOTIFY, u"Edit", u"",
            WS_CHILD | WS_VISIBLE | ES_AUTOHSCROLL | (style & WS_DISABLED), 0, 0, 1, 1, window,
            reinterpret_cast<HMENU>(std::intptr_t{kEditId}), nullptr, nullptr);
        if (state.edit != nullptr) {
            state.edit_procedure = reinterpret_cast<WNDPROC>(SetWindowLongPtrW(
                state.edit, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(combo_edit_procedure)));
        }
    }
    take_field_height(window, state);
    arrange(window, state);
}

void paint(HWND window, const ComboState& state) {
    const ControlPaint paint(window, state);
    const auto dpi = paint.dpi();
    const bool is_disabled = (style_of(window) & WS_DISABLED) != 0;
    ControlLook look;
    look.is_hot = state.is_hot;
    look.is_pressed = state.is_open && state.edit == nullptr;
    look.is_disabled = is_disabled;
    auto area = paint.client();
    // What the corners leave free.
    FillRect(paint, &area, ask_colors(window, paint, WM_CTLCOLORSTATIC));
    RECT arrow = area;
    arrow.left = std::max<LONG>(area.left, area.right - scaled(kArrowWidth, dpi));
    const auto ink = GetSysColor(is_disabled ? COLOR_GRAYTEXT : COLOR_BTNTEXT);
    if (state.edit != nullptr) {
        look.is_default = state.has_focus;
        draw_field(paint, area, look, GetSysColor(is_disabled ? COLOR_3DFACE : COLOR_WINDOW));
        draw_glyph(paint, arrow, Glyph::down, scaled(10, dpi), ink);
        return;
    }
    draw_push_button(paint, area, look);
    draw_glyph(paint, arrow, Glyph::down, scaled(10, dpi), ink);
    const auto list = list_of(state);
    if (list && list->items.has(list->current)) {
        SetTextColor(paint, ink);
        RECT row{area.left + scaled(kSideMargin, dpi), area.top, arrow.left, area.bottom};
        const auto& text = list->items.at(list->current).text;
        DrawTextW(paint, text.c_str(), static_cast<int>(text.size()), &row,
                  DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX | DT_END_ELLIPSIS | reading_of(window));
    }
    if (state.has_focus) draw_focus_ring(paint, area);
}

// Between the box and its edit the focus is the box's.
void change_focus(HWND window, ComboState& state, bool has_focus, HWND other) {
    if (other != nullptr && (other == window || other == state.edit)) return;
    if (state.has_focus == has_focus) return;
    state.has_focus = has_focus;
    repaint(window);
    if (has_focus) {
        notify_parent(window, CBN_SETFOCUS);
        return;
    }
    if (state.is_open) {
        close_combo(window, state, false);
    } else {
        notify_parent(window, CBN_SELENDCANCEL);
    }
    if (IsWindow(window)) notify_parent(window, CBN_KILLFOCUS);
}

void hear_edit(HWND window, ComboState& state, WORD code) {
    switch (code) {
        case EN_SETFOCUS:
            return change_focus(window, state, true, nullptr);
        case EN_KILLFOCUS:
            return change_focus(window, state, false, GetFocus());
        case EN_UPDATE:
            if (!state.is_filling) notify_parent(window, CBN_EDITUPDATE);
            return;
        case EN_CHANGE: {
            if (state.is_filling) return;
            // What is typed isn't what was chosen.
            const auto list = list_of(state);
            if (list) go_to_item(state.list, *list, -1);
            notify_parent(window, CBN_EDITCHANGE);
            return;
        }
        default:
            return;
    }
}

void press(HWND window, ComboState& state) {
    auto* const taker = state.edit != nullptr ? state.edit : window;
    if (GetFocus() != taker) SetFocus(taker);
    if (!IsWindow(window)) return;
    open_combo(window, state);
}

LRESULT dialog_code(const ComboState& state, const MSG* message) {
    LRESULT code = DLGC_WANTARROWS | DLGC_WANTCHARS;
    if (state.is_open && message != nullptr && message->message == WM_KEYDOWN &&
        (message->wParam == VK_RETURN || message->wParam == VK_ESCAPE)) {
        code |= DLGC_WANTMESSAGE;
    }
    return code;
}

void heat(HWND window, ComboState& state) {
    if (std::exchange(state.is_hot, true)) return;
    TRACKMOUSEEVENT track{sizeof track, TME_LEAVE, window, 0};
    TrackMouseEvent(&track);
    repaint(window);
}

void type(HWND window, ComboState& state, char16_t character) {
    const auto list = list_of(state);
    if (!list || state.edit != nullptr) return;
    const auto found = find_typed(*list, character, GetTickCount());
    if (found >= 0) follow_combo_key(window, state, found);
}

void take_enabled(ComboState& state, bool is_enabled) {
    if (state.edit != nullptr) EnableWindow(state.edit, is_enabled ? TRUE : FALSE);
}

// The person's doings. False for any other.
bool handle_input(HWND window, ComboState& state, UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
        case WM_LBUTTONDOWN:
        case WM_LBUTTONDBLCLK:
            press(window, state);
            return true;
        case WM_MOUSEMOVE:
            heat(window, state);
            return true;
        case WM_MOUSELEAVE:
            state.is_hot = false;
            repaint(window);
            return true;
        case WM_MOUSEWHEEL:
            turn_combo_wheel(window, state, GET_WHEEL_DELTA_WPARAM(wparam));
            return true;
        case WM_KEYDOWN:
            return press_combo_key(window, state, wparam, false);
        case WM_SYSKEYDOWN:
            return press_combo_key(window, state, wparam, true);
        case WM_CHAR:
            type(window, state, static_cast<char16_t>(wparam));
            return true;
        case WM_SETFOCUS:
            change_focus(window, state, true, reinterpret_cast<HWND>(wparam));
            if (state.edit != nullptr && IsWindow(window)) {
                SetFocus(state.edit);
                SendMessageW(state.edit, EM_SETSEL, 0, -1);
            }
            return true;
        case WM_KILLFOCUS:
            change_focus(window, state, false, reinterpret_cast<HWND>(wparam));
            return true;
        case WM_COMMAND:
            if (lparam == 0 || reinterpret_cast<HWND>(lparam) != state.edit) return false;
            hear_edit(window, state, HIWORD(wparam));
            return true;
        default:
            return false;
    }
}

}  // namespace

LRESULT combo_box_procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    const auto state = state_of<ComboState>(window);
    if (!state || message == WM_NCCREATE) return DefWindowProcW(window, message, wparam, lparam);
    LRESULT result = 0;
    if (handle_combo_list(window, *state, message, wparam, lparam, result)) return result;
    switch (message) {
        case WM_CREATE:
            create(window, *state);
            return 0;
        case WM_DESTROY:
            state->is_open = false;
            if (state->list != nullptr) DestroyWindow(std::exchange(state->list, nullptr));
            break;
        case WM_PAINT:
            paint(window, *state);
            return 0;
        case WM_ERASEBKGND:
            return TRUE;
        // A style of scroll bars is meant for the list.
        case WM_NCCALCSIZE:
        case WM_NCPAINT:
            return 0;
        case WM_WINDOWPOSCHANGING: {
            auto& wanted = *reinterpret_cast<WINDOWPOS*>(lparam);
            if ((wanted.flags & SWP_NOSIZE) == 0 && state->list != nullptr) {
                wanted.cy = field_height(window, *state);
            }
            return 0;
        }
        case WM_SIZE:
            arrange(window, *state);
            repaint(window);
            return 0;
        case WM_GETDLGCODE:
            return dialog_code(*state, reinterpret_cast<const MSG*>(lparam));
        case WM_ENABLE:
            take_enabled(*state, wparam != 0);
            break;
        case WM_SETFONT:
            for (auto* const each : {state->list, state->edit}) {
                if (each != nullptr) SendMessageW(each, message, wparam, lparam);
            }
            handle_control_message(window, *state, message, wparam, lparam, result);
            take_field_height(window, *state);
            arrange(window, *state);
            return 0;
        default:
            break;
    }
    if (handle_input(window, *state, message, wparam, lparam)) return 0;
    if (handle_control_message(window, *state, message, wparam, lparam, result)) return result;
    return DefWindowProcW(window, message, wparam, lparam);
}

}  // namespace tvutil2
