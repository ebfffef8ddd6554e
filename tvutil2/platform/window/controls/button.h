// The class "Button": push buttons, command links, check boxes, radio buttons and group boxes.
#pragma once

#include "tvutil2/platform/base/types.h"
#include "tvutil2/platform/window/window_types.h"

inline constexpr DWORD BS_PUSHBUTTON = 0x0;
inline constexpr DWORD BS_DEFPUSHBUTTON = 0x1;
inline constexpr DWORD BS_CHECKBOX = 0x2;
inline constexpr DWORD BS_AUTOCHECKBOX = 0x3;
inline constexpr DWORD BS_RADIOBUTTON = 0x4;
inline constexpr DWORD BS_3STATE = 0x5;
inline constexpr DWORD BS_AUTO3STATE = 0x6;
inline constexpr DWORD BS_GROUPBOX = 0x7;
inline constexpr DWORD BS_AUTORADIOBUTTON = 0x9;
inline constexpr DWORD BS_OWNERDRAW = 0xB;
inline constexpr DWORD BS_COMMANDLINK = 0xE;
inline constexpr DWORD BS_DEFCOMMANDLINK = 0xF;
inline constexpr DWORD BS_TYPEMASK = 0xF;
inline constexpr DWORD BS_LEFT = 0x100;
inline constexpr DWORD BS_RIGHT = 0x200;
inline constexpr DWORD BS_MULTILINE = 0x2000;
inline constexpr DWORD BS_NOTIFY = 0x4000;

// In WM_COMMAND; those of the focus and the double click with BS_NOTIFY.
inline constexpr WORD BN_CLICKED = 0;
inline constexpr WORD BN_DBLCLK = 5;
inline constexpr WORD BN_SETFOCUS = 6;
inline constexpr WORD BN_KILLFOCUS = 7;

inline constexpr UINT BM_GETCHECK = 0xF0;
inline constexpr UINT BM_SETCHECK = 0xF1;
inline constexpr UINT BM_GETSTATE = 0xF2;
inline constexpr UINT BM_SETSTATE = 0xF3;
inline constexpr UINT BM_SETSTYLE = 0xF4;
inline constexpr UINT BM_CLICK = 0xF5;
/// The second line of a command link.
inline constexpr UINT BCM_SETNOTE = 0x1609;

inline constexpr LRESULT BST_UNCHECKED = 0;
inline constexpr LRESULT BST_CHECKED = 1;
inline constexpr LRESULT BST_INDETERMINATE = 2;
// In BM_GETSTATE, beside the check.
inline constexpr LRESULT BST_PUSHED = 0x4;
inline constexpr LRESULT BST_FOCUS = 0x8;
inline constexpr LRESULT BST_HOT = 0x200;
