#include "tvutil2/platform/window/controls/button.h"

#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/draw/device_context.h"
#include "tvutil2/platform/draw/look.h"
#include "tvutil2/platform/draw/objects.h"
#include "tvutil2/platform/draw/rect.h"
#include "tvutil2/platform/draw/shapes.h"
#include "tvutil2/platform/draw/text.h"
#include "tvutil2/platform/window/controls/control.h"
#include "tvutil2/platform/window/controls/owner_draw.h"
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

struct ButtonState : ControlState {
    LRESULT check = BST_UNCHECKED;
    bool is_pressed = false;  ///< looks pressed
    bool is_held = false;     ///< by the pointer or the space key
    bool is_hot = false;
    std::u16string note;
};

DWORD type_of(HWND window) {
    return style_of(window) & BS_TYPEMASK;
}

bool is_push(DWORD type) {
    return type <= BS_DEFPUSHBUTTON || type == BS_OWNERDRAW || type >= BS_COMMANDLINK;
}
bool is_default(DWORD type) {
    return type == BS_DEFPUSHBUTTON || type == BS_DEFCOMMANDLINK;
}
bool is_radio(DWORD type) {
    return type == BS_RADIOBUTTON || type == BS_AUTORADIOBUTTON;
}
bool is_link(DWORD type) {
    return type >= BS_COMMANDLINK;
}

LRESULT dialog_code(DWORD type) {
    if (type == BS_GROUPBOX) return DLGC_STATIC;
    if (is_radio(type)) return DLGC_BUTTON | DLGC_RADIOBUTTON;
    if (is_default(type)) return DLGC_BUTTON | DLGC_DEFPUSHBUTTON;
    return DLGC_BUTTON | (is_push(type) ? DLGC_UNDEFPUSHBUTTON : 0);
}

ControlLook look_of(HWND window, const ButtonState& state) {
    const auto style = style_of(window);
    ControlLook look;
    look.is_hot = state.is_hot;
    look.is_pressed = state.is_pressed;
    look.is_disabled = (style & WS_DISABLED) != 0;
    look.is_checked = state.check == BST_CHECKED;
    look.is_mixed = state.check == BST_INDETERMINATE;
    look.is_default = is_default(style & BS_TYPEMASK);
    return look;
}

void draw(HDC context, const std::u16string& text, RECT area, UINT format) {
    DrawTextW(context, text.c_str(), static_cast<int>(text.size()), &area, format);
}

// The height that text takes in the area's width.
int height_of(HDC context, const std::u16string& text, RECT area, UINT format) {
    return DrawTextW(context, text.c_str(), static_cast<int>(text.size()), &area,
                     format | DT_CALCRECT);
}

void paint_push(HWND window, const ControlPaint& paint, const ButtonState& state) {
    const auto look = look_of(window, state);
    draw_push_button(paint, paint.client(), look);
    SetTextColor(paint, button_text_color(look));
    auto area = paint.client();
    InflateRect(&area, -scaled(3, paint.dpi()), -scaled(1, paint.dpi()));
    const auto text = text_of(window);
    const auto style = style_of(window);
    if ((style & BS_MULTILINE) != 0) {
        const UINT format = DT_CENTER | DT_WORDBREAK | reading_of(window);
        area.top += (area.bottom - area.top - height_of(paint, text, area, format)) / 2;
        draw(paint, text, area, format);
    } else {
        const auto sides = style & (BS_LEFT | BS_RIGHT);
        const UINT side = sides == BS_LEFT ? DT_LEFT : sides == BS_RIGHT ? DT_RIGHT : DT_CENTER;
        draw(paint, text, area, side | DT_VCENTER | DT_SINGLELINE | reading_of(window));
    }
    if (GetFocus() == window) draw_focus_ring(paint, paint.client());
}

// A font like the control's, larger by a quarter.
HFONT larger_font(HDC context) {
    LOGFONTW description{};
    GetObjectW(GetCurrentObject(context, OBJ_FONT), sizeof description, &description);
    description.lfHeight = MulDiv(description.lfHeight, 5, 4);
    return CreateFontIndirectW(&description);
}

void paint_link(HWND window, const ControlPaint& paint, const ButtonState& state) {
    auto look = look_of(window, state);
    const auto dpi = paint.dpi();
    FillRect(paint, &paint.client(), ask_colors(window, paint, WM_CTLCOLORBTN));
    // The frame alone marks the default one: as an area of its size the accent would shout.
    const bool has_frame = look.is_hot || look.is_pressed || look.is_default;
    look.is_default = false;
    if (has_frame) draw_push_button(paint, paint.client(), look);
    const auto accent = look.is_disabled ? GetSysColor(COLOR_GRAYTEXT) : theme().palette.accent;
    auto area = paint.client();
    area.left += scaled(36, dpi);
    area.right -= scaled(8, dpi);
    auto* const font = larger_font(paint);
    auto* const before = SelectObject(paint, font);
    const auto text = text_of(window);
    const UINT format = DT_WORDBREAK | reading_of(window);
    const auto title = height_of(paint, text, area, format);
    TEXTMETRICW metrics{};
    GetTextMetricsW(paint, &metrics);
    SelectObject(paint, before);
    const auto rest =
        state.note.empty() ? 0 : height_of(paint, state.note, area, format | DT_NOPREFIX);
    area.top += std::max<LONG>((area.bottom - area.top - title - rest) / 2, 0);
    const RECT beside_first_line{paint.client().left, area.top, area.left,
                                 area.top + metrics.tmHeight};
    draw_glyph(paint, beside_first_line, Glyph::command, scaled(16, dpi), accent);
    SetTextColor(paint, GetSysColor(look.is_disabled ? COLOR_GRAYTEXT : COLOR_BTNTEXT));
    SelectObject(paint, font);
    draw(paint, text, area, format);
    SelectObject(paint, before);
    DeleteObject(font);
    area.top += title;
    draw(paint, state.note, area, format | DT_NOPREFIX);
    if (GetFocus() == window) draw_focus_ring(paint, paint.client());
}

