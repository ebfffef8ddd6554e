#include "tvutil2/framework/controls.h"

IMPLEMENT_DYNAMIC(CStatic, CWnd)

BOOL CStatic::Create(const char16_t* text, DWORD style, const RECT& rect, CWnd* parent, UINT id) {
    return CWnd::Create(u"Static", text, style, rect, parent, id);
}
