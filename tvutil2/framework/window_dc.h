// Device contexts of windows, lent for as long as the object lives.
#pragma once

#include "tvutil2/framework/graphics.h"
#include "tvutil2/framework/wnd.h"
#include "tvutil2/platform/window/paint.h"

/// The client area; a null window stands for the screen.
class TVUTIL_API CClientDC : public CDC {
  public:
    explicit CClientDC(CWnd* window);
    ~CClientDC() override;

  protected:
    HWND m_hWnd;
};

/// The window with its frame.
class TVUTIL_API CWindowDC : public CDC {
  public:
    explicit CWindowDC(CWnd* window);
    ~CWindowDC() override;

  protected:
    HWND m_hWnd;
};

/// What is out of date of the client area, in WM_PAINT.
class TVUTIL_API CPaintDC : public CDC {
  public:
    explicit CPaintDC(CWnd* window);
    ~CPaintDC() override;

    PAINTSTRUCT m_ps{};

  protected:
    HWND m_hWnd;
};
