// The handle of a window object that may be missing.
#pragma once

#include "tvutil2/framework/wnd.h"

inline HWND handle_of(const CWnd* window) {
    return window != nullptr ? window->m_hWnd : nullptr;
}
