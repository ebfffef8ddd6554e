// Lists of pictures of one size, as trees, lists and menus show them.
//
// Every picture has transparency of 256 steps, whatever the list was made for. A list belongs to
// who made it, until ImageList_Destroy. Safe from any thread. Functions that give an index give -1
// on failure.
#pragma once

#include "tvutil2/platform/picture/icons.h"

using HIMAGELIST = struct HIMAGELIST__*;

inline constexpr UINT ILC_MASK = 0x1;
inline constexpr UINT ILC_COLOR = 0x0;
inline constexpr UINT ILC_COLOR24 = 0x18;
inline constexpr UINT ILC_COLOR32 = 0x20;

inline constexpr UINT ILD_NORMAL = 0x0;
inline constexpr UINT ILD_TRANSPARENT = 0x1;

/// Pictures of `width` by `height` pixels. Null with ERROR_INVALID_PARAMETER for sizes that aren't
/// above 0 or that are above Surface::kLongest.
TVUTIL_API HIMAGELIST ImageList_Create(int width, int height, UINT flags, int initial, int grow);
TVUTIL_API BOOL ImageList_Destroy(HIMAGELIST list);
TVUTIL_API int ImageList_GetImageCount(HIMAGELIST list);
TVUTIL_API BOOL ImageList_GetIconSize(HIMAGELIST list, int* width, int* height);

/// Cuts a bitmap into pictures and adds them: the index of the first. The mask is white where they
/// are transparent; null keeps the bitmap's own transparency alone.
TVUTIL_API int ImageList_Add(HIMAGELIST list, HBITMAP bitmap, HBITMAP mask);
/// The same, transparent also where the bitmap has that colour.
TVUTIL_API int ImageList_AddMasked(HIMAGELIST list, HBITMAP bitmap, COLORREF mask);
/// Puts an icon, scaled to the list's size, in the place of a picture, or behind all with -1.
TVUTIL_API int ImageList_ReplaceIcon(HIMAGELIST list, int index, HICON icon);
inline int ImageList_AddIcon(HIMAGELIST list, HICON icon) {
    return ImageList_ReplaceIcon(list, -1, icon);
}
/// A picture as an icon, which is the caller's.
TVUTIL_API HICON ImageList_GetIcon(HIMAGELIST list, int index, UINT flags);
/// -1 takes all away.
TVUTIL_API BOOL ImageList_Remove(HIMAGELIST list, int index);

/// What ImageList_Draw fills behind a picture with ILD_NORMAL; CLR_NONE at first, for nothing. The
/// old one.
TVUTIL_API COLORREF ImageList_SetBkColor(HIMAGELIST list, COLORREF color);
TVUTIL_API COLORREF ImageList_GetBkColor(HIMAGELIST list);

TVUTIL_API BOOL ImageList_Draw(HIMAGELIST list, int index, HDC context, int x, int y, UINT style);
