// Monitors: where they are on the desktop and how fine they are.
//
// Without a display there is one of 1920 by 1080 pixels at the system's scale (system_dpi).
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

#include <vector>

using HMONITOR = struct HMONITOR__*;

struct MONITORINFO {
    DWORD cbSize;
    RECT rcMonitor;
    RECT rcWork;  ///< without the desktop's bars
    DWORD dwFlags;
};

inline constexpr DWORD MONITOR_DEFAULTTONULL = 0;
inline constexpr DWORD MONITOR_DEFAULTTOPRIMARY = 1;
inline constexpr DWORD MONITOR_DEFAULTTONEAREST = 2;
inline constexpr DWORD MONITORINFOF_PRIMARY = 1;
inline constexpr int MDT_EFFECTIVE_DPI = 0;

/// The monitor that most of a rectangle lies on; where none has any of it, what `flags` says.
TVUTIL_API HMONITOR MonitorFromRect(const RECT* rect, DWORD flags);
TVUTIL_API HMONITOR MonitorFromPoint(POINT point, DWORD flags);
/// 0 with ERROR_INVALID_HANDLE for what is no monitor, ERROR_INVALID_PARAMETER for a wrong size.
TVUTIL_API BOOL GetMonitorInfoW(HMONITOR monitor, MONITORINFO* info);
/// E_INVALIDARG for what is no monitor.
TVUTIL_API HRESULT GetDpiForMonitor(HMONITOR monitor, int kind, UINT* x, UINT* y);

namespace tvutil2 {

struct Monitor {
    RECT area, work;
    UINT dpi;
};

/// The first one is the primary.
[[nodiscard]] TVUTIL_API std::vector<Monitor> monitors();
/// For drivers. No monitors stand for the one without a display; scales are held as the system's.
TVUTIL_API void set_monitors(std::vector<Monitor> monitors);
/// Of the monitor that most of the rectangle lies on, or else is next to.
[[nodiscard]] Monitor monitor_at(const RECT& rect);

}  // namespace tvutil2
