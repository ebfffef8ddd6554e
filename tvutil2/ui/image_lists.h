// Image lists filled from strips of pictures and from files.
//
// The list must have been created by nobody: these create it, with transparency, and leave it empty
// when nothing can be loaded. Pictures are scaled smoothly. For the thread that has the list.
#pragma once

#include "tvutil2/framework/images.h"

/// A strip of square tiles, each `nSrcSize` pixels wide, out of a resource of the type "PNG" (as
/// CPngImage finds it): pictures of `nSize` pixels, transparent where the strip is or is white. How
/// many were added; what is left over of the strip's width is passed over.
TVUTIL_API int TvLoadPngImage(CImageList* pList, int nSize, int nResID, int nSrcSize);
/// The same with widths and heights.
TVUTIL_API int TvLoadPngImageEx(CImageList* pList, int cx, int cy, int nResID, int cxSrc,
                                int cySrc);

/// One picture out of a file: an icon when the name ends in "ico", else a picture of any format
/// that the host decodes, made square by its width and transparent where it is or is white. 0 when
/// there is no such file (the list isn't created then) and when it can't be loaded.
TVUTIL_API BOOL TvLoadFileImage(CImageList* pList, int nSize, const char16_t* lpszPath);
