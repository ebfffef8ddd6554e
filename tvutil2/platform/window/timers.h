// Timers that tick as messages.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/window/window_types.h"

/// Called by DispatchMessageW with WM_TIMER, the timer's number and the time of GetTickCount.
using TIMERPROC = void (*)(HWND window, UINT message, UINT_PTR id, DWORD time);

inline constexpr UINT USER_TIMER_MINIMUM = 10;
inline constexpr UINT USER_TIMER_MAXIMUM = 0x7FFFFFFF;

/// Starts a timer of a window of the calling thread, or one of the thread itself for null: its
/// number, which is `id` where there is a window (1 for 0) or where the thread has such a timer. A
/// timer that exists starts anew and loses a tick that is due.
///
/// Ticks come every so many milliseconds, between the two limits above, as WM_TIMER with the number
/// and the procedure: behind all other messages, one however many were missed. 0 with
/// ERROR_INVALID_WINDOW_HANDLE, or with ERROR_WINDOW_OF_OTHER_THREAD.
TVUTIL_API UINT_PTR SetTimer(HWND window, UINT_PTR id, UINT milliseconds, TIMERPROC procedure);
/// Ends a timer and drops a tick that is due. 0 with ERROR_INVALID_PARAMETER when there is none.
TVUTIL_API BOOL KillTimer(HWND window, UINT_PTR id);
