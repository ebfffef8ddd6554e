// Painting on demand: what of a window is out of date, and the contexts to paint it with.
//
// A window is painted when its thread has nothing else to do, or by UpdateWindow: it gets
// WM_PAINT, in which BeginPaint lends a context that lets through only what is out of date.
// Without a display nothing is ever out of date. A window that isn't shown, or is covered, has
// contexts that let nothing through. All functions may be called from any thread.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/window/window_types.h"

#include <memory>

struct PAINTSTRUCT {
    HDC hdc;
    BOOL fErase;  ///< the background hasn't been erased
    RECT rcPaint;
    BOOL fRestore, fIncUpdate;
    BYTE rgbReserved[32];
};

inline constexpr UINT RDW_INVALIDATE = 0x1;
inline constexpr UINT RDW_ERASE = 0x4;
inline constexpr UINT RDW_VALIDATE = 0x8;
inline constexpr UINT RDW_NOERASE = 0x20;
inline constexpr UINT RDW_NOCHILDREN = 0x40;
inline constexpr UINT RDW_ALLCHILDREN = 0x80;
inline constexpr UINT RDW_UPDATENOW = 0x100;
inline constexpr UINT RDW_ERASENOW = 0x200;
inline constexpr UINT RDW_FRAME = 0x400;

/// Makes a part of the client area out of date, all of it for null; with `erase` also its
/// background. Children go along unless the window has WS_CLIPCHILDREN. 0 with
/// ERROR_INVALID_WINDOW_HANDLE.
TVUTIL_API BOOL InvalidateRect(HWND window, const RECT* rect, BOOL erase);
/// Takes a part out of what is out of date.
TVUTIL_API BOOL ValidateRect(HWND window, const RECT* rect);
/// The bounds of what is out of date, and non-zero unless that is nothing. With `erase` the
/// background is erased on the way.
TVUTIL_API BOOL GetUpdateRect(HWND window, RECT* rect, BOOL erase);
/// Sends WM_PAINT now to a window that is out of date, and to those of its children that are.
TVUTIL_API BOOL UpdateWindow(HWND window);
/// All of the above; RDW_FRAME also paints the frame. `region` must be null.
TVUTIL_API BOOL RedrawWindow(HWND window, const RECT* rect, HRGN region, UINT flags);

/// In WM_PAINT. What is out of date is so no longer; sends WM_NCPAINT and WM_ERASEBKGND where they
/// are due. Null when it fails.
TVUTIL_API HDC BeginPaint(HWND window, PAINTSTRUCT* paint);
TVUTIL_API BOOL EndPaint(HWND window, const PAINTSTRUCT* paint);
/// For painting, or measuring, at other times; null stands for the screen, on which nothing is
/// drawn. Given back by ReleaseDC.
TVUTIL_API HDC GetDC(HWND window);
/// The same with the frame: 0, 0 is the window's corner.
TVUTIL_API HDC GetWindowDC(HWND window);
/// 1, or 0 for what wasn't lent.
TVUTIL_API int ReleaseDC(HWND window, HDC context);

namespace tvutil2 {

class Surface;

/// What a window looks like, brought up to date first: a copy of its pixels, frame included. Null
/// when no display shows it. For its own thread.
[[nodiscard]] TVUTIL_API std::shared_ptr<Surface> picture_of(HWND window);

}  // namespace tvutil2
