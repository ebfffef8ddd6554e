// What a window holds for somebody who doesn't see it: each control's role, name and state, in one
// walk.
//
// For the window's thread: controls are asked by messages. A control of a class that isn't known
// has the role `custom`. A label names what comes behind it, as its mnemonic does. Of lists and
// trees the items in view are told, of combo boxes a hundred around the one chosen.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/display/accessible.h"

namespace tvutil2 {

/// The window and all that is in it, in the order of the keyboard.
[[nodiscard]] TVUTIL_API Accessible accessible_tree(HWND window);

/// Gives a control another value, and tells its parent: text to an edit that can be typed in, the
/// choice of an item's number to a combo box, a position to a scroll bar. Nothing for any other.
void fill_control(HWND control, const std::u16string& text, int number);

}  // namespace tvutil2
