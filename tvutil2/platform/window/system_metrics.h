// Sizes and settings of the system, in pixels.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/draw/theme.h"

inline constexpr int SM_CXSCREEN = 0;
inline constexpr int SM_CYSCREEN = 1;
inline constexpr int SM_XVIRTUALSCREEN = 76;
inline constexpr int SM_YVIRTUALSCREEN = 77;
inline constexpr int SM_CXVIRTUALSCREEN = 78;
inline constexpr int SM_CYVIRTUALSCREEN = 79;
inline constexpr int SM_CMONITORS = 80;

inline constexpr UINT SPI_GETWORKAREA = 48;

/// A metric of the screen or the look; 0 for one that isn't known.
TVUTIL_API int GetSystemMetrics(int index);
TVUTIL_API int GetSystemMetricsForDpi(int index, UINT dpi);
/// SPI_GETWORKAREA (a RECT of the primary monitor) and SPI_GETNONCLIENTMETRICS. 0 with
/// ERROR_INVALID_PARAMETER for any other, and for a record of a wrong size.
TVUTIL_API BOOL SystemParametersInfoW(UINT action, UINT size, void* data, UINT flags);
/// Only what depends on the scale.
TVUTIL_API BOOL SystemParametersInfoForDpi(UINT action, UINT size, void* data, UINT flags,
                                           UINT dpi);
