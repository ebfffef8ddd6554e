// Scroll bars: those in the frames of windows with WS_VSCROLL and WS_HSCROLL, and the class
// "ScrollBar".
//
// A window is told by WM_VSCROLL and WM_HSCROLL what the person wants, and sets the position
// itself. A bar in a frame that isn't needed goes away, and comes back when it is. All functions
// may be called from any thread; what is no window gives 0 with ERROR_INVALID_WINDOW_HANDLE.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

inline constexpr int SB_HORZ = 0;
inline constexpr int SB_VERT = 1;
/// The window is itself one.
inline constexpr int SB_CTL = 2;
inline constexpr int SB_BOTH = 3;

// In the low word of WM_HSCROLL's and WM_VSCROLL's wparam; the position is in the high one.
inline constexpr WORD SB_LINEUP = 0;
inline constexpr WORD SB_LINELEFT = 0;
inline constexpr WORD SB_LINEDOWN = 1;
inline constexpr WORD SB_LINERIGHT = 1;
inline constexpr WORD SB_PAGEUP = 2;
inline constexpr WORD SB_PAGELEFT = 2;
inline constexpr WORD SB_PAGEDOWN = 3;
inline constexpr WORD SB_PAGERIGHT = 3;
inline constexpr WORD SB_THUMBPOSITION = 4;
inline constexpr WORD SB_THUMBTRACK = 5;
inline constexpr WORD SB_TOP = 6;
inline constexpr WORD SB_LEFT = 6;
inline constexpr WORD SB_BOTTOM = 7;
inline constexpr WORD SB_RIGHT = 7;
inline constexpr WORD SB_ENDSCROLL = 8;

inline constexpr DWORD SBS_HORZ = 0;
inline constexpr DWORD SBS_VERT = 1;

inline constexpr UINT SBM_SETPOS = 0xE0;
inline constexpr UINT SBM_GETPOS = 0xE1;
inline constexpr UINT SBM_SETRANGE = 0xE2;
inline constexpr UINT SBM_GETRANGE = 0xE3;
inline constexpr UINT SBM_SETSCROLLINFO = 0xE9;
inline constexpr UINT SBM_GETSCROLLINFO = 0xEA;

inline constexpr UINT SIF_RANGE = 0x1;
inline constexpr UINT SIF_PAGE = 0x2;
inline constexpr UINT SIF_POS = 0x4;
/// A bar that isn't needed is disabled instead of hidden.
inline constexpr UINT SIF_DISABLENOSCROLL = 0x8;
inline constexpr UINT SIF_TRACKPOS = 0x10;
inline constexpr UINT SIF_ALL = SIF_RANGE | SIF_PAGE | SIF_POS | SIF_TRACKPOS;

struct SCROLLINFO {
    UINT cbSize;
    UINT fMask;
    int nMin, nMax;
    UINT nPage;
    int nPos;
    int nTrackPos;  ///< where the person holds the thumb
};

/// The position that the bar has then.
TVUTIL_API int SetScrollInfo(HWND window, int bar, const SCROLLINFO* info, BOOL redraw);
/// 0 with ERROR_INVALID_PARAMETER for a wrong size.
TVUTIL_API BOOL GetScrollInfo(HWND window, int bar, SCROLLINFO* info);
/// The position before.
TVUTIL_API int SetScrollPos(HWND window, int bar, int position, BOOL redraw);
TVUTIL_API int GetScrollPos(HWND window, int bar);
TVUTIL_API BOOL SetScrollRange(HWND window, int bar, int least, int most, BOOL redraw);
TVUTIL_API BOOL ShowScrollBar(HWND window, int bar, BOOL show);

namespace tvutil2 {

/// The frame's scroll bars, in the window's own context.
void paint_scroll_bars(HWND window, HDC context);
/// The messages of scroll bars that DefWindowProcW answers. False for any other.
bool handle_scroll_message(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
/// No scroll bar of the frame is under the pointer any more.
void cool_scroll_bars(HWND window);

}  // namespace tvutil2
