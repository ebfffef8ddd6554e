// Labels that look like links: blue (0xC00000; COLOR_HOTLIGHT where the theme isn't the light one),
// underlined under the pointer, which becomes a hand.
//
// What a click does is up to the dialog, which gets STN_CLICKED. All that a link needs is kept in
// properties of its window, and goes with it. For the window's thread.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

/// Makes a link of a "Static" control. 1; a control that is one already stays as it is.
TVUTIL_API BOOL ConvertStaticToHyperlink(HWND hWnd);
/// The same for the child with that id.
TVUTIL_API BOOL ConvertStaticToHyperlink(HWND hParent, UINT nID);