void paint_check(HWND window, const ControlPaint& paint, const ButtonState& state, DWORD type) {
    const auto look = look_of(window, state);
    FillRect(paint, &paint.client(), ask_colors(window, paint, WM_CTLCOLORSTATIC));
    if (look.is_disabled) SetTextColor(paint, GetSysColor(COLOR_GRAYTEXT));
    const auto size = check_size(paint.dpi());
    auto area = paint.client();
    const auto text = text_of(window);
    auto box = area;
    box.right = box.left + size;
    area.left += size + scaled(6, paint.dpi());
    const bool is_multiline = (style_of(window) & BS_MULTILINE) != 0;
    const UINT format = (is_multiline ? DT_WORDBREAK : DT_SINGLELINE) | reading_of(window);
    const auto height = height_of(paint, text, area, format);
    area.top += std::max<LONG>((area.bottom - area.top - height) / 2, 0);
    // The box stands beside the first line.
    if (is_multiline) {
        TEXTMETRICW metrics{};
        GetTextMetricsW(paint, &metrics);
        box.top = area.top;
        box.bottom = box.top + std::max<LONG>(metrics.tmHeight, size);
    }
    if (is_radio(type)) {
        draw_radio_button(paint, box, look);
    } else {
        draw_check_box(paint, box, look);
    }
    draw(paint, text, area, format);
    if (GetFocus() != window || text.empty()) return;
    RECT ring = area;
    DrawTextW(paint, text.c_str(), static_cast<int>(text.size()), &ring, format | DT_CALCRECT);
    InflateRect(&ring, scaled(4, paint.dpi()), scaled(1, paint.dpi()));
    RECT inside{};
    if (IntersectRect(&inside, &ring, &paint.client()) != 0) draw_focus_ring(paint, inside);
}

void paint_group(HWND window, const ControlPaint& paint) {
    auto* const background = ask_colors(window, paint, WM_CTLCOLORSTATIC);
    const auto text = text_of(window);
    SIZE size{};
    TEXTMETRICW metrics{};
    GetTextMetricsW(paint, &metrics);
    auto frame = paint.client();
    frame.top += metrics.tmHeight / 2;
    draw_group_frame(paint, frame);
    if (text.empty()) return;
    RECT area{scaled(9, paint.dpi()), 0, paint.client().right - scaled(9, paint.dpi()),
              metrics.tmHeight};
    const UINT format = DT_SINGLELINE | reading_of(window);
    DrawTextW(paint, text.c_str(), static_cast<int>(text.size()), &area, format | DT_CALCRECT);
    size.cx = area.right - area.left;
    // The text interrupts the frame.
    RECT gap{area.left - scaled(3, paint.dpi()), 0, area.left + size.cx + scaled(3, paint.dpi()),
             metrics.tmHeight};
    FillRect(paint, &gap, background);
    if ((style_of(window) & WS_DISABLED) != 0) SetTextColor(paint, GetSysColor(COLOR_GRAYTEXT));
    draw(paint, text, area, format);
}

void paint_owner_drawn(HWND window, const ControlPaint& paint, const ButtonState& state) {
    const UINT item = (state.is_pressed ? ODS_SELECTED : 0) |
                      (IsWindowEnabled(window) ? 0 : ODS_DISABLED) |
                      (GetFocus() == window ? ODS_FOCUS : 0) | (state.is_hot ? ODS_HOTLIGHT : 0);
    ask_colors(window, paint, WM_CTLCOLORBTN);
    ask_owner_to_draw({ODT_BUTTON, window, paint, paint.client(), item});
}

void paint(HWND window, const ButtonState& state) {
    const ControlPaint paint(window, state);
    const auto type = type_of(window);
    if (type == BS_OWNERDRAW) {
        paint_owner_drawn(window, paint, state);
    } else if (type == BS_GROUPBOX) {
        paint_group(window, paint);
    } else if (is_link(type)) {
        paint_link(window, paint, state);
    } else if (is_push(type)) {
        FillRect(paint, &paint.client(), ask_colors(window, paint, WM_CTLCOLORBTN));
        paint_push(window, paint, state);
    } else {
        paint_check(window, paint, state, type);
    }
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
            paint(window, *state);
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
