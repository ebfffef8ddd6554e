// The parts of a window, as WM_NCHITTEST tells them.
#pragma once

#include "tvutil2/platform/base/types.h"

inline constexpr LRESULT HTTRANSPARENT = -1;
inline constexpr LRESULT HTNOWHERE = 0;
inline constexpr LRESULT HTCLIENT = 1;
inline constexpr LRESULT HTCAPTION = 2;
inline constexpr LRESULT HTSYSMENU = 3;
inline constexpr LRESULT HTMENU = 5;
inline constexpr LRESULT HTHSCROLL = 6;
inline constexpr LRESULT HTVSCROLL = 7;
inline constexpr LRESULT HTMINBUTTON = 8;
inline constexpr LRESULT HTMAXBUTTON = 9;
inline constexpr LRESULT HTLEFT = 10;
inline constexpr LRESULT HTRIGHT = 11;
inline constexpr LRESULT HTTOP = 12;
inline constexpr LRESULT HTTOPLEFT = 13;
inline constexpr LRESULT HTTOPRIGHT = 14;
inline constexpr LRESULT HTBOTTOM = 15;
inline constexpr LRESULT HTBOTTOMLEFT = 16;
inline constexpr LRESULT HTBOTTOMRIGHT = 17;
inline constexpr LRESULT HTBORDER = 18;
inline constexpr LRESULT HTCLOSE = 20;

namespace tvutil2 {

/// Where the frame's button that closes the window is on the screen; empty for none.
[[nodiscard]] RECT close_button_of(HWND window);

}  // namespace tvutil2
