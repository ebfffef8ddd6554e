// Dialogs that are laid out in pixels, where the lengths of their words are known.
#pragma once

#include "tvutil2/platform/window/dialogs/dialogs.h"

namespace tvutil2 {

/// The template that such a dialog begins with: without items or a font. Its procedure sizes it.
struct EmptyTemplate {
    DWORD style, ex_style;
    WORD items, x, y, width, height, menu, window_class, title;
};
[[nodiscard]] constexpr EmptyTemplate empty_template(DWORD style, DWORD ex_style = 0) {
    return {style, ex_style, 0, 0, 0, 0, 0, 0, 0, 0};
}

/// A visible control in the dialog's font; null on failure.
HWND add_control(HWND dialog, const char16_t* class_name, const char16_t* text, DWORD style,
                 const RECT& place, int id, DWORD ex_style = 0);
/// How much room a text takes in the font that is selected; with DT_WORDBREAK in a `width`.
[[nodiscard]] SIZE text_extent(HDC context, const char16_t* text, LONG width, UINT format);

}  // namespace tvutil2
