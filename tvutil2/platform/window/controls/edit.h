// The class "Edit": text that the person types, in one line or several.
//
// Lines end with CR LF, LF or CR. The caret stands between characters as people see them. What was
// done can be undone step by step, and done again with Ctrl+Y.
#pragma once

#include "tvutil2/platform/base/types.h"

inline constexpr DWORD ES_LEFT = 0x0;
inline constexpr DWORD ES_CENTER = 0x1;
inline constexpr DWORD ES_RIGHT = 0x2;
inline constexpr DWORD ES_MULTILINE = 0x4;
inline constexpr DWORD ES_UPPERCASE = 0x8;
inline constexpr DWORD ES_LOWERCASE = 0x10;
inline constexpr DWORD ES_PASSWORD = 0x20;
inline constexpr DWORD ES_AUTOVSCROLL = 0x40;
inline constexpr DWORD ES_AUTOHSCROLL = 0x80;
inline constexpr DWORD ES_NOHIDESEL = 0x100;
inline constexpr DWORD ES_READONLY = 0x800;
inline constexpr DWORD ES_WANTRETURN = 0x1000;
inline constexpr DWORD ES_NUMBER = 0x2000;

// In WM_COMMAND. A change by the person, or by EM_REPLACESEL, is told by UPDATE before it is
// painted and CHANGE behind it; WM_SETTEXT only to an edit of one line.
inline constexpr WORD EN_SETFOCUS = 0x100;
inline constexpr WORD EN_KILLFOCUS = 0x200;
inline constexpr WORD EN_CHANGE = 0x300;
inline constexpr WORD EN_UPDATE = 0x400;
inline constexpr WORD EN_MAXTEXT = 0x501;
inline constexpr WORD EN_HSCROLL = 0x601;
inline constexpr WORD EN_VSCROLL = 0x602;

inline constexpr UINT EM_GETSEL = 0xB0;
inline constexpr UINT EM_SETSEL = 0xB1;
inline constexpr UINT EM_GETRECT = 0xB2;
inline constexpr UINT EM_SETRECT = 0xB3;
inline constexpr UINT EM_SETRECTNP = 0xB4;
inline constexpr UINT EM_SCROLL = 0xB5;
inline constexpr UINT EM_LINESCROLL = 0xB6;
inline constexpr UINT EM_SCROLLCARET = 0xB7;
inline constexpr UINT EM_GETMODIFY = 0xB8;
inline constexpr UINT EM_SETMODIFY = 0xB9;
inline constexpr UINT EM_GETLINECOUNT = 0xBA;
inline constexpr UINT EM_LINEINDEX = 0xBB;
inline constexpr UINT EM_LINELENGTH = 0xC1;
inline constexpr UINT EM_REPLACESEL = 0xC2;
inline constexpr UINT EM_GETLINE = 0xC4;
inline constexpr UINT EM_LIMITTEXT = 0xC5;
inline constexpr UINT EM_SETLIMITTEXT = EM_LIMITTEXT;
inline constexpr UINT EM_CANUNDO = 0xC6;
inline constexpr UINT EM_UNDO = 0xC7;
inline constexpr UINT EM_LINEFROMCHAR = 0xC9;
inline constexpr UINT EM_SETPASSWORDCHAR = 0xCC;
inline constexpr UINT EM_EMPTYUNDOBUFFER = 0xCD;
inline constexpr UINT EM_GETFIRSTVISIBLELINE = 0xCE;
inline constexpr UINT EM_SETREADONLY = 0xCF;
inline constexpr UINT EM_GETPASSWORDCHAR = 0xD2;
inline constexpr UINT EM_SETMARGINS = 0xD3;
inline constexpr UINT EM_GETMARGINS = 0xD4;
inline constexpr UINT EM_GETLIMITTEXT = 0xD5;
inline constexpr UINT EM_POSFROMCHAR = 0xD6;
inline constexpr UINT EM_CHARFROMPOS = 0xD7;
inline constexpr UINT EM_SETCUEBANNER = 0x1501;
inline constexpr UINT EM_GETCUEBANNER = 0x1502;

inline constexpr WPARAM EC_LEFTMARGIN = 1;
inline constexpr WPARAM EC_RIGHTMARGIN = 2;

inline constexpr UINT WM_CUT = 0x300;
inline constexpr UINT WM_COPY = 0x301;
inline constexpr UINT WM_PASTE = 0x302;
inline constexpr UINT WM_CLEAR = 0x303;
inline constexpr UINT WM_UNDO = 0x304;
