// The look of controls: what their procedures paint with, in the colours of the theme and at the
// scale of the context.
//
// Rectangles are the caller's, in its coordinates; what is smaller than they are stands in their
// middle. All functions give false with ERROR_INVALID_HANDLE for no context, ERROR_MOD_NOT_FOUND
// where the drawing module isn't installed.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/draw/theme.h"

namespace tvutil2 {

struct ControlLook {
    bool is_hot = false;  ///< under the pointer
    bool is_pressed = false;
    bool is_disabled = false;
    bool is_checked = false;
    bool is_mixed = false;    ///< neither checked nor not
    bool is_default = false;  ///< of push buttons; of fields: has the focus
};

/// A push button without its text, which is to be written in button_text_color.
TVUTIL_API bool draw_push_button(HDC context, const RECT& rect, const ControlLook& look);
[[nodiscard]] TVUTIL_API COLORREF button_text_color(const ControlLook& look);

/// The side of a check box's box and of a radio button's circle.
[[nodiscard]] TVUTIL_API int check_size(UINT dpi);
TVUTIL_API bool draw_check_box(HDC context, const RECT& rect, const ControlLook& look);
TVUTIL_API bool draw_radio_button(HDC context, const RECT& rect, const ControlLook& look);

/// The frame of an edit, list or combo box, filled with `inside`. With the focus (is_default) its
/// lower edge is thicker and of the accent's colour.
TVUTIL_API bool draw_field(HDC context, const RECT& rect, const ControlLook& look, COLORREF inside);

/// A frame with round corners and nothing inside: group boxes.
TVUTIL_API bool draw_group_frame(HDC context, const RECT& rect);

/// An area with round corners: rows of lists and menus, thumbs of scroll bars. `radius` in pixels
/// at 96 dots an inch.
TVUTIL_API bool draw_round_area(HDC context, const RECT& rect, int radius, COLORREF color);

/// The ring around what has the focus, just inside the rectangle.
TVUTIL_API bool draw_focus_ring(HDC context, const RECT& rect);

enum class Glyph : std::uint8_t {
    up,
    down,
    left,
    right,
    check,
    bullet,
    close,
    minimize,
    maximize,
    restore,
    help,
    command  ///< the arrow of command links
};
/// In a square of `size` pixels in the middle of the rectangle.
TVUTIL_API bool draw_glyph(HDC context, const RECT& rect, Glyph glyph, int size, COLORREF color);

}  // namespace tvutil2
