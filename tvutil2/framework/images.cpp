#include "tvutil2/framework/images.h"

#include "tvutil2/framework/app.h"
#include "tvutil2/framework/temporaries.h"
#include "tvutil2/platform/draw/graphics_object.h"

#include <utility>

IMPLEMENT_DYNCREATE(CPngImage, CBitmap)
IMPLEMENT_DYNCREATE(CImageList, CObject)

namespace {

HBITMAP bitmap_of(std::shared_ptr<tvutil2::Surface> pixels) {
    return pixels ? tvutil2::make_bitmap(std::move(pixels)) : nullptr;
}

}  // namespace

BOOL CPngImage::Load(UINT id, HINSTANCE module) {
    return Load(MAKEINTRESOURCEW(LOWORD(id)), module);
}

BOOL CPngImage::Load(const char16_t* name, HINSTANCE module) {
    constexpr auto* kType = u"PNG";
    if (GetSafeHandle() != nullptr) return FALSE;
    if (module == nullptr) module = AfxFindResourceHandle(name, kType);
    return Attach(bitmap_of(tvutil2::load_picture_resource(module, name, kType)));
}

BOOL CPngImage::LoadFromFile(const char16_t* path) {
    if (GetSafeHandle() != nullptr) return FALSE;
    return Attach(bitmap_of(tvutil2::load_picture_file(path)));
}

HRESULT CImage::Load(const char16_t* path) {
    Destroy();
    m_bitmap = bitmap_of(tvutil2::load_picture_file(path));
    return IsNull() ? E_FAIL : S_OK;
}

void CImage::Destroy() {
    if (!IsNull()) ::DeleteObject(Detach());
}

void CImage::Attach(HBITMAP bitmap) {
    Destroy();
    m_bitmap = bitmap;
}

HBITMAP CImage::Detach() {
    return std::exchange(m_bitmap, nullptr);
}

BITMAP CImage::record() const {
    BITMAP bitmap{};
    if (!IsNull()) ::GetObjectW(m_bitmap, sizeof bitmap, &bitmap);
    return bitmap;
}

int CImage::GetWidth() const {
    return record().bmWidth;
}

int CImage::GetHeight() const {
    return record().bmHeight;
}

void tvutil2::hold(CImageList& object, HIMAGELIST handle) {
    object.m_hImageList = handle;
}

CImageList* CImageList::FromHandle(HIMAGELIST list) {
    return tvutil2::Temporaries<CImageList>::of(list);
}

void CImageList::DeleteTempMap() {
    tvutil2::Temporaries<CImageList>::delete_all();
}

BOOL CImageList::Attach(HIMAGELIST list) {
    if (list == nullptr || m_hImageList != nullptr) return FALSE;
    m_hImageList = list;
    return TRUE;
}

HIMAGELIST CImageList::Detach() {
    return std::exchange(m_hImageList, nullptr);
}

BOOL CImageList::DeleteImageList() {
    return m_hImageList == nullptr ? FALSE : ImageList_Destroy(Detach());
}

BOOL CImageList::Create(int width, int height, UINT flags, int initial, int grow) {
    if (m_hImageList != nullptr) return FALSE;
    return Attach(ImageList_Create(width, height, flags, initial, grow));
}
