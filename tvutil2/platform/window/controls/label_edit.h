// The edit control over an item of a tree or a list whose name the person changes.
#pragma once

#include "tvutil2/platform/draw/draw_types.h"

#include <string>

namespace tvutil2 {

/// With all of the text selected and the focus. Enter, and the loss of the focus, send the owner
/// `end`, Esc with 1 as its wparam. Null on failure.
HWND open_label_edit(HWND owner, UINT end, const RECT& place, const std::u16string& text,
                     HFONT font);
/// Closes it, and gives the focus back if it has it: its text.
std::u16string close_label_edit(HWND edit);
/// Where it is over a name.
[[nodiscard]] RECT label_edit_place(HWND owner, RECT name);

}  // namespace tvutil2
