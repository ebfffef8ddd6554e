#include "tvutil2/platform/draw/frames.h"

#include "tvutil2/platform/draw/context_object.h"
#include "tvutil2/platform/draw/look.h"
#include "tvutil2/platform/draw/theme.h"

#include <algorithm>

using tvutil2::ControlLook;
using tvutil2::Drawing;
using tvutil2::Glyph;
using tvutil2::pixel_of;

namespace {

struct RingColors {
    COLORREF upper_left, lower_right;
};

RingColors ring_colors(bool is_raised, bool is_inner, bool is_flat) {
    const auto& colors = tvutil2::theme();
    if (is_flat) {
        const auto color = is_inner ? GetSysColor(COLOR_BTNFACE) : colors.palette.border;
        return {color, color};
    }
    const auto light = GetSysColor(is_inner ? COLOR_BTNHIGHLIGHT : COLOR_3DLIGHT);
    const auto dark = is_inner ? colors.palette.divider : GetSysColor(COLOR_BTNSHADOW);
    return is_raised ? RingColors{light, dark} : RingColors{dark, light};
}

// One line along the sides that are asked for, taken off the rectangle.
void draw_ring(const Drawing& drawing, RECT& rect, const RingColors& colors, UINT sides) {
    const auto upper_left = pixel_of(colors.upper_left);
    const auto lower_right = pixel_of(colors.lower_right);
    const auto side = [&](UINT flag, RECT line, std::uint32_t pixel) {
        if ((sides & flag) != 0) drawing.fill(line, pixel);
    };
    side(BF_LEFT, {rect.left, rect.top, tvutil2::plus(rect.left, 1), rect.bottom}, upper_left);
    side(BF_TOP, {rect.left, rect.top, rect.right, tvutil2::plus(rect.top, 1)}, upper_left);
    side(BF_RIGHT, {tvutil2::plus(rect.right, -1), rect.top, rect.right, rect.bottom}, lower_right);
    side(BF_BOTTOM, {rect.left, tvutil2::plus(rect.bottom, -1), rect.right, rect.bottom},
         lower_right);
    if ((sides & BF_LEFT) != 0) rect.left = tvutil2::plus(rect.left, 1);
    if ((sides & BF_TOP) != 0) rect.top = tvutil2::plus(rect.top, 1);
    if ((sides & BF_RIGHT) != 0) rect.right = tvutil2::plus(rect.right, -1);
    if ((sides & BF_BOTTOM) != 0) rect.bottom = tvutil2::plus(rect.bottom, -1);
}

ControlLook look_of(UINT state) {
    ControlLook look;
    look.is_hot = (state & DFCS_HOT) != 0;
    look.is_pressed = (state & DFCS_PUSHED) != 0;
    look.is_disabled = (state & DFCS_INACTIVE) != 0;
    look.is_checked = (state & DFCS_CHECKED) != 0;
    return look;
}

UINT dpi_of(HDC context) {
    const Drawing drawing(context);
    return drawing ? drawing.surface().dpi() : 96;
}

COLORREF ink_of(UINT state) {
    return GetSysColor((state & DFCS_INACTIVE) != 0 ? COLOR_GRAYTEXT : COLOR_BTNTEXT);
}

// On the face of a button while the pointer is on it, else on what is there.
bool draw_glyph_button(HDC context, const RECT& rect, UINT state, Glyph glyph, int size) {
    const auto& colors = tvutil2::theme().palette;
    if ((state & (DFCS_HOT | DFCS_PUSHED)) != 0) {
        const auto face = (state & DFCS_PUSHED) != 0 ? colors.pressed_face : colors.hot_row;
        tvutil2::draw_round_area(context, rect, 3, face);
    }
    return tvutil2::draw_glyph(context, rect, glyph, tvutil2::scaled(size, dpi_of(context)),
                               ink_of(state));
}

// Dots along the corner at the lower right.
bool draw_size_grip(HDC context, const RECT& rect) {
    const Drawing drawing(context);
    if (!drawing) return false;
    const auto dpi = drawing.surface().dpi();
    const auto dot = tvutil2::scaled(2, dpi);
    const auto step = tvutil2::scaled(4, dpi);
    const auto at = drawing.to_device(rect);
    const auto pixel = pixel_of(tvutil2::theme().palette.thumb);
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column <= row; ++column) {
            const auto right = tvutil2::plus(at.right, -(dot / 2 + 1) - column * step);
            const auto bottom = tvutil2::plus(at.bottom, -(dot / 2 + 1) - (2 - row) * step);
            drawing.fill({tvutil2::plus(right, -dot), tvutil2::plus(bottom, -dot), right, bottom},
                         pixel);
        }
    }
    return true;
}

bool draw_caption_part(HDC context, const RECT& rect, UINT state) {
    constexpr Glyph kGlyphs[] = {Glyph::close, Glyph::minimize, Glyph::maximize, Glyph::restore,
                                 Glyph::help};
    const auto which = state & 0xFF;
    if (which >= std::size(kGlyphs)) return tvutil2::fail_with(ERROR_INVALID_PARAMETER);
    return draw_glyph_button(context, rect, state, kGlyphs[which], 10);
}

