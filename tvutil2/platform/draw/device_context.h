// Device contexts: made, lent, and their state.
//
// A context is made for memory by CreateCompatibleDC, or lent for a window's surface. Coordinates
// are pixels. One thread at a time uses a context; different contexts may be used at once, also on
// the same pixels. Functions that are given no such context fail with ERROR_INVALID_HANDLE.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/draw/draw_types.h"
#include "tvutil2/platform/draw/rect.h"

inline constexpr int BLACKONWHITE = 1;
inline constexpr int WHITEONBLACK = 2;
inline constexpr int COLORONCOLOR = 3;
inline constexpr int HALFTONE = 4;

inline constexpr UINT TA_LEFT = 0;
inline constexpr UINT TA_UPDATECP = 1;
inline constexpr UINT TA_RIGHT = 2;
inline constexpr UINT TA_CENTER = 6;
inline constexpr UINT TA_TOP = 0;
inline constexpr UINT TA_BOTTOM = 8;
inline constexpr UINT TA_BASELINE = 24;
inline constexpr UINT TA_RTLREADING = 256;
/// What functions give for a state that they can't tell.
inline constexpr UINT GDI_ERROR = 0xFFFFFFFF;

inline constexpr int HORZRES = 8;
inline constexpr int VERTRES = 10;
inline constexpr int BITSPIXEL = 12;
inline constexpr int PLANES = 14;
inline constexpr int LOGPIXELSX = 88;
inline constexpr int LOGPIXELSY = 90;

/// A context whose pixels are those of the bitmap that is selected into it, one pixel at first. It
/// has the scale of `like`, or the system's with null.
TVUTIL_API HDC CreateCompatibleDC(HDC like);
/// Ends a memory context. The bitmap in it is free then.
TVUTIL_API BOOL DeleteDC(HDC context);

/// The window whose context it is; null for a memory context.
TVUTIL_API HWND WindowFromDC(HDC context);

/// 0 for what isn't asked here, and with a null context.
TVUTIL_API int GetDeviceCaps(HDC context, int what);

/// Selects a brush, pen, font or bitmap and gives the one that it takes the place of. Null with
/// ERROR_INVALID_HANDLE for no object, ERROR_BUSY for a bitmap that is in another context,
/// ERROR_INVALID_PARAMETER for a bitmap and a window's context. A region becomes the clip (as by
/// SelectClipRgn), with its complexity for a result.
TVUTIL_API HGDIOBJ SelectObject(HDC context, HGDIOBJ object);
inline constexpr UINT OBJ_PEN = 1;
inline constexpr UINT OBJ_BRUSH = 2;
inline constexpr UINT OBJ_FONT = 6;
inline constexpr UINT OBJ_BITMAP = 7;
/// The object selected in that place.
TVUTIL_API HGDIOBJ GetCurrentObject(HDC context, UINT type);

/// Puts the state on a stack: its number there, from 1; 0 on failure.
TVUTIL_API int SaveDC(HDC context);
/// Brings a state back, and drops those above it: its number, or -1 for the last one. 0 when there
/// is none.
TVUTIL_API BOOL RestoreDC(HDC context, int number);

// Each gives what was there before, and CLR_INVALID or 0 on failure.
TVUTIL_API COLORREF SetTextColor(HDC context, COLORREF color);
TVUTIL_API COLORREF GetTextColor(HDC context);
TVUTIL_API COLORREF SetBkColor(HDC context, COLORREF color);
TVUTIL_API COLORREF GetBkColor(HDC context);
TVUTIL_API int SetBkMode(HDC context, int mode);
TVUTIL_API int GetBkMode(HDC context);
TVUTIL_API UINT SetTextAlign(HDC context, UINT align);
TVUTIL_API UINT GetTextAlign(HDC context);
TVUTIL_API int SetStretchBltMode(HDC context, int mode);

/// Where 0, 0 is, from where it is in a new context. The old place goes to `old` if it isn't null.
TVUTIL_API BOOL SetViewportOrgEx(HDC context, int x, int y, POINT* old);
TVUTIL_API BOOL OffsetViewportOrgEx(HDC context, int x, int y, POINT* old);
TVUTIL_API BOOL GetViewportOrgEx(HDC context, POINT* origin);

// The clip: where drawing is let through, as far as the context reaches. Results as CombineRgn.
// A region counts from where 0, 0 is in a new context, rectangles from where it is now.
TVUTIL_API int SelectClipRgn(HDC context, HRGN region);
/// `mode` is one of RGN_AND to RGN_COPY.
TVUTIL_API int ExtSelectClipRgn(HDC context, HRGN region, int mode);
TVUTIL_API int IntersectClipRect(HDC context, int left, int top, int right, int bottom);
TVUTIL_API int ExcludeClipRect(HDC context, int left, int top, int right, int bottom);
TVUTIL_API int GetClipBox(HDC context, RECT* box);
/// Whether any of the rectangle is let through.
TVUTIL_API BOOL RectVisible(HDC context, const RECT* rect);
