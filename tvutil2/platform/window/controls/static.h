// The class "Static": labels, lines, areas, icons and bitmaps. Metafiles aren't shown.
#pragma once

#include "tvutil2/platform/base/types.h"

inline constexpr DWORD SS_LEFT = 0x0;
inline constexpr DWORD SS_CENTER = 0x1;
inline constexpr DWORD SS_RIGHT = 0x2;
inline constexpr DWORD SS_ICON = 0x3;
inline constexpr DWORD SS_BLACKRECT = 0x4;
inline constexpr DWORD SS_GRAYRECT = 0x5;
inline constexpr DWORD SS_WHITERECT = 0x6;
inline constexpr DWORD SS_BLACKFRAME = 0x7;
inline constexpr DWORD SS_GRAYFRAME = 0x8;
inline constexpr DWORD SS_WHITEFRAME = 0x9;
inline constexpr DWORD SS_SIMPLE = 0xB;
inline constexpr DWORD SS_LEFTNOWORDWRAP = 0xC;
inline constexpr DWORD SS_OWNERDRAW = 0xD;
inline constexpr DWORD SS_BITMAP = 0xE;
inline constexpr DWORD SS_ETCHEDHORZ = 0x10;
inline constexpr DWORD SS_ETCHEDVERT = 0x11;
inline constexpr DWORD SS_TYPEMASK = 0x1F;
inline constexpr DWORD SS_REALSIZECONTROL = 0x40;
inline constexpr DWORD SS_NOPREFIX = 0x80;
inline constexpr DWORD SS_NOTIFY = 0x100;
inline constexpr DWORD SS_CENTERIMAGE = 0x200;
inline constexpr DWORD SS_REALSIZEIMAGE = 0x800;
/// Breaks lines within words that are too long.
inline constexpr DWORD SS_EDITCONTROL = 0x2000;
inline constexpr DWORD SS_ENDELLIPSIS = 0x4000;
inline constexpr DWORD SS_PATHELLIPSIS = 0x8000;
inline constexpr DWORD SS_WORDELLIPSIS = 0xC000;

// With SS_NOTIFY, in WM_COMMAND.
inline constexpr WORD STN_CLICKED = 0;
inline constexpr WORD STN_DBLCLK = 1;
inline constexpr WORD STN_ENABLE = 2;
inline constexpr WORD STN_DISABLE = 3;

/// The icon (SS_ICON) or bitmap (SS_BITMAP); setting gives the one before. It stays its owner's.
/// The control becomes as large as it, but for SS_CENTERIMAGE and SS_REALSIZECONTROL.
inline constexpr UINT STM_SETICON = 0x170;
inline constexpr UINT STM_GETICON = 0x171;
inline constexpr UINT STM_SETIMAGE = 0x172;
inline constexpr UINT STM_GETIMAGE = 0x173;
