// Copies of pixels between contexts.
//
// Functions give 0 with ERROR_INVALID_HANDLE for no context, and ERROR_INVALID_PARAMETER for an
// operation that isn't one. What leaves the source's surface isn't copied. Source and target may be
// the same pixels, and overlap.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/draw/draw_types.h"

// Raster operations: bits 16 to 23 tell the result for each of the eight combinations of a bit of
// pattern, source and target, the pattern being the selected brush. All 256 are carried out.
inline constexpr DWORD SRCCOPY = 0x00CC0020;
inline constexpr DWORD SRCPAINT = 0x00EE0086;
inline constexpr DWORD SRCAND = 0x008800C6;
inline constexpr DWORD SRCINVERT = 0x00660046;
inline constexpr DWORD NOTSRCCOPY = 0x00330008;
inline constexpr DWORD PATCOPY = 0x00F00021;
inline constexpr DWORD PATINVERT = 0x005A0049;
inline constexpr DWORD DSTINVERT = 0x00550009;
inline constexpr DWORD BLACKNESS = 0x00000042;
inline constexpr DWORD WHITENESS = 0x00FF0062;

TVUTIL_API BOOL BitBlt(HDC target, int x, int y, int width, int height, HDC source, int source_x,
                       int source_y, DWORD operation);

/// Without a source.
TVUTIL_API BOOL PatBlt(HDC target, int x, int y, int width, int height, DWORD operation);

/// Scaled: pixel by pixel, or smoothly in the mode HALFTONE, which knows SRCCOPY only. Negative
/// lengths mirror.
TVUTIL_API BOOL StretchBlt(HDC target, int x, int y, int width, int height, HDC source,
                           int source_x, int source_y, int source_width, int source_height,
                           DWORD operation);
