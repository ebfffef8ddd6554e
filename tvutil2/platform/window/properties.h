// Properties: values that a window carries under names.
//
// Names count without regard to case; a number (MAKEINTRESOURCEW) is a name of its own. A value is
// the caller's and never closed here. Properties last until WM_NCDESTROY has returned.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

/// 0 with ERROR_INVALID_WINDOW_HANDLE, or with ERROR_INVALID_PARAMETER for an empty name or one of
/// more than 255 units.
TVUTIL_API BOOL SetPropW(HWND window, const char16_t* name, HANDLE value);
/// Null when there is none.
TVUTIL_API HANDLE GetPropW(HWND window, const char16_t* name);
/// What it was; null when there was none.
TVUTIL_API HANDLE RemovePropW(HWND window, const char16_t* name);
