// What a CWnd does by the platform's functions of the same names.
#include "tvutil2/framework/app.h"
#include "tvutil2/framework/graphics.h"
#include "tvutil2/framework/menus.h"
#include "tvutil2/framework/window_handle.h"
#include "tvutil2/framework/wnd.h"
#include "tvutil2/platform/display/monitors.h"
#include "tvutil2/platform/process/message_box.h"
#include "tvutil2/platform/window/find_windows.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/menus/menu_bar.h"
#include "tvutil2/platform/window/paint.h"
#include "tvutil2/platform/window/scrolling.h"
#include "tvutil2/platform/window/show.h"
#include "tvutil2/platform/window/timers.h"
#include "tvutil2/platform/window/window.h"

#include <algorithm>
#include <string>

namespace {

POINT* corners(RECT* rect) {
    return reinterpret_cast<POINT*>(rect);
}

BOOL modify(HWND window, int which, DWORD remove, DWORD add, UINT flags) {
    const auto before = static_cast<DWORD>(GetWindowLongW(window, which));
    const auto now = (before & ~remove) | add;
    if (before == now) return FALSE;
    SetWindowLongW(window, which, static_cast<LONG>(now));
    constexpr UINT kOnly = SWP_NOSIZE | SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE;
    if (flags != 0) ::SetWindowPos(window, nullptr, 0, 0, 0, 0, kOnly | flags);
    return TRUE;
}

}  // namespace

CWnd* tvutil2::window_object(WPARAM window) {
    return CWnd::FromHandle(reinterpret_cast<HWND>(window));
}

CDC* tvutil2::context_object(WPARAM context) {
    return CDC::FromHandle(reinterpret_cast<HDC>(context));
}

CMenu* tvutil2::menu_object(WPARAM menu) {
    return CMenu::FromHandle(reinterpret_cast<HMENU>(menu));
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
    return modify(m_hWnd, GWL_STYLE, remove, add, flags);
}

BOOL CWnd::ModifyStyleEx(DWORD remove, DWORD add, UINT flags) {
    return modify(m_hWnd, GWL_EXSTYLE, remove, add, flags);
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

CWnd* CWnd::GetActiveWindow() {
    return FromHandle(::GetActiveWindow());
}

BOOL CWnd::SetForegroundWindow() {
    return ::SetForegroundWindow(m_hWnd);
}

CWnd* CWnd::GetForegroundWindow() {
    return FromHandle(::GetForegroundWindow());
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

void CWnd::ValidateRect(const RECT* rect) {
    ::ValidateRect(m_hWnd, rect);
}

BOOL CWnd::RedrawWindow(const RECT* rect, CRgn* region, UINT flags) {
    return ::RedrawWindow(m_hWnd, rect, region == nullptr ? nullptr : HRGN(*region), flags);
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

int CWnd::SetScrollPos(int bar, int position, BOOL redraw) {
    return ::SetScrollPos(m_hWnd, bar, position, redraw);
}

int CWnd::GetScrollPos(int bar) const {
    return ::GetScrollPos(m_hWnd, bar);
}

void CWnd::SetScrollRange(int bar, int least, int most, BOOL redraw) {
    ::SetScrollRange(m_hWnd, bar, least, most, redraw);
}

BOOL CWnd::SetScrollInfo(int bar, SCROLLINFO* info, BOOL redraw) {
    info->cbSize = sizeof *info;
    ::SetScrollInfo(m_hWnd, bar, info, redraw);
    return TRUE;
}

BOOL CWnd::GetScrollInfo(int bar, SCROLLINFO* info, UINT what) const {
    info->cbSize = sizeof *info;
    info->fMask = what;
    return ::GetScrollInfo(m_hWnd, bar, info);
}

CMenu* CWnd::GetMenu() const {
    return CMenu::FromHandle(::GetMenu(m_hWnd));
}

BOOL CWnd::SetMenu(CMenu* menu) {
    return ::SetMenu(m_hWnd, menu != nullptr ? menu->m_hMenu : nullptr);
}

void CWnd::DrawMenuBar() {
    ::DrawMenuBar(m_hWnd);
}

CWnd* CWnd::FindWindow(const char16_t* class_name, const char16_t* title) {
    return FromHandle(FindWindowW(class_name, title));
}

CWnd* CWnd::WindowFromPoint(POINT point) {
    return FromHandle(::WindowFromPoint(point));
}

CWnd* CWnd::GetOwner() const {
    return FromHandle(::GetWindow(m_hWnd, GW_OWNER));
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

int CWnd::MessageBox(const char16_t* text, const char16_t* caption, UINT type) {
    const auto* const app = AfxGetApp();
    const bool is_named = app != nullptr && app->m_pszAppName != nullptr;
    return MessageBoxW(m_hWnd, text, caption == nullptr && is_named ? app->m_pszAppName : caption,
                       type);
}
