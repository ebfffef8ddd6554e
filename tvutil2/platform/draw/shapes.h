// Filled areas, lines and outlines.
//
// Right and bottom of a rectangle are outside. Lines one pixel wide, level or upright, are exact
// pixels, the last of which isn't drawn; slanted and round ones are smooth. Functions give 0 with
// ERROR_INVALID_HANDLE for no context or brush, and ERROR_MOD_NOT_FOUND where smooth drawing isn't
// installed. Coordinates may be any.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/draw/draw_types.h"

/// With a brush, or one more than a system colour's index (COLOR_...) in its place.
TVUTIL_API int FillRect(HDC context, const RECT* rect, HBRUSH brush);
/// A frame one pixel wide inside of the rectangle.
TVUTIL_API int FrameRect(HDC context, const RECT* rect, HBRUSH brush);
TVUTIL_API BOOL InvertRect(HDC context, const RECT* rect);
/// The region counts from where 0, 0 is.
TVUTIL_API BOOL FillRgn(HDC context, HRGN region, HBRUSH brush);

/// The colour that was set; CLR_INVALID where drawing isn't let through.
TVUTIL_API COLORREF SetPixel(HDC context, int x, int y, COLORREF color);
TVUTIL_API COLORREF GetPixel(HDC context, int x, int y);

/// Moves the place where LineTo begins; the old one goes to `old` if it isn't null.
TVUTIL_API BOOL MoveToEx(HDC context, int x, int y, POINT* old);
TVUTIL_API BOOL LineTo(HDC context, int x, int y);
TVUTIL_API BOOL Polyline(HDC context, const POINT* points, int count);

// Filled with the selected brush and framed with the selected pen, inside of the rectangle.
TVUTIL_API BOOL Rectangle(HDC context, int left, int top, int right, int bottom);
TVUTIL_API BOOL RoundRect(HDC context, int left, int top, int right, int bottom, int corner_width,
                          int corner_height);
TVUTIL_API BOOL Ellipse(HDC context, int left, int top, int right, int bottom);
TVUTIL_API BOOL Polygon(HDC context, const POINT* points, int count);
