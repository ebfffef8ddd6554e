#include "tvutil2/framework/graphics.h"

#include "tvutil2/framework/temporaries.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/draw/theme.h"

#include <algorithm>
#include <string_view>
#include <utility>

IMPLEMENT_DYNCREATE(CGdiObject, CObject)
IMPLEMENT_DYNCREATE(CPen, CGdiObject)
IMPLEMENT_DYNCREATE(CBrush, CGdiObject)
IMPLEMENT_DYNCREATE(CFont, CGdiObject)
IMPLEMENT_DYNCREATE(CBitmap, CGdiObject)
IMPLEMENT_DYNCREATE(CRgn, CGdiObject)
IMPLEMENT_DYNCREATE(CDC, CObject)

namespace {

HGDIOBJ handle_in(const CGdiObject* object) {
    return object == nullptr ? nullptr : object->m_hObject;
}

}  // namespace

void tvutil2::hold(CGdiObject& object, HGDIOBJ handle) {
    object.m_hObject = handle;
}

void tvutil2::hold(CDC& object, HDC handle) {
    object.m_hDC = object.m_hAttribDC = handle;
}

BOOL CGdiObject::Attach(HGDIOBJ object) {
    if (object == nullptr || m_hObject != nullptr) return FALSE;
    m_hObject = object;
    return TRUE;
}

HGDIOBJ CGdiObject::Detach() {
    return std::exchange(m_hObject, nullptr);
}

BOOL CGdiObject::DeleteObject() {
    return m_hObject == nullptr ? FALSE : ::DeleteObject(Detach());
}

CGdiObject* CGdiObject::FromHandle(HGDIOBJ object) {
    return tvutil2::Temporaries<CGdiObject>::of(object);
}

void CGdiObject::DeleteTempMap() {
    tvutil2::Temporaries<CGdiObject>::delete_all();
    tvutil2::Temporaries<CPen>::delete_all();
    tvutil2::Temporaries<CBrush>::delete_all();
    tvutil2::Temporaries<CFont>::delete_all();
    tvutil2::Temporaries<CBitmap>::delete_all();
    tvutil2::Temporaries<CRgn>::delete_all();
}

CPen* CPen::FromHandle(HPEN pen) {
    return tvutil2::Temporaries<CPen>::of(pen);
}

CBrush* CBrush::FromHandle(HBRUSH brush) {
    return tvutil2::Temporaries<CBrush>::of(brush);
}

CFont* CFont::FromHandle(HFONT font) {
    return tvutil2::Temporaries<CFont>::of(font);
}

BOOL CFont::CreatePointFont(int size, const char16_t* face, CDC* context) {
    constexpr int kTenthsInInch = 720;
    const auto dpi = context == nullptr ? static_cast<int>(tvutil2::system_dpi())
                                        : context->GetDeviceCaps(LOGPIXELSY);
    LOGFONTW font{};
    font.lfHeight = -MulDiv(size, dpi, kTenthsInInch);
    font.lfCharSet = DEFAULT_CHARSET;
    const std::u16string_view name = face == nullptr ? u"" : face;
    std::copy_n(name.begin(), std::min<std::size_t>(name.size(), LF_FACESIZE - 1), font.lfFaceName);
    return CreateFontIndirect(&font);
}

BOOL CBitmap::CreateCompatibleBitmap(CDC* context, int width, int height) {
    return Attach(::CreateCompatibleBitmap(context->m_hDC, width, height));
}

CBitmap* CBitmap::FromHandle(HBITMAP bitmap) {
    return tvutil2::Temporaries<CBitmap>::of(bitmap);
}

CRgn* CRgn::FromHandle(HRGN region) {
    return tvutil2::Temporaries<CRgn>::of(region);
}

BOOL CDC::Attach(HDC context) {
    if (context == nullptr || m_hDC != nullptr) return FALSE;
    m_hDC = m_hAttribDC = context;
    return TRUE;
}

HDC CDC::Detach() {
    m_hAttribDC = nullptr;
    return std::exchange(m_hDC, nullptr);
}

BOOL CDC::CreateCompatibleDC(CDC* like) {
    return Attach(::CreateCompatibleDC(like == nullptr ? nullptr : like->m_hDC));
}

