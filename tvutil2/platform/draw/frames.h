// Edges, the parts of frames that are controls themselves, and the rectangle of the focus.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/draw/draw_types.h"

inline constexpr UINT BDR_RAISEDOUTER = 0x1;
inline constexpr UINT BDR_SUNKENOUTER = 0x2;
inline constexpr UINT BDR_RAISEDINNER = 0x4;
inline constexpr UINT BDR_SUNKENINNER = 0x8;
inline constexpr UINT EDGE_RAISED = BDR_RAISEDOUTER | BDR_RAISEDINNER;
inline constexpr UINT EDGE_SUNKEN = BDR_SUNKENOUTER | BDR_SUNKENINNER;
inline constexpr UINT EDGE_ETCHED = BDR_SUNKENOUTER | BDR_RAISEDINNER;
inline constexpr UINT EDGE_BUMP = BDR_RAISEDOUTER | BDR_SUNKENINNER;

inline constexpr UINT BF_LEFT = 0x1;
inline constexpr UINT BF_TOP = 0x2;
inline constexpr UINT BF_RIGHT = 0x4;
inline constexpr UINT BF_BOTTOM = 0x8;
inline constexpr UINT BF_RECT = BF_LEFT | BF_TOP | BF_RIGHT | BF_BOTTOM;
inline constexpr UINT BF_MIDDLE = 0x800;
inline constexpr UINT BF_ADJUST = 0x2000;
inline constexpr UINT BF_FLAT = 0x4000;

/// Draws sides of a rectangle: an outer and an inner line of one pixel each, lit from above left.
/// BF_MIDDLE fills the inside with the face colour, BF_ADJUST takes the sides off the rectangle.
TVUTIL_API BOOL DrawEdge(HDC context, RECT* rect, UINT edge, UINT flags);

inline constexpr UINT DFC_CAPTION = 1;
inline constexpr UINT DFC_MENU = 2;
inline constexpr UINT DFC_SCROLL = 3;
inline constexpr UINT DFC_BUTTON = 4;
inline constexpr UINT DFCS_CAPTIONCLOSE = 0;
inline constexpr UINT DFCS_CAPTIONMIN = 1;
inline constexpr UINT DFCS_CAPTIONMAX = 2;
inline constexpr UINT DFCS_CAPTIONRESTORE = 3;
inline constexpr UINT DFCS_CAPTIONHELP = 4;
inline constexpr UINT DFCS_MENUARROW = 0;
inline constexpr UINT DFCS_MENUCHECK = 1;
inline constexpr UINT DFCS_MENUBULLET = 2;
inline constexpr UINT DFCS_MENUARROWRIGHT = 4;
inline constexpr UINT DFCS_SCROLLUP = 0;
inline constexpr UINT DFCS_SCROLLDOWN = 1;
inline constexpr UINT DFCS_SCROLLLEFT = 2;
inline constexpr UINT DFCS_SCROLLRIGHT = 3;
inline constexpr UINT DFCS_SCROLLCOMBOBOX = 5;
inline constexpr UINT DFCS_SCROLLSIZEGRIP = 8;
inline constexpr UINT DFCS_BUTTONCHECK = 0;
inline constexpr UINT DFCS_BUTTONRADIO = 4;
inline constexpr UINT DFCS_BUTTON3STATE = 8;
inline constexpr UINT DFCS_BUTTONPUSH = 0x10;
inline constexpr UINT DFCS_INACTIVE = 0x100;
inline constexpr UINT DFCS_PUSHED = 0x200;
inline constexpr UINT DFCS_CHECKED = 0x400;
inline constexpr UINT DFCS_HOT = 0x1000;

/// Draws the part of a frame in the theme's look. 0 with ERROR_INVALID_PARAMETER for none of those
/// above.
TVUTIL_API BOOL DrawFrameControl(HDC context, RECT* rect, UINT type, UINT state);

/// A dotted frame one pixel wide, which a second call takes away again.
TVUTIL_API BOOL DrawFocusRect(HDC context, const RECT* rect);
