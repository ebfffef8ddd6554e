// What a CWnd does by the platform's functions of the same names, and what the handlers do that a
// class hasn't got.
#include "tvutil2/framework/app.h"
#include "tvutil2/framework/graphics.h"
#include "tvutil2/framework/window_handle.h"
#include "tvutil2/framework/wnd.h"
#include "tvutil2/platform/display/monitors.h"
#include "tvutil2/platform/process/message_box.h"
#include "tvutil2/platform/window/dialogs/dialogs.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/paint.h"
#include "tvutil2/platform/window/show.h"
#include "tvutil2/platform/window/timers.h"
#include "tvutil2/platform/window/window.h"

#include <algorithm>
#include <string>

namespace {

POINT* corners(RECT* rect) {
    return reinterpret_cast<POINT*>(rect);
}

}  // namespace

CWnd* tvutil2::window_object(WPARAM window) {
    return CWnd::FromHandle(reinterpret_cast<HWND>(window));
}

CDC* tvutil2::context_object(WPARAM context) {
    return CDC::FromHandle(reinterpret_cast<HDC>(context));
}

void CWnd::SetWindowText(const char16_t* text) {
    SetWindowTextW(m_hWnd, text);
}

void CWnd::GetWindowText(CString& text) const {
    std::u16string buffer(static_cast<std::size_t>(GetWindowTextLength()) + 1, u'\0');
    GetWindowTextW(m_hWnd, buffer.data(), static_cast<int>(buffer.size()));
    text = buffer.c_str();
}

int CWnd::GetWindowText(char16_t* text, int size) const {
    return GetWindowTextW(m_hWnd, text, size);
}

int CWnd::GetWindowTextLength() const {
    return GetWindowTextLengthW(m_hWnd);
}

UINT_PTR CWnd::SetTimer(UINT_PTR id, UINT milliseconds,
                        void (*callback)(HWND, UINT, UINT_PTR, DWORD)) {
    return ::SetTimer(m_hWnd, id, milliseconds, callback);
}

BOOL CWnd::KillTimer(UINT_PTR id) {
    return ::KillTimer(m_hWnd, id);
}

void CWnd::SetFont(CFont* font, BOOL redraw) {
    auto* const handle = font != nullptr ? font->GetSafeHandle() : nullptr;
    SendMessage(WM_SETFONT, reinterpret_cast<WPARAM>(handle), redraw != 0 ? 1 : 0);
}

CFont* CWnd::GetFont() const {
    return CFont::FromHandle(reinterpret_cast<HFONT>(SendMessage(WM_GETFONT)));
}

DWORD CWnd::GetStyle() const {
    return static_cast<DWORD>(GetWindowLongW(m_hWnd, GWL_STYLE));
}

DWORD CWnd::GetExStyle() const {
    return static_cast<DWORD>(GetWindowLongW(m_hWnd, GWL_EXSTYLE));
}

BOOL CWnd::ModifyStyle(DWORD remove, DWORD add, UINT flags) {
    const auto before = GetStyle();
    const auto now = (before & ~remove) | add;
    if (before == now) return FALSE;
    SetWindowLongW(m_hWnd, GWL_STYLE, static_cast<LONG>(now));
    constexpr UINT kOnly = SWP_NOSIZE | SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE;
    if (flags != 0) ::SetWindowPos(m_hWnd, nullptr, 0, 0, 0, 0, kOnly | flags);
    return TRUE;
}

BOOL CWnd::ShowWindow(int command) {
    return ::ShowWindow(m_hWnd, command);
}

BOOL CWnd::IsWindowVisible() const {
    return ::IsWindowVisible(m_hWnd);
}

BOOL CWnd::EnableWindow(BOOL enable) {
    return ::EnableWindow(m_hWnd, enable);
}

BOOL CWnd::IsWindowEnabled() const {
    return ::IsWindowEnabled(m_hWnd);
}

BOOL CWnd::IsIconic() const {
    return ::IsIconic(m_hWnd);
}

BOOL CWnd::IsZoomed() const {
    return ::IsZoomed(m_hWnd);
}

CWnd* CWnd::SetFocus() {
    return FromHandle(::SetFocus(m_hWnd));
}

