#include "tvutil2/framework/window_dc.h"

namespace {

HWND window_of(const CWnd* window) {
    return window != nullptr ? window->GetSafeHwnd() : nullptr;
}

}  // namespace

CClientDC::CClientDC(CWnd* window) : m_hWnd(window_of(window)) {
    Attach(::GetDC(m_hWnd));
}

CClientDC::~CClientDC() {
    if (m_hDC != nullptr) ::ReleaseDC(m_hWnd, Detach());
}

CWindowDC::CWindowDC(CWnd* window) : m_hWnd(window_of(window)) {
    Attach(::GetWindowDC(m_hWnd));
}

CWindowDC::~CWindowDC() {
    if (m_hDC != nullptr) ::ReleaseDC(m_hWnd, Detach());
}

CPaintDC::CPaintDC(CWnd* window) : m_hWnd(window_of(window)) {
    Attach(::BeginPaint(m_hWnd, &m_ps));
}

CPaintDC::~CPaintDC() {
    Detach();
    ::EndPaint(m_hWnd, &m_ps);
}
