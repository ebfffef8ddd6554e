// Where windows are: their places, client areas and order, in pixels.
//
// A child's place counts from its parent's client area, any other window's from the primary
// monitor's corner. What is no window gives 0 with ERROR_INVALID_WINDOW_HANDLE.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/display/monitors.h"
#include "tvutil2/platform/window/window_types.h"

inline const HWND HWND_TOP = nullptr;
inline const HWND HWND_BOTTOM = reinterpret_cast<HWND>(std::intptr_t{1});
inline const HWND HWND_TOPMOST = reinterpret_cast<HWND>(std::intptr_t{-1});
inline const HWND HWND_NOTOPMOST = reinterpret_cast<HWND>(std::intptr_t{-2});

inline constexpr UINT SWP_NOSIZE = 0x1;
inline constexpr UINT SWP_NOMOVE = 0x2;
inline constexpr UINT SWP_NOZORDER = 0x4;
inline constexpr UINT SWP_NOREDRAW = 0x8;
inline constexpr UINT SWP_NOACTIVATE = 0x10;
inline constexpr UINT SWP_FRAMECHANGED = 0x20;
inline constexpr UINT SWP_SHOWWINDOW = 0x40;
inline constexpr UINT SWP_HIDEWINDOW = 0x80;
inline constexpr UINT SWP_NOCOPYBITS = 0x100;
inline constexpr UINT SWP_NOOWNERZORDER = 0x200;
inline constexpr UINT SWP_NOSENDCHANGING = 0x400;
/// Only in WM_WINDOWPOSCHANGED: the client area has kept its size, its place.
inline constexpr UINT SWP_NOCLIENTSIZE = 0x800;
inline constexpr UINT SWP_NOCLIENTMOVE = 0x1000;

/// Changes place, size, order, visibility, and asks for the client area anew (SWP_FRAMECHANGED).
/// The window hears WM_WINDOWPOSCHANGING, in which it may change what is asked, and, if anything
/// changes, WM_WINDOWPOSCHANGED, which DefWindowProcW turns into WM_MOVE and WM_SIZE. Sizes are
/// limited to 0 to 32767. `after` must be a sibling or one of the above.
TVUTIL_API BOOL SetWindowPos(HWND window, HWND after, int x, int y, int width, int height,
                             UINT flags);
TVUTIL_API BOOL MoveWindow(HWND window, int x, int y, int width, int height, BOOL repaint);

/// On the screen.
TVUTIL_API BOOL GetWindowRect(HWND window, RECT* rect);
/// With its corner at 0, 0.
TVUTIL_API BOOL GetClientRect(HWND window, RECT* rect);
/// From one window's client area to another's; null stands for the screen. How far it is, the
/// horizontal way in the low word.
TVUTIL_API int MapWindowPoints(HWND from, HWND to, POINT* points, UINT count);
TVUTIL_API BOOL ClientToScreen(HWND window, POINT* point);
TVUTIL_API BOOL ScreenToClient(HWND window, POINT* point);
/// A client area becomes the place of a window of these styles.
TVUTIL_API BOOL AdjustWindowRectEx(RECT* rect, DWORD style, BOOL has_menu, DWORD ex_style);
TVUTIL_API BOOL AdjustWindowRectExForDpi(RECT* rect, DWORD style, BOOL has_menu, DWORD ex_style,
                                         UINT dpi);

/// The visible window of this process at a place on the screen, the deepest and topmost one that
/// isn't disabled; null for none.
TVUTIL_API HWND WindowFromPoint(POINT point);
/// The topmost direct child, visible or not, or the parent itself; null outside of it.
TVUTIL_API HWND ChildWindowFromPoint(HWND parent, POINT point);

TVUTIL_API HMONITOR MonitorFromWindow(HWND window, DWORD flags);
/// Dots per inch of the window's monitor, as the window has been told.
TVUTIL_API UINT GetDpiForWindow(HWND window);
