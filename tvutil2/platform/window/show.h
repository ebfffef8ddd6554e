// Showing, hiding and bringing to the front, as states of a window.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/show_commands.h"
#include "tvutil2/platform/window/window_types.h"

/// Shows, hides, minimises, maximises or restores; non-zero when it was visible before. The window
/// gets WM_SHOWWINDOW when that changes, and WM_SIZE when its form does.
TVUTIL_API BOOL ShowWindow(HWND window, int command);
/// Whether it and all its parents are shown.
TVUTIL_API BOOL IsWindowVisible(HWND window);
TVUTIL_API BOOL IsIconic(HWND window);
TVUTIL_API BOOL IsZoomed(HWND window);
/// Non-zero when it was disabled before. The window gets WM_ENABLE when that changes.
TVUTIL_API BOOL EnableWindow(HWND window, BOOL enable);
TVUTIL_API BOOL IsWindowEnabled(HWND window);

/// Puts a window in front of its siblings.
TVUTIL_API BOOL BringWindowToTop(HWND window);
/// Makes a window, of this process or another one, the one that the person works with; 0 for what
/// is none.
TVUTIL_API BOOL SetForegroundWindow(HWND window);
/// The window of the last SetForegroundWindow in all of the user's processes; null when there is
/// none or it has gone.
TVUTIL_API HWND GetForegroundWindow();
