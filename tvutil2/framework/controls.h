// The system's controls as objects.
#pragma once

#include "tvutil2/framework/wnd.h"

class TVUTIL_API CStatic : public CWnd {
    DECLARE_DYNAMIC(CStatic)
  public:
    /// WS_CHILD is added to the style.
    BOOL Create(const char16_t* text, DWORD style, const RECT& rect, CWnd* parent,
                UINT id = 0xFFFF);
};