bool draw_menu_part(HDC context, const RECT& rect, UINT state) {
    const auto size = tvutil2::scaled(10, dpi_of(context));
    switch (state & 0xFF) {
        case DFCS_MENUARROW:
            return tvutil2::draw_glyph(context, rect, Glyph::right, size, ink_of(state));
        case DFCS_MENUARROWRIGHT:
            return tvutil2::draw_glyph(context, rect, Glyph::left, size, ink_of(state));
        case DFCS_MENUCHECK:
            return tvutil2::draw_glyph(context, rect, Glyph::check, size, ink_of(state));
        case DFCS_MENUBULLET:
            return tvutil2::draw_glyph(context, rect, Glyph::bullet, size, ink_of(state));
        default:
            return tvutil2::fail_with(ERROR_INVALID_PARAMETER);
    }
}

bool draw_scroll_part(HDC context, const RECT& rect, UINT state) {
    switch (state & 0xFF) {
        case DFCS_SCROLLUP:
            return draw_glyph_button(context, rect, state, Glyph::up, 9);
        case DFCS_SCROLLDOWN:
        case DFCS_SCROLLCOMBOBOX:
            return draw_glyph_button(context, rect, state, Glyph::down, 9);
        case DFCS_SCROLLLEFT:
            return draw_glyph_button(context, rect, state, Glyph::left, 9);
        case DFCS_SCROLLRIGHT:
            return draw_glyph_button(context, rect, state, Glyph::right, 9);
        case DFCS_SCROLLSIZEGRIP:
            return draw_size_grip(context, rect);
        default:
            return tvutil2::fail_with(ERROR_INVALID_PARAMETER);
    }
}

bool draw_button_part(HDC context, const RECT& rect, UINT state) {
    auto look = look_of(state);
    switch (state & 0xFF) {
        case DFCS_BUTTONPUSH:
            return tvutil2::draw_push_button(context, rect, look);
        case DFCS_BUTTONRADIO:
            return tvutil2::draw_radio_button(context, rect, look);
        case DFCS_BUTTON3STATE:
            look.is_mixed = look.is_checked;
            return tvutil2::draw_check_box(context, rect, look);
        case DFCS_BUTTONCHECK:
            return tvutil2::draw_check_box(context, rect, look);
        default:
            return tvutil2::fail_with(ERROR_INVALID_PARAMETER);
    }
}

}  // namespace

BOOL DrawEdge(HDC context, RECT* rect, UINT edge, UINT flags) {
    const Drawing drawing(context);
    if (!drawing || rect == nullptr) return FALSE;
    auto rest = drawing.to_device(*rect);
    const bool is_flat = (flags & BF_FLAT) != 0;
    if ((edge & (BDR_RAISEDOUTER | BDR_SUNKENOUTER)) != 0) {
        draw_ring(drawing, rest, ring_colors((edge & BDR_RAISEDOUTER) != 0, false, is_flat), flags);
    }
    if ((edge & (BDR_RAISEDINNER | BDR_SUNKENINNER)) != 0) {
        draw_ring(drawing, rest, ring_colors((edge & BDR_RAISEDINNER) != 0, true, is_flat), flags);
    }
    if ((flags & BF_MIDDLE) != 0) drawing.fill(rest, pixel_of(GetSysColor(COLOR_BTNFACE)));
    if ((flags & BF_ADJUST) != 0) *rect = drawing.context().from_device(rest);
    return TRUE;
}

BOOL DrawFrameControl(HDC context, RECT* rect, UINT type, UINT state) {
    if (rect == nullptr) return tvutil2::fail_with(ERROR_INVALID_PARAMETER);
    switch (type) {
        case DFC_CAPTION:
            return draw_caption_part(context, *rect, state) ? TRUE : FALSE;
        case DFC_MENU:
            return draw_menu_part(context, *rect, state) ? TRUE : FALSE;
        case DFC_SCROLL:
            return draw_scroll_part(context, *rect, state) ? TRUE : FALSE;
        case DFC_BUTTON:
            return draw_button_part(context, *rect, state) ? TRUE : FALSE;
        default:
            return tvutil2::fail_with(ERROR_INVALID_PARAMETER);
    }
}

BOOL DrawFocusRect(HDC context, const RECT* rect) {
    const Drawing drawing(context);
    if (!drawing || rect == nullptr) return FALSE;
    const auto frame = drawing.to_device(*rect);
    if (tvutil2::is_empty(frame)) return TRUE;
    tvutil2::Region ring(frame);
    ring.subtract(RECT{tvutil2::plus(frame.left, 1), tvutil2::plus(frame.top, 1),
                       tvutil2::plus(frame.right, -1), tvutil2::plus(frame.bottom, -1)});
    ring.intersect(drawing.clip());
    for (const auto& part : ring.rects()) {
        for (auto y = part.top; y < part.bottom; ++y) {
            auto* const row = drawing.surface().row(y);
            for (auto x = part.left; x < part.right; ++x) {
                if (((x ^ y) & 1) == 0) row[x] ^= 0x00FFFFFF;
            }
        }
    }
    return TRUE;
}
