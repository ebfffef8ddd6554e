// What the sources of this folder tell a window about its place.
#pragma once

#include "tvutil2/platform/base/types.h"

namespace tvutil2 {

/// WM_SIZE and WM_MOVE, to a window that hasn't had them yet, or `anew`.
void tell_size(HWND window, bool anew);

}  // namespace tvutil2
