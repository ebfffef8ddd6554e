// The pointer: where it is, what it looks like, and when it rests or leaves.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/window/window_types.h"

inline constexpr WPARAM MK_LBUTTON = 0x1;
inline constexpr WPARAM MK_RBUTTON = 0x2;
inline constexpr WPARAM MK_SHIFT = 0x4;
inline constexpr WPARAM MK_CONTROL = 0x8;
inline constexpr WPARAM MK_MBUTTON = 0x10;
/// One notch of the wheel.
inline constexpr int WHEEL_DELTA = 120;

[[nodiscard]] constexpr int GET_X_LPARAM(LPARAM lparam) {
    return static_cast<std::int16_t>(LOWORD(static_cast<WPARAM>(lparam)));
}
[[nodiscard]] constexpr int GET_Y_LPARAM(LPARAM lparam) {
    return static_cast<std::int16_t>(HIWORD(static_cast<WPARAM>(lparam)));
}
[[nodiscard]] constexpr int GET_WHEEL_DELTA_WPARAM(WPARAM wparam) {
    return static_cast<std::int16_t>(HIWORD(wparam));
}

inline constexpr DWORD TME_HOVER = 0x1;
inline constexpr DWORD TME_LEAVE = 0x2;
inline constexpr DWORD TME_CANCEL = 0x80000000;
inline constexpr DWORD HOVER_DEFAULT = 0xFFFFFFFF;

struct TRACKMOUSEEVENT {
    DWORD cbSize;
    DWORD dwFlags;
    HWND hwndTrack;
    DWORD dwHoverTime;  ///< milliseconds, or HOVER_DEFAULT
};

/// WM_MOUSELEAVE once when the pointer leaves the window (at once if it isn't there), WM_MOUSEHOVER
/// once when it rests.
TVUTIL_API BOOL TrackMouseEvent(TRACKMOUSEEVENT* track);

/// Where the pointer is, on the screen, as far as this process has heard.
TVUTIL_API BOOL GetCursorPos(POINT* point);
/// Where it was at the message that the thread got last: two signed words, as in its lparam.
TVUTIL_API DWORD GetMessagePos();
/// Milliseconds between the clicks of a double click, at most.
TVUTIL_API UINT GetDoubleClickTime();

inline const char16_t* const IDC_ARROW = MAKEINTRESOURCEW(32512);
inline const char16_t* const IDC_IBEAM = MAKEINTRESOURCEW(32513);
inline const char16_t* const IDC_WAIT = MAKEINTRESOURCEW(32514);
inline const char16_t* const IDC_CROSS = MAKEINTRESOURCEW(32515);
inline const char16_t* const IDC_UPARROW = MAKEINTRESOURCEW(32516);
inline const char16_t* const IDC_SIZENWSE = MAKEINTRESOURCEW(32642);
inline const char16_t* const IDC_SIZENESW = MAKEINTRESOURCEW(32643);
inline const char16_t* const IDC_SIZEWE = MAKEINTRESOURCEW(32644);
inline const char16_t* const IDC_SIZENS = MAKEINTRESOURCEW(32645);
inline const char16_t* const IDC_SIZEALL = MAKEINTRESOURCEW(32646);
inline const char16_t* const IDC_NO = MAKEINTRESOURCEW(32648);
inline const char16_t* const IDC_HAND = MAKEINTRESOURCEW(32649);
inline const char16_t* const IDC_APPSTARTING = MAKEINTRESOURCEW(32650);
inline const char16_t* const IDC_HELP = MAKEINTRESOURCEW(32651);

/// One of the system's cursors (`module` null); they need no release. Null with
/// ERROR_RESOURCE_NAME_NOT_FOUND for any other.
TVUTIL_API HCURSOR LoadCursorW(HINSTANCE module, const char16_t* name);
/// Shows a cursor until the pointer moves on: the one before.
TVUTIL_API HCURSOR SetCursor(HCURSOR cursor);
TVUTIL_API HCURSOR GetCursor();