CWnd* CWnd::GetFocus() {
    return FromHandle(::GetFocus());
}

CWnd* CWnd::SetActiveWindow() {
    return FromHandle(::SetActiveWindow(m_hWnd));
}

CWnd* CWnd::SetCapture() {
    return FromHandle(::SetCapture(m_hWnd));
}

CWnd* CWnd::GetCapture() {
    return FromHandle(::GetCapture());
}

void CWnd::GetWindowRect(RECT* rect) const {
    ::GetWindowRect(m_hWnd, rect);
}

void CWnd::GetClientRect(RECT* rect) const {
    ::GetClientRect(m_hWnd, rect);
}

void CWnd::MoveWindow(int x, int y, int width, int height, BOOL repaint) {
    ::MoveWindow(m_hWnd, x, y, width, height, repaint);
}

void CWnd::MoveWindow(const RECT* rect, BOOL repaint) {
    MoveWindow(rect->left, rect->top, rect->right - rect->left, rect->bottom - rect->top, repaint);
}

BOOL CWnd::SetWindowPos(const CWnd* after, int x, int y, int width, int height, UINT flags) {
    return ::SetWindowPos(m_hWnd, handle_of(after), x, y, width, height, flags);
}

void CWnd::BringWindowToTop() {
    ::BringWindowToTop(m_hWnd);
}

