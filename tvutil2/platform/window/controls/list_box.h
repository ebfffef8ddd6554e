// The class "ListBox": lines of text of which the person chooses one, or several.
#pragma once

#include "tvutil2/platform/base/types.h"

inline constexpr DWORD LBS_NOTIFY = 0x1;
inline constexpr DWORD LBS_SORT = 0x2;
inline constexpr DWORD LBS_MULTIPLESEL = 0x8;
inline constexpr DWORD LBS_HASSTRINGS = 0x40;
inline constexpr DWORD LBS_NOINTEGRALHEIGHT = 0x100;
inline constexpr DWORD LBS_EXTENDEDSEL = 0x800;
inline constexpr DWORD LBS_DISABLENOSCROLL = 0x1000;
inline constexpr DWORD LBS_NOSEL = 0x4000;

// In WM_COMMAND, with LBS_NOTIFY.
inline constexpr WORD LBN_SELCHANGE = 1;
inline constexpr WORD LBN_DBLCLK = 2;
inline constexpr WORD LBN_SETFOCUS = 4;
inline constexpr WORD LBN_KILLFOCUS = 5;

inline constexpr LRESULT LB_OKAY = 0;
inline constexpr LRESULT LB_ERR = -1;

inline constexpr UINT LB_ADDSTRING = 0x180;
inline constexpr UINT LB_INSERTSTRING = 0x181;
inline constexpr UINT LB_DELETESTRING = 0x182;
inline constexpr UINT LB_RESETCONTENT = 0x184;
inline constexpr UINT LB_SETSEL = 0x185;
inline constexpr UINT LB_SETCURSEL = 0x186;
inline constexpr UINT LB_GETSEL = 0x187;
inline constexpr UINT LB_GETCURSEL = 0x188;
inline constexpr UINT LB_GETTEXT = 0x189;
inline constexpr UINT LB_GETTEXTLEN = 0x18A;
inline constexpr UINT LB_GETCOUNT = 0x18B;
inline constexpr UINT LB_SELECTSTRING = 0x18C;
inline constexpr UINT LB_GETTOPINDEX = 0x18E;
inline constexpr UINT LB_FINDSTRING = 0x18F;
inline constexpr UINT LB_GETSELCOUNT = 0x190;
inline constexpr UINT LB_GETSELITEMS = 0x191;
inline constexpr UINT LB_SETTOPINDEX = 0x197;
inline constexpr UINT LB_GETITEMRECT = 0x198;
inline constexpr UINT LB_GETITEMDATA = 0x199;
inline constexpr UINT LB_SETITEMDATA = 0x19A;
inline constexpr UINT LB_GETITEMHEIGHT = 0x1A1;
inline constexpr UINT LB_FINDSTRINGEXACT = 0x1A2;
inline constexpr UINT LB_ITEMFROMPOINT = 0x1A9;
