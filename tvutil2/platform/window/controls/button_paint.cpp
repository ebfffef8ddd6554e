#include "tvutil2/platform/window/controls/button_paint.h"

#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/draw/device_context.h"
#include "tvutil2/platform/draw/look.h"
#include "tvutil2/platform/draw/objects.h"
#include "tvutil2/platform/draw/rect.h"
#include "tvutil2/platform/draw/shapes.h"
#include "tvutil2/platform/draw/text.h"
#include "tvutil2/platform/window/controls/owner_draw.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/show.h"

#include <algorithm>

namespace tvutil2 {
namespace {

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

}  // namespace

void paint_button(HWND window, const ButtonState& state) {
    const ControlPaint paint(window, state);
    const auto type = style_of(window) & BS_TYPEMASK;
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

}  // namespace tvutil2
