#include "tvutil2/ui/image_lists.h"

#include "tvutil2/data/files.h"

#include <string_view>

namespace {

constexpr UINT kFlags = ILC_COLOR32 | ILC_MASK;
constexpr COLORREF kTransparent = RGB(255, 255, 255);

bool append(CImageList& list, HICON icon) {
    if (icon == nullptr) return false;
    const bool is_added = ImageList_ReplaceIcon(list, -1, icon) >= 0;
    DestroyIcon(icon);
    return is_added;
}

// Cuts a bitmap, which is deleted, into tiles and adds up to `most` of them at the list's size.
int append_tiles(CImageList& list, HBITMAP bitmap, SIZE tile, int most) {
    CImageList tiles;
    if (tiles.Create(tile.cx, tile.cy, kFlags, 1, 1)) {
        ImageList_AddMasked(tiles, bitmap, kTransparent);
    }
    DeleteObject(bitmap);
    int added = 0;
    for (int i = 0; i < tiles.GetImageCount() && added < most; ++i) {
        if (append(list, ImageList_GetIcon(tiles, i, ILD_NORMAL))) ++added;
    }
    return added;
}

}  // namespace

int TvLoadPngImage(CImageList* pList, int nSize, int nResID, int nSrcSize) {
    return TvLoadPngImageEx(pList, nSize, nSize, nResID, nSrcSize, nSrcSize);
}

int TvLoadPngImageEx(CImageList* pList, int cx, int cy, int nResID, int cxSrc, int cySrc) {
    if (pList == nullptr || !pList->Create(cx, cy, kFlags, 1, 1)) return 0;
    CPngImage image;
    if (!image.Load(static_cast<UINT>(nResID))) return 0;
    constexpr int kAll = 0x7FFFFFFF;
    return append_tiles(*pList, static_cast<HBITMAP>(image.Detach()), {cxSrc, cySrc}, kAll);
}

BOOL TvLoadFileImage(CImageList* pList, int nSize, const char16_t* lpszPath) {
    const std::u16string_view path = lpszPath != nullptr ? lpszPath : u"";
    if (pList == nullptr || path.empty() || !DoesFileExist(lpszPath)) return FALSE;
    if (!pList->Create(nSize, nSize, kFlags, 1, 1)) return FALSE;
    if (path.ends_with(u"ico")) {
        auto* const icon =
            LoadImageW(nullptr, lpszPath, IMAGE_ICON, 0, 0, LR_LOADFROMFILE | LR_DEFAULTSIZE);
        return append(*pList, reinterpret_cast<HICON>(icon)) ? TRUE : FALSE;
    }
    CImage image;
    if (FAILED(image.Load(lpszPath))) return FALSE;
    const auto side = image.GetWidth();
    return append_tiles(*pList, image.Detach(), {side, side}, 1) != 0 ? TRUE : FALSE;
}
