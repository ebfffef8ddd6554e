// Bitmaps out of picture files, and lists of pictures, as objects.
#pragma once

#include "tvutil2/framework/graphics.h"
#include "tvutil2/platform/picture/image_list.h"

/// A bitmap with transparency, loaded from a resource of the type "PNG".
class TVUTIL_API CPngImage : public CBitmap {
    DECLARE_DYNCREATE(CPngImage)
  public:
    /// From a module or, with null, from the one that AfxFindResourceHandle finds. FALSE when there
    /// is none, it can't be decoded, or this object has a bitmap already.
    BOOL Load(UINT id, HINSTANCE module = nullptr);
    BOOL Load(const char16_t* name, HINSTANCE module = nullptr);
    BOOL LoadFromFile(const char16_t* path);
};

/// A picture file of any format that the host decodes. It owns its bitmap.
class TVUTIL_API CImage {
  public:
    CImage() = default;
    ~CImage() { Destroy(); }
    CImage(const CImage&) = delete;
    CImage& operator=(const CImage&) = delete;

    /// E_FAIL with the last error when it can't be read or decoded; what was loaded before is gone.
    HRESULT Load(const char16_t* path);
    void Destroy();
    void Attach(HBITMAP bitmap);
    HBITMAP Detach();
    operator HBITMAP() const { return m_bitmap; }
    [[nodiscard]] bool IsNull() const { return m_bitmap == nullptr; }
    /// Pixels; 0 without a bitmap.
    [[nodiscard]] int GetWidth() const;
    [[nodiscard]] int GetHeight() const;
    [[nodiscard]] int GetBPP() const { return IsNull() ? 0 : 32; }

  private:
    [[nodiscard]] BITMAP record() const;
    HBITMAP m_bitmap = nullptr;
};

class TVUTIL_API CImageList : public CObject {
    DECLARE_DYNCREATE(CImageList)
  public:
    CImageList() = default;
    ~CImageList() override { DeleteImageList(); }

    operator HIMAGELIST() const { return m_hImageList; }
    [[nodiscard]] HIMAGELIST GetSafeHandle() const { return m_hImageList; }
    BOOL Attach(HIMAGELIST list);
    HIMAGELIST Detach();
    BOOL DeleteImageList();
    /// An object for the while, which owns nothing.
    static CImageList* FromHandle(HIMAGELIST list);
    static void DeleteTempMap();

    /// FALSE also when this object has a list already.
    BOOL Create(int width, int height, UINT flags, int initial, int grow);
    [[nodiscard]] int GetImageCount() const { return ImageList_GetImageCount(m_hImageList); }
    /// With the colour that is transparent: the first index, or -1.
    int Add(CBitmap* bitmap, COLORREF mask) {
        return ImageList_AddMasked(m_hImageList, *bitmap, mask);
    }
    int Add(CBitmap* bitmap, CBitmap* mask) {
        return ImageList_Add(m_hImageList, *bitmap, mask == nullptr ? nullptr : HBITMAP(*mask));
    }
    int Add(HICON icon) { return ImageList_AddIcon(m_hImageList, icon); }
    int Replace(int index, HICON icon) { return ImageList_ReplaceIcon(m_hImageList, index, icon); }
    BOOL Remove(int index) { return ImageList_Remove(m_hImageList, index); }
    /// The caller's.
    HICON ExtractIcon(int index) { return ImageList_GetIcon(m_hImageList, index, ILD_NORMAL); }
    BOOL Draw(CDC* context, int index, POINT at, UINT style) {
        return ImageList_Draw(m_hImageList, index, *context, at.x, at.y, style);
    }
    COLORREF SetBkColor(COLORREF color) { return ImageList_SetBkColor(m_hImageList, color); }

    HIMAGELIST m_hImageList = nullptr;
};
