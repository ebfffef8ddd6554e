// What WM_SYSCOMMAND asks for; the low four bits are the system's own.
#pragma once

#include "tvutil2/platform/base/types.h"

inline constexpr WPARAM SC_SIZE = 0xF000;
inline constexpr WPARAM SC_MOVE = 0xF010;
inline constexpr WPARAM SC_MINIMIZE = 0xF020;
inline constexpr WPARAM SC_MAXIMIZE = 0xF030;
inline constexpr WPARAM SC_CLOSE = 0xF060;
inline constexpr WPARAM SC_MOUSEMENU = 0xF090;
inline constexpr WPARAM SC_KEYMENU = 0xF100;
inline constexpr WPARAM SC_RESTORE = 0xF120;
