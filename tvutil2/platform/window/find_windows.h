// Looking for windows, of this process and of the user's others.
//
// Of other processes one finds the top-level windows that have a title. Below a profile
// (TVUTIL_PROFILE) those are the processes of the same profile.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/window/window_types.h"

/// Called for each window; 0 ends the walk.
using WNDENUMPROC = BOOL (*)(HWND window, LPARAM parameter);

/// The first top-level window of a class (a name without regard to case, or a number) with a title
/// (exactly that text); null for either takes any. Null when there is none. Never waits for another
/// process.
TVUTIL_API HWND FindWindowW(const char16_t* class_name, const char16_t* title);
/// The first one behind `after` (null for the first of all) among the children of `parent`: null
/// for the top-level windows, HWND_MESSAGE for those that only take messages.
TVUTIL_API HWND FindWindowExW(HWND parent, HWND after, const char16_t* class_name,
                              const char16_t* title);

/// Every top-level window; non-zero when the walk came to its end.
TVUTIL_API BOOL EnumWindows(WNDENUMPROC callback, LPARAM parameter);
/// Every top-level window of a thread of this process.
TVUTIL_API BOOL EnumThreadWindows(DWORD thread, WNDENUMPROC callback, LPARAM parameter);
/// Every child, its children behind it.
TVUTIL_API BOOL EnumChildWindows(HWND parent, WNDENUMPROC callback, LPARAM parameter);