void CWnd::CenterWindow(CWnd* around) {
    auto* const other = around != nullptr ? around->m_hWnd : ::GetParent(m_hWnd);
    const bool is_child = (GetStyle() & WS_CHILD) != 0;
    RECT own{}, outer{};
    ::GetWindowRect(m_hWnd, &own);
    MONITORINFO monitor{};
    monitor.cbSize = sizeof monitor;
    GetMonitorInfoW(MonitorFromWindow(other != nullptr ? other : m_hWnd, MONITOR_DEFAULTTONEAREST),
                    &monitor);
    outer = monitor.rcWork;
    if (other != nullptr && is_child) {
        ::GetClientRect(other, &outer);
        ::MapWindowPoints(other, nullptr, corners(&outer), 2);
    } else if (other != nullptr && ::IsWindowVisible(other) != 0 && ::IsIconic(other) == 0) {
        ::GetWindowRect(other, &outer);
    }
    const auto width = own.right - own.left;
    const auto height = own.bottom - own.top;
    POINT corner{(outer.left + outer.right - width) / 2, (outer.top + outer.bottom - height) / 2};
    if (is_child) {
        ::ScreenToClient(::GetParent(m_hWnd), &corner);
    } else {
        const auto& work = monitor.rcWork;
        corner.x = std::max(work.left, std::min<LONG>(corner.x, work.right - width));
        corner.y = std::max(work.top, std::min<LONG>(corner.y, work.bottom - height));
    }
    ::SetWindowPos(m_hWnd, nullptr, corner.x, corner.y, 0, 0,
                   SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

void CWnd::ClientToScreen(POINT* point) const {
    ::ClientToScreen(m_hWnd, point);
}

void CWnd::ClientToScreen(RECT* rect) const {
    ::MapWindowPoints(m_hWnd, nullptr, corners(rect), 2);
}

void CWnd::ScreenToClient(POINT* point) const {
    ::ScreenToClient(m_hWnd, point);
}

void CWnd::ScreenToClient(RECT* rect) const {
    ::MapWindowPoints(nullptr, m_hWnd, corners(rect), 2);
}

void CWnd::MapWindowPoints(const CWnd* to, POINT* points, UINT count) const {
    ::MapWindowPoints(m_hWnd, handle_of(to), points, count);
}

void CWnd::MapWindowPoints(const CWnd* to, RECT* rect) const {
    ::MapWindowPoints(m_hWnd, handle_of(to), corners(rect), 2);
}

void CWnd::Invalidate(BOOL erase) {
    ::InvalidateRect(m_hWnd, nullptr, erase);
}

void CWnd::InvalidateRect(const RECT* rect, BOOL erase) {
    ::InvalidateRect(m_hWnd, rect, erase);
}

void CWnd::UpdateWindow() {
    ::UpdateWindow(m_hWnd);
}

void CWnd::SetRedraw(BOOL redraw) {
    SendMessage(WM_SETREDRAW, redraw != 0 ? TRUE : FALSE);
}

CDC* CWnd::GetDC() {
    return CDC::FromHandle(::GetDC(m_hWnd));
}

CDC* CWnd::GetWindowDC() {
    return CDC::FromHandle(::GetWindowDC(m_hWnd));
}

int CWnd::ReleaseDC(CDC* context) {
    return context != nullptr ? ::ReleaseDC(m_hWnd, context->m_hDC) : 0;
}

CWnd* CWnd::GetParent() const {
    return FromHandle(::GetParent(m_hWnd));
}

CWnd* CWnd::GetTopLevelParent() const {
    return FromHandle(::GetAncestor(m_hWnd, GA_ROOT));
}

CWnd* CWnd::GetWindow(UINT relation) const {
    return FromHandle(::GetWindow(m_hWnd, relation));
}

BOOL CWnd::IsChild(const CWnd* window) const {
    return ::IsChild(m_hWnd, handle_of(window));
}

CWnd* CWnd::GetDlgItem(int id) const {
    return FromHandle(::GetDlgItem(m_hWnd, id));
}

void CWnd::GetDlgItem(int id, HWND* window) const {
    *window = ::GetDlgItem(m_hWnd, id);
}

int CWnd::GetDlgCtrlID() const {
    return ::GetDlgCtrlID(m_hWnd);
}

CWnd* CWnd::GetNextDlgTabItem(CWnd* control, BOOL previous) const {
    return FromHandle(::GetNextDlgTabItem(m_hWnd, handle_of(control), previous));
}

void CWnd::SetDlgItemText(int id, const char16_t* text) {
    SetDlgItemTextW(m_hWnd, id, text);
}

int CWnd::GetDlgItemText(int id, CString& text) const {
    text.Empty();
    if (const auto* const control = GetDlgItem(id)) control->GetWindowText(text);
    return text.GetLength();
}

LRESULT CWnd::SendDlgItemMessage(int id, UINT message, WPARAM wparam, LPARAM lparam) const {
    return SendDlgItemMessageW(m_hWnd, id, message, wparam, lparam);
}

void CWnd::CheckDlgButton(int id, UINT check) {
    ::CheckDlgButton(m_hWnd, id, check);
}

UINT CWnd::IsDlgButtonChecked(int id) const {
    return ::IsDlgButtonChecked(m_hWnd, id);
}

void CWnd::CheckRadioButton(int first, int last, int checked) {
    ::CheckRadioButton(m_hWnd, first, last, checked);
}

int CWnd::GetCheckedRadioButton(int first, int last) const {
    for (int id = first; id <= last; ++id) {
        if (IsDlgButtonChecked(id) != 0) return id;
    }
    return 0;
}

int CWnd::MessageBox(const char16_t* text, const char16_t* caption, UINT type) {
    const auto* const app = AfxGetApp();
    const bool is_named = app != nullptr && app->m_pszAppName != nullptr;
    return MessageBoxW(m_hWnd, text, caption == nullptr && is_named ? app->m_pszAppName : caption,
                       type);
}

int CWnd::OnCreate(CREATESTRUCTW* /*given*/) {
    return static_cast<int>(Default());
}
BOOL CWnd::OnEraseBkgnd(CDC* /*context*/) {
    return Default() != 0 ? TRUE : FALSE;
}
HBRUSH CWnd::OnCtlColor(CDC* /*context*/, CWnd* /*control*/, UINT /*kind*/) {
    return reinterpret_cast<HBRUSH>(Default());
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
    Default();
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
void CWnd::OnContextMenu(CWnd* /*window*/, CPoint /*point*/) {
    Default();
}
void CWnd::OnSysCommand(UINT /*command*/, LPARAM /*parameter*/) {
    Default();
}
void CWnd::OnHScroll(UINT /*code*/, UINT /*position*/, CScrollBar* /*bar*/) {
    Default();
}
void CWnd::OnVScroll(UINT /*code*/, UINT /*position*/, CScrollBar* /*bar*/) {
    Default();
}
void CWnd::OnTimer(UINT_PTR /*id*/) {
    Default();
}
