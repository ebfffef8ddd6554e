// Device contexts and what is selected into them, as objects.
//
// An object owns the handle that it has been given by a Create function or Attach, and deletes it
// at its end, unless Detach took it back. FromHandle gives an object for the while, which owns
// nothing and is there until DeleteTempMap or the end of the thread. Failures are those of the
// platform's functions of the same names. An object belongs to one thread at a time.
#pragma once

#include "tvutil2/framework/geometry.h"
#include "tvutil2/framework/object.h"
#include "tvutil2/framework/strings.h"
#include "tvutil2/platform/draw/blit.h"
#include "tvutil2/platform/draw/device_context.h"
#include "tvutil2/platform/draw/frames.h"
#include "tvutil2/platform/draw/objects.h"
#include "tvutil2/platform/draw/shapes.h"
#include "tvutil2/platform/draw/text.h"
#include "tvutil2/platform/draw/theme.h"
#include "tvutil2/platform/picture/icons.h"

class CDC;

class TVUTIL_API CGdiObject : public CObject {
    DECLARE_DYNCREATE(CGdiObject)
  public:
    CGdiObject() = default;
    ~CGdiObject() override { DeleteObject(); }

    [[nodiscard]] HGDIOBJ GetSafeHandle() const { return m_hObject; }
    operator HGDIOBJ() const { return m_hObject; }
    /// FALSE for null, or when there is a handle already.
    BOOL Attach(HGDIOBJ object);
    HGDIOBJ Detach();
    BOOL DeleteObject();
    int GetObject(int size, void* buffer) const { return ::GetObjectW(m_hObject, size, buffer); }
    BOOL CreateStockObject(int which) { return Attach(::GetStockObject(which)); }

    static CGdiObject* FromHandle(HGDIOBJ object);
    static void DeleteTempMap();

    HGDIOBJ m_hObject = nullptr;
};

class TVUTIL_API CPen : public CGdiObject {
    DECLARE_DYNCREATE(CPen)
  public:
    CPen() = default;
    CPen(int style, int width, COLORREF color) { CreatePen(style, width, color); }
    BOOL CreatePen(int style, int width, COLORREF color) {
        return Attach(::CreatePen(style, width, color));
    }
    operator HPEN() const { return static_cast<HPEN>(m_hObject); }
    static CPen* FromHandle(HPEN pen);
};

class TVUTIL_API CBrush : public CGdiObject {
    DECLARE_DYNCREATE(CBrush)
  public:
    CBrush() = default;
    explicit CBrush(COLORREF color) { CreateSolidBrush(color); }
    BOOL CreateSolidBrush(COLORREF color) { return Attach(::CreateSolidBrush(color)); }
    BOOL CreateSysColorBrush(int index) { return Attach(::GetSysColorBrush(index)); }
    operator HBRUSH() const { return static_cast<HBRUSH>(m_hObject); }
    static CBrush* FromHandle(HBRUSH brush);
};

class TVUTIL_API CFont : public CGdiObject {
    DECLARE_DYNCREATE(CFont)
  public:
    CFont() = default;
    BOOL CreateFontIndirect(const LOGFONTW* font) { return Attach(::CreateFontIndirectW(font)); }
    /// `size` in tenths of a point, at the context's scale or, with null, the system's.
    BOOL CreatePointFont(int size, const char16_t* face, CDC* context = nullptr);
    int GetLogFont(LOGFONTW* font) const { return GetObject(sizeof *font, font); }
    operator HFONT() const { return static_cast<HFONT>(m_hObject); }
    static CFont* FromHandle(HFONT font);
};

class TVUTIL_API CBitmap : public CGdiObject {
    DECLARE_DYNCREATE(CBitmap)
  public:
    CBitmap() = default;
    BOOL CreateCompatibleBitmap(CDC* context, int width, int height);
    int GetBitmap(BITMAP* bitmap) const { return GetObject(sizeof *bitmap, bitmap); }
    operator HBITMAP() const { return static_cast<HBITMAP>(m_hObject); }
    static CBitmap* FromHandle(HBITMAP bitmap);
};

class TVUTIL_API CRgn : public CGdiObject {
    DECLARE_DYNCREATE(CRgn)
  public:
    CRgn() = default;
    BOOL CreateRectRgn(int left, int top, int right, int bottom) {
        return Attach(::CreateRectRgn(left, top, right, bottom));
    }
    int CombineRgn(const CRgn* first, const CRgn* second, int mode) {
        return ::CombineRgn(*this, *first, second == nullptr ? nullptr : HRGN(*second), mode);
    }
    operator HRGN() const { return static_cast<HRGN>(m_hObject); }
    static CRgn* FromHandle(HRGN region);
};

class TVUTIL_API CDC : public CObject {
    DECLARE_DYNCREATE(CDC)
  public:
    CDC() = default;
    /// Ends a context that it still has.
    ~CDC() override { DeleteDC(); }

    [[nodiscard]] HDC GetSafeHdc() const { return m_hDC; }
    operator HDC() const { return m_hDC; }
    BOOL Attach(HDC context);
    HDC Detach();
    BOOL CreateCompatibleDC(CDC* like);
    virtual BOOL DeleteDC();
    static CDC* FromHandle(HDC context);
    static void DeleteTempMap();

