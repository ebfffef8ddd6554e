// What the handlers do that a class hasn't got: the default.
#include "tvutil2/framework/wnd.h"

int CWnd::OnCreate(CREATESTRUCTW* /*given*/) {
    return static_cast<int>(Default());
}
BOOL CWnd::OnEraseBkgnd(CDC* /*context*/) {
    return Default() != 0 ? TRUE : FALSE;
}
HBRUSH CWnd::OnCtlColor(CDC* /*context*/, CWnd* /*control*/, UINT /*kind*/) {
    return reinterpret_cast<HBRUSH>(reflect_or_default());
}
LRESULT CWnd::OnNcHitTest(CPoint /*point*/) {
    return Default();
}
BOOL CWnd::OnSetCursor(CWnd* /*window*/, UINT /*hit*/, UINT /*message*/) {
    return Default() != 0 ? TRUE : FALSE;
}
UINT CWnd::OnGetDlgCode() {
    return static_cast<UINT>(Default());
}
BOOL CWnd::OnMouseWheel(UINT /*keys*/, short /*delta*/, CPoint /*point*/) {
    return Default() != 0 ? TRUE : FALSE;
}

// Those that give nothing.

void CWnd::OnDestroy() {
    Default();
}
void CWnd::OnNcDestroy() {
    Default();
}
void CWnd::OnClose() {
    Default();
}
void CWnd::OnSize(UINT /*type*/, int /*width*/, int /*height*/) {
    Default();
}
void CWnd::OnMove(int /*x*/, int /*y*/) {
    Default();
}
void CWnd::OnGetMinMaxInfo(MINMAXINFO* /*limits*/) {
    Default();
}
void CWnd::OnWindowPosChanging(WINDOWPOS* /*place*/) {
    Default();
}
void CWnd::OnWindowPosChanged(WINDOWPOS* /*place*/) {
    Default();
}
void CWnd::OnShowWindow(BOOL /*show*/, UINT /*why*/) {
    Default();
}
void CWnd::OnEnable(BOOL /*enable*/) {
    Default();
}
void CWnd::OnActivate(UINT /*state*/, CWnd* /*other*/, BOOL /*minimized*/) {
    Default();
}
void CWnd::OnPaint() {
    Default();
}
void CWnd::OnDrawItem(int /*id*/, DRAWITEMSTRUCT* /*item*/) {
    reflect_or_default();
}
void CWnd::OnSetFocus(CWnd* /*before*/) {
    Default();
}
void CWnd::OnKillFocus(CWnd* /*next*/) {
    Default();
}
void CWnd::OnKeyDown(UINT /*key*/, UINT /*count*/, UINT /*flags*/) {
    Default();
}
void CWnd::OnKeyUp(UINT /*key*/, UINT /*count*/, UINT /*flags*/) {
    Default();
}
void CWnd::OnChar(UINT /*character*/, UINT /*count*/, UINT /*flags*/) {
    Default();
}
void CWnd::OnMouseMove(UINT /*keys*/, CPoint /*point*/) {
    Default();
}
void CWnd::OnLButtonDown(UINT /*keys*/, CPoint /*point*/) {
    Default();
}
void CWnd::OnLButtonUp(UINT /*keys*/, CPoint /*point*/) {
    Default();
}
void CWnd::OnLButtonDblClk(UINT /*keys*/, CPoint /*point*/) {
    Default();
}
void CWnd::OnRButtonDown(UINT /*keys*/, CPoint /*point*/) {
    Default();
}
void CWnd::OnRButtonUp(UINT /*keys*/, CPoint /*point*/) {
    Default();
}
void CWnd::OnMouseLeave() {
    Default();
}
void CWnd::OnCaptureChanged(CWnd* /*next*/) {
    Default();
}
void CWnd::OnInitMenuPopup(CMenu* /*menu*/, UINT /*position*/, BOOL /*is_system*/) {
    Default();
}
void CWnd::OnContextMenu(CWnd* /*window*/, CPoint /*point*/) {
    Default();
}
void CWnd::OnSysCommand(UINT /*command*/, LPARAM /*parameter*/) {
    Default();
}
void CWnd::OnHScroll(UINT /*code*/, UINT /*position*/, CScrollBar* /*bar*/) {
    reflect_or_default();
}
void CWnd::OnVScroll(UINT /*code*/, UINT /*position*/, CScrollBar* /*bar*/) {
    reflect_or_default();
}
void CWnd::OnTimer(UINT_PTR /*id*/) {
    Default();
}
