#include "tvutil2/framework/graphics.h"

#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/draw/theme.h"

#include <algorithm>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <utility>

IMPLEMENT_DYNCREATE(CGdiObject, CObject)
IMPLEMENT_DYNCREATE(CPen, CGdiObject)
IMPLEMENT_DYNCREATE(CBrush, CGdiObject)
IMPLEMENT_DYNCREATE(CFont, CGdiObject)
IMPLEMENT_DYNCREATE(CBitmap, CGdiObject)
IMPLEMENT_DYNCREATE(CRgn, CGdiObject)
IMPLEMENT_DYNCREATE(CDC, CObject)

namespace {

// Whether the thread has any: asked when it is idle, which mostly never drew.
thread_local bool t_has_temporaries = false;

// The objects that a thread's FromHandle made, which own nothing.
template <class Object>
class Temporaries {
  public:
    ~Temporaries() { clear(); }

    template <class Handle>
    Object* get(Handle handle) {
        if (handle == nullptr) return nullptr;
        auto& object = m_objects[handle];
        if (!object) {
            t_has_temporaries = true;
            object = std::make_unique<Object>();
            hold(*object, handle);
        }
        return object.get();
    }

    void clear() {
        for (auto& [handle, object] : m_objects) hold(*object, nullptr);
        m_objects.clear();
    }

    static Temporaries& current() {
        static thread_local Temporaries temporaries;
        return temporaries;
    }

  private:
    static void hold(CGdiObject& object, HGDIOBJ handle) { object.m_hObject = handle; }
    static void hold(CDC& object, HDC handle) { object.m_hDC = object.m_hAttribDC = handle; }

    std::unordered_map<void*, std::unique_ptr<Object>> m_objects;
};

template <class Object, class Handle>
Object* temporary(Handle handle) {
    return Temporaries<Object>::current().get(handle);
}

HGDIOBJ handle_in(const CGdiObject* object) {
    return object == nullptr ? nullptr : object->m_hObject;
}

}  // namespace

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
    return temporary<CGdiObject>(object);
}

void CGdiObject::DeleteTempMap() {
    if (!t_has_temporaries) return;
    Temporaries<CGdiObject>::current().clear();
    Temporaries<CPen>::current().clear();
    Temporaries<CBrush>::current().clear();
    Temporaries<CFont>::current().clear();
    Temporaries<CBitmap>::current().clear();
    Temporaries<CRgn>::current().clear();
}

CPen* CPen::FromHandle(HPEN pen) {
    return temporary<CPen>(pen);
}

CBrush* CBrush::FromHandle(HBRUSH brush) {
    return temporary<CBrush>(brush);
}

CFont* CFont::FromHandle(HFONT font) {
    return temporary<CFont>(font);
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
    return temporary<CBitmap>(bitmap);
}

CRgn* CRgn::FromHandle(HRGN region) {
    return temporary<CRgn>(region);
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
    return temporary<CDC>(context);
}

void CDC::DeleteTempMap() {
    if (!t_has_temporaries) return;
    Temporaries<CDC>::current().clear();
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
