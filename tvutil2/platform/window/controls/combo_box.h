// The class "ComboBox": a field with a list that opens below it. CBS_DROPDOWNLIST takes what is in
// the list, CBS_DROPDOWN also what is typed. The height that such a box is given is that of the
// field and the open list together; the window is as high as the field. CBS_SIMPLE is taken as
// CBS_DROPDOWN.
#pragma once

#include "tvutil2/platform/base/types.h"

inline constexpr DWORD CBS_SIMPLE = 0x1;
inline constexpr DWORD CBS_DROPDOWN = 0x2;
inline constexpr DWORD CBS_DROPDOWNLIST = 0x3;
inline constexpr DWORD CBS_AUTOHSCROLL = 0x40;
inline constexpr DWORD CBS_SORT = 0x100;
inline constexpr DWORD CBS_HASSTRINGS = 0x200;
inline constexpr DWORD CBS_NOINTEGRALHEIGHT = 0x400;
inline constexpr DWORD CBS_DISABLENOSCROLL = 0x800;

// In WM_COMMAND. Keys on a closed box: SELENDOK, SELCHANGE. With the list open: SELCHANGE for each
// item that keys go to or the pointer chooses, then SELENDOK, CLOSEUP; SELENDCANCEL, CLOSEUP with
// Esc. A box that loses the focus: SELENDCANCEL before KILLFOCUS.
inline constexpr WORD CBN_SELCHANGE = 1;
inline constexpr WORD CBN_DBLCLK = 2;
inline constexpr WORD CBN_SETFOCUS = 3;
inline constexpr WORD CBN_KILLFOCUS = 4;
inline constexpr WORD CBN_EDITCHANGE = 5;
inline constexpr WORD CBN_EDITUPDATE = 6;
inline constexpr WORD CBN_DROPDOWN = 7;
inline constexpr WORD CBN_CLOSEUP = 8;
inline constexpr WORD CBN_SELENDOK = 9;
inline constexpr WORD CBN_SELENDCANCEL = 10;

inline constexpr LRESULT CB_OKAY = 0;
inline constexpr LRESULT CB_ERR = -1;

inline constexpr UINT CB_GETEDITSEL = 0x140;
inline constexpr UINT CB_LIMITTEXT = 0x141;
inline constexpr UINT CB_SETEDITSEL = 0x142;
inline constexpr UINT CB_ADDSTRING = 0x143;
inline constexpr UINT CB_DELETESTRING = 0x144;
inline constexpr UINT CB_GETCOUNT = 0x146;
inline constexpr UINT CB_GETCURSEL = 0x147;
inline constexpr UINT CB_GETLBTEXT = 0x148;
inline constexpr UINT CB_GETLBTEXTLEN = 0x149;
inline constexpr UINT CB_INSERTSTRING = 0x14A;
inline constexpr UINT CB_RESETCONTENT = 0x14B;
inline constexpr UINT CB_FINDSTRING = 0x14C;
inline constexpr UINT CB_SELECTSTRING = 0x14D;
inline constexpr UINT CB_SETCURSEL = 0x14E;
inline constexpr UINT CB_SHOWDROPDOWN = 0x14F;
inline constexpr UINT CB_GETITEMDATA = 0x150;
inline constexpr UINT CB_SETITEMDATA = 0x151;
inline constexpr UINT CB_GETDROPPEDSTATE = 0x157;
inline constexpr UINT CB_FINDSTRINGEXACT = 0x158;
inline constexpr UINT CB_SETDROPPEDWIDTH = 0x160;
