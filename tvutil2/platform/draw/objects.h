// Brushes, pens, fonts, bitmaps and regions.
//
// Each belongs to who made it, until DeleteObject. One that is deleted while a context has it
// selected goes on drawing there; only a bitmap can't be deleted then. Functions that make one give
// null with the last error (ERROR_TOO_MANY_OPEN_FILES when the handle table is full). All are safe
// from any thread.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/draw/draw_types.h"
#include "tvutil2/platform/draw/rect.h"

TVUTIL_API HBRUSH CreateSolidBrush(COLORREF color);
TVUTIL_API HBRUSH CreateBrushIndirect(const LOGBRUSH* brush);

/// `width` in pixels; 0 is a line of one pixel.
TVUTIL_API HPEN CreatePen(int style, int width, COLORREF color);

/// A font is looked for when it is first used; one that the host lacks is replaced by a like one.
TVUTIL_API HFONT CreateFontIndirectW(const LOGFONTW* font);

/// A bitmap for memory contexts: opaque black, of 32 bits a pixel whatever the context. Pixels;
/// with a width or height of 0 it has one pixel. Null with ERROR_INVALID_PARAMETER for less,
/// ERROR_NOT_ENOUGH_MEMORY for too much (Surface), ERROR_INVALID_HANDLE without a context.
TVUTIL_API HBITMAP CreateCompatibleBitmap(HDC context, int width, int height);

/// 0 with ERROR_INVALID_HANDLE for no such object, and for a bitmap that is selected somewhere.
TVUTIL_API BOOL DeleteObject(HGDIOBJ object);

/// Copies the record (LOGFONTW, BITMAP, LOGBRUSH, LOGPEN) that tells of an object: bytes copied, up
/// to `size`; with a null buffer those that there are. 0 with ERROR_INVALID_HANDLE.
TVUTIL_API int GetObjectW(HGDIOBJ object, int size, void* buffer);

inline constexpr int WHITE_BRUSH = 0;
inline constexpr int LTGRAY_BRUSH = 1;
inline constexpr int GRAY_BRUSH = 2;
inline constexpr int DKGRAY_BRUSH = 3;
inline constexpr int BLACK_BRUSH = 4;
inline constexpr int NULL_BRUSH = 5;
inline constexpr int HOLLOW_BRUSH = NULL_BRUSH;
inline constexpr int WHITE_PEN = 6;
inline constexpr int BLACK_PEN = 7;
inline constexpr int NULL_PEN = 8;
inline constexpr int SYSTEM_FONT = 13;
inline constexpr int DEFAULT_GUI_FONT = 17;

/// The system's own objects; null for a number that isn't one. The fonts are the theme's at the
/// scale that the system had when one was first asked for.
TVUTIL_API HGDIOBJ GetStockObject(int which);

inline constexpr int NULLREGION = 1;
inline constexpr int SIMPLEREGION = 2;
inline constexpr int COMPLEXREGION = 3;
/// The result of a failure.
inline constexpr int ERROR_REGION = 0;
inline constexpr int RGN_AND = 1;
inline constexpr int RGN_OR = 2;
inline constexpr int RGN_XOR = 3;
inline constexpr int RGN_DIFF = 4;
inline constexpr int RGN_COPY = 5;

TVUTIL_API HRGN CreateRectRgn(int left, int top, int right, int bottom);
TVUTIL_API HRGN CreateRectRgnIndirect(const RECT* rect);
TVUTIL_API BOOL SetRectRgn(HRGN region, int left, int top, int right, int bottom);
/// Puts the combination of two regions into `target`, which may be one of them: what is there then
/// (NULLREGION...), or ERROR_REGION with ERROR_INVALID_HANDLE or ERROR_INVALID_PARAMETER.
TVUTIL_API int CombineRgn(HRGN target, HRGN first, HRGN second, int mode);
TVUTIL_API int OffsetRgn(HRGN region, int x, int y);
TVUTIL_API int GetRgnBox(HRGN region, RECT* box);
TVUTIL_API BOOL PtInRegion(HRGN region, int x, int y);
TVUTIL_API BOOL RectInRegion(HRGN region, const RECT* rect);
TVUTIL_API BOOL EqualRgn(HRGN first, HRGN second);
