// Who gets the keys and the pointer: focus, activation and capture.
//
// Each thread has its own; of all threads' active windows the one in front gets the keys. The
// functions act on the calling thread and its windows.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/window/window_types.h"

inline constexpr WORD WA_INACTIVE = 0;
inline constexpr WORD WA_ACTIVE = 1;
inline constexpr WORD WA_CLICKACTIVE = 2;
inline constexpr LRESULT MA_ACTIVATE = 1;
inline constexpr LRESULT MA_ACTIVATEANDEAT = 2;
inline constexpr LRESULT MA_NOACTIVATE = 3;
inline constexpr LRESULT MA_NOACTIVATEANDEAT = 4;

/// Gives the focus to a window, or to none; its top-level window becomes the active one. What had
/// the focus before. Null with ERROR_INVALID_WINDOW_HANDLE, with ERROR_ACCESS_DENIED for another
/// thread's, and for one that is disabled, or in one that is or that is minimised.
TVUTIL_API HWND SetFocus(HWND window);
TVUTIL_API HWND GetFocus();
/// Makes a top-level window the active one: the one that was before, or null when it fails.
TVUTIL_API HWND SetActiveWindow(HWND window);
TVUTIL_API HWND GetActiveWindow();

/// The pointer's doings go to that window, wherever the pointer is: what had them before, which
/// gets WM_CAPTURECHANGED.
TVUTIL_API HWND SetCapture(HWND window);
TVUTIL_API BOOL ReleaseCapture();
TVUTIL_API HWND GetCapture();
