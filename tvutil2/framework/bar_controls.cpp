#include "tvutil2/framework/bar_controls.h"

#include "tvutil2/framework/temporaries.h"

IMPLEMENT_DYNAMIC(CScrollBar, CWnd)
IMPLEMENT_DYNAMIC(CProgressCtrl, CWnd)

CScrollBar* tvutil2::scroll_bar_object(LPARAM bar) {
    auto* const window = reinterpret_cast<HWND>(bar);
    auto* const lasting = dynamic_cast<CScrollBar*>(CWnd::FromHandlePermanent(window));
    return lasting != nullptr ? lasting : Temporaries<CScrollBar>::of(window);
}
