// Hooks: functions of a thread that hear of its windows before these hear of anything.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/window/window_types.h"

using HHOOK = struct HHOOK__*;
using HOOKPROC = LRESULT (*)(int code, WPARAM wparam, LPARAM lparam);

inline constexpr int WH_CBT = 5;
/// A window is about to be created: wparam is its handle, lparam points to a CBT_CREATEWNDW. A
/// result other than 0 forbids it.
inline constexpr int HCBT_CREATEWND = 3;

struct CBT_CREATEWNDW {
    CREATESTRUCTW* lpcs;
    HWND hwndInsertAfter;
};

/// Puts a hook in front of the others of the calling thread: WH_CBT, `module` null and `thread` the
/// calling thread's number. Null with ERROR_INVALID_HOOK_FILTER or ERROR_INVALID_PARAMETER for
/// anything else.
TVUTIL_API HHOOK SetWindowsHookExW(int kind, HOOKPROC procedure, HINSTANCE module, DWORD thread);
/// 0 with ERROR_INVALID_HOOK_HANDLE for what is none of this thread.
TVUTIL_API BOOL UnhookWindowsHookEx(HHOOK hook);
/// Hands on to the hook behind the one that runs; 0 behind the last one.
TVUTIL_API LRESULT CallNextHookEx(HHOOK hook, int code, WPARAM wparam, LPARAM lparam);

namespace tvutil2 {

/// False when a hook forbids the window, or has ended it.
bool call_creation_hooks(HWND window, CREATESTRUCTW& given);

}  // namespace tvutil2
