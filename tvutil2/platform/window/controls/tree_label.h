// The edit control over a tree's item whose name the person changes.
#pragma once

#include "tvutil2/platform/draw/draw_types.h"

#include <string>

namespace tvutil2 {

/// With all of the text selected and the focus. Enter, and the loss of the focus, send the tree
/// TVM_ENDEDITLABELNOW, Esc with 1 as its wparam. Null on failure.
HWND open_label_edit(HWND tree, const RECT& place, const std::u16string& text, HFONT font);
/// Where it is over a name.
[[nodiscard]] RECT label_edit_place(HWND tree, RECT name);

}  // namespace tvutil2