    // The object that was selected before; null on failure.
    CPen* SelectObject(CPen* pen);
    CBrush* SelectObject(CBrush* brush);
    virtual CFont* SelectObject(CFont* font);
    CBitmap* SelectObject(CBitmap* bitmap);
    CGdiObject* SelectObject(CGdiObject* object);
    CGdiObject* SelectStockObject(int which);
    [[nodiscard]] CFont* GetCurrentFont() const;

    virtual int SaveDC() { return ::SaveDC(m_hDC); }
    virtual BOOL RestoreDC(int number) { return ::RestoreDC(m_hDC, number); }
    virtual int SetBkMode(int mode) { return ::SetBkMode(m_hDC, mode); }
    virtual COLORREF SetTextColor(COLORREF color) { return ::SetTextColor(m_hDC, color); }
    virtual COLORREF SetBkColor(COLORREF color) { return ::SetBkColor(m_hDC, color); }
    [[nodiscard]] COLORREF GetBkColor() const { return ::GetBkColor(m_hDC); }
    [[nodiscard]] COLORREF GetTextColor() const { return ::GetTextColor(m_hDC); }
    [[nodiscard]] int GetDeviceCaps(int what) const { return ::GetDeviceCaps(m_hDC, what); }
    UINT SetTextAlign(UINT align) { return ::SetTextAlign(m_hDC, align); }
    CPoint SetViewportOrg(int x, int y);
    int GetClipBox(RECT* box) const { return ::GetClipBox(m_hDC, box); }
    int SelectClipRgn(CRgn* region) {
        return ::SelectClipRgn(m_hDC, region == nullptr ? nullptr : HRGN(*region));
    }
    int IntersectClipRect(const RECT* rect) {
        return ::IntersectClipRect(m_hDC, rect->left, rect->top, rect->right, rect->bottom);
    }
    int ExcludeClipRect(const RECT* rect) {
        return ::ExcludeClipRect(m_hDC, rect->left, rect->top, rect->right, rect->bottom);
    }

    void FillRect(const RECT* rect, CBrush* brush) { ::FillRect(m_hDC, rect, *brush); }
    void FrameRect(const RECT* rect, CBrush* brush) { ::FrameRect(m_hDC, rect, *brush); }
    /// Without a brush; the background's colour stays.
    void FillSolidRect(const RECT* rect, COLORREF color);
    void FillSolidRect(int x, int y, int width, int height, COLORREF color);
    /// A frame one pixel wide in two colours.
    void Draw3dRect(const RECT* rect, COLORREF upper_left, COLORREF lower_right);
    void Draw3dRect(int x, int y, int width, int height, COLORREF upper_left, COLORREF lower_right);
    void DrawFocusRect(const RECT* rect) { ::DrawFocusRect(m_hDC, rect); }
    BOOL DrawEdge(RECT* rect, UINT edge, UINT flags) {
        return ::DrawEdge(m_hDC, rect, edge, flags);
    }
    BOOL DrawFrameControl(RECT* rect, UINT type, UINT state) {
        return ::DrawFrameControl(m_hDC, rect, type, state);
    }

    CPoint MoveTo(int x, int y);
    BOOL LineTo(int x, int y) { return ::LineTo(m_hDC, x, y); }
    BOOL Rectangle(const RECT* rect) {
        return ::Rectangle(m_hDC, rect->left, rect->top, rect->right, rect->bottom);
    }
    BOOL Ellipse(const RECT* rect) {
        return ::Ellipse(m_hDC, rect->left, rect->top, rect->right, rect->bottom);
    }
    BOOL Polygon(const POINT* points, int count) { return ::Polygon(m_hDC, points, count); }
    COLORREF SetPixel(int x, int y, COLORREF color) { return ::SetPixel(m_hDC, x, y, color); }
    [[nodiscard]] COLORREF GetPixel(int x, int y) const { return ::GetPixel(m_hDC, x, y); }

    BOOL BitBlt(int x, int y, int width, int height, CDC* source, int source_x, int source_y,
                DWORD operation);
    BOOL StretchBlt(int x, int y, int width, int height, CDC* source, int source_x, int source_y,
                    int source_width, int source_height, DWORD operation);
    BOOL DrawIcon(int x, int y, HICON icon) { return ::DrawIcon(m_hDC, x, y, icon); }

    virtual int DrawText(const char16_t* text, int count, RECT* rect, UINT format) {
        return ::DrawTextW(m_hDC, text, count, rect, format);
    }
    int DrawText(const CString& text, RECT* rect, UINT format) {
        return DrawText(text.GetString(), text.GetLength(), rect, format);
    }
    BOOL TextOut(int x, int y, const CString& text) {
        return ::TextOutW(m_hDC, x, y, text.GetString(), text.GetLength());
    }
    [[nodiscard]] CSize GetTextExtent(const CString& text) const;
    BOOL GetTextMetrics(TEXTMETRICW* metrics) const { return ::GetTextMetricsW(m_hDC, metrics); }

    HDC m_hDC = nullptr;
    /// What is asked for facts; here always the same context.
    HDC m_hAttribDC = nullptr;
};
