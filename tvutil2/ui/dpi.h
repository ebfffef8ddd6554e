// How fine a device or a monitor is, and how long a length given at 96 dots an inch is on it.
//
// Two families: functions that read a device context at each call, and those that read the DPI of
// the application, which InitAppDPI or ResetAppDPI sets. Only the horizontal DPI decides; lengths
// are scaled as by MulDiv. A null context stands for a null device, and answers with what that
// does.
//
// The application's values are written as one 32-bit store each: who reads during ResetAppDPI may
// see the new one and the old other.
#pragma once

#include "tvutil2/framework/geometry.h"
#include "tvutil2/platform/base/export.h"

class CDC;

/// Both values; with more than 144 across both are 144, and else as read.
TVUTIL_API void GetDPI(CDC* pDC, int* pX, int* pY);
/// Both values without a limit.
TVUTIL_API void GetDPIEx(CDC* pDC, int* pX, int* pY);
/// Rounded up to 96, 120 or 144, and 144 for more.
TVUTIL_API int GetCurrentDPI(CDC* pDC);
/// Rounded down to a step of 24 from 96 to 240.
TVUTIL_API int GetCurrentDPIEx(CDC* pDC);
/// Scaled by no more than 144.
TVUTIL_API CSize GetScaleSize(CDC* pDC, int cx, int cy);
TVUTIL_API CSize GetScaleSizeEx(CDC* pDC, int cx, int cy);
TVUTIL_API int GetPrimaryDPI(CDC* pDC);
/// The best that the platform knows for the window behind a device, which may not be null: the
/// window's DPI, else its monitor's, else the device's.
TVUTIL_API int GetPerMonitorDPI(CDC* pDC);

/// ResetAppDPI with the DPI of the window behind a device.
TVUTIL_API void InitAppDPI(CDC* pDC);
/// Also sets the DPI of images, the step at or above it: 96, 120, 144, 168, 192, 216, 240, 288.
/// Below 96 that is 120.
TVUTIL_API void ResetAppDPI(unsigned nDPI);
/// 96 until it is set.
TVUTIL_API int GetAppDPI();
TVUTIL_API int GetImageDPI();
TVUTIL_API int GetAppScale(int n);
/// From a base other than 96; -1 for a base of 0.
TVUTIL_API int GetAppScale2(int n, int nBase);
TVUTIL_API CSize GetAppScaleSize(int cx, int cy);

/// Percent of the scale of a window's monitor, rounded down; -1 when the platform can't say.
TVUTIL_API int GetDpiForMonitorScale(HWND hWnd);
