// The pointer on a scroll bar. Points are on the screen.
#pragma once

#include "tvutil2/platform/base/types.h"

namespace tvutil2 {

/// The person holds a bar, until the button is let go; the window, or the control's parent, is told
/// what that wants.
void hold_scroll_bar(HWND window, int bar, POINT from);
/// The pointer is above it.
void heat_scroll_bar(HWND window, int bar, POINT point);

}  // namespace tvutil2