BOOL CDC::DeleteDC() {
    return m_hDC == nullptr ? FALSE : ::DeleteDC(Detach());
}

CDC* CDC::FromHandle(HDC context) {
    return tvutil2::Temporaries<CDC>::of(context);
}

void CDC::DeleteTempMap() {
    tvutil2::Temporaries<CDC>::delete_all();
}

CPen* CDC::SelectObject(CPen* pen) {
    return CPen::FromHandle(static_cast<HPEN>(::SelectObject(m_hDC, handle_in(pen))));
}

CBrush* CDC::SelectObject(CBrush* brush) {
    return CBrush::FromHandle(static_cast<HBRUSH>(::SelectObject(m_hDC, handle_in(brush))));
}

CFont* CDC::SelectObject(CFont* font) {
    return CFont::FromHandle(static_cast<HFONT>(::SelectObject(m_hDC, handle_in(font))));
}

CBitmap* CDC::SelectObject(CBitmap* bitmap) {
    return CBitmap::FromHandle(static_cast<HBITMAP>(::SelectObject(m_hDC, handle_in(bitmap))));
}

CGdiObject* CDC::SelectObject(CGdiObject* object) {
    return CGdiObject::FromHandle(::SelectObject(m_hDC, handle_in(object)));
}

CGdiObject* CDC::SelectStockObject(int which) {
    return CGdiObject::FromHandle(::SelectObject(m_hDC, ::GetStockObject(which)));
}

CFont* CDC::GetCurrentFont() const {
    return CFont::FromHandle(static_cast<HFONT>(::GetCurrentObject(m_hDC, OBJ_FONT)));
}

CPoint CDC::SetViewportOrg(int x, int y) {
    CPoint old;
    ::SetViewportOrgEx(m_hDC, x, y, &old);
    return old;
}

void CDC::FillSolidRect(const RECT* rect, COLORREF color) {
    const auto old = ::SetBkColor(m_hDC, color);
    ::ExtTextOutW(m_hDC, 0, 0, ETO_OPAQUE, rect, nullptr, 0, nullptr);
    ::SetBkColor(m_hDC, old);
}

void CDC::FillSolidRect(int x, int y, int width, int height, COLORREF color) {
    const CRect rect(CPoint(x, y), CSize(width, height));
    FillSolidRect(&rect, color);
}

void CDC::Draw3dRect(const RECT* rect, COLORREF upper_left, COLORREF lower_right) {
    const CRect all(*rect);
    Draw3dRect(all.left, all.top, all.Width(), all.Height(), upper_left, lower_right);
}

void CDC::Draw3dRect(int x, int y, int width, int height, COLORREF upper_left,
                     COLORREF lower_right) {
    const auto right = tvutil2::plus(x, width - 1);
    const auto bottom = tvutil2::plus(y, height - 1);
    FillSolidRect(x, y, width - 1, 1, upper_left);
    FillSolidRect(x, y, 1, height - 1, upper_left);
    FillSolidRect(right, y, 1, height, lower_right);
    FillSolidRect(x, bottom, width, 1, lower_right);
}

CPoint CDC::MoveTo(int x, int y) {
    CPoint old;
    ::MoveToEx(m_hDC, x, y, &old);
    return old;
}

BOOL CDC::BitBlt(int x, int y, int width, int height, CDC* source, int source_x, int source_y,
                 DWORD operation) {
    return ::BitBlt(m_hDC, x, y, width, height, source == nullptr ? nullptr : source->m_hDC,
                    source_x, source_y, operation);
}

BOOL CDC::StretchBlt(int x, int y, int width, int height, CDC* source, int source_x, int source_y,
                     int source_width, int source_height, DWORD operation) {
    return ::StretchBlt(m_hDC, x, y, width, height, source == nullptr ? nullptr : source->m_hDC,
                        source_x, source_y, source_width, source_height, operation);
}

CSize CDC::GetTextExtent(const CString& text) const {
    CSize size;
    ::GetTextExtentPoint32W(m_hDC, text.GetString(), text.GetLength(), &size);
    return size;
}
