// The frame around a client area: its size, and what it answers.
#include "tvutil2/platform/draw/rect.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/hit_test.h"
#include "tvutil2/platform/window/menus/menu_bar.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/system_metrics.h"
#include "tvutil2/platform/window/window.h"
#include "tvutil2/platform/window/window_states.h"

#include <algorithm>

namespace tvutil2 {
namespace {

struct FrameFacts {
    RECT window{}, client{};  // on the screen
    DWORD style = 0, ex_style = 0;
    UINT dpi = 96;
    HMENU menu = nullptr;
};

bool find_facts(HWND window, FrameFacts& facts) {
    const TreeLock tree;
    const auto* const record = tree.table.find(window);
    if (record == nullptr) return false;
    const auto corner = corner_of(*record);
    const auto& rect = record->rect;
    const auto& client = record->client;
    facts = {
        {corner.x, corner.y, corner.x + rect.right - rect.left, corner.y + rect.bottom - rect.top},
        {corner.x + client.left, corner.y + client.top, corner.x + client.right,
         corner.y + client.bottom},
        record->style,
        record->ex_style,
        dpi_of(*record),
        menu_of(*record)};
    return true;
}

// The edges of a window that can be sized, with corners that are easy to hit.
LRESULT hit_edge(const FrameFacts& facts, POINT point) {
    const auto frame = frame_thickness(facts.style, facts.ex_style, facts.dpi);
    const auto corner = 2 * frame.left;
    const auto& window = facts.window;
    const bool is_left = point.x < window.left + frame.left;
    const bool is_right = point.x >= window.right - frame.right;
    const bool is_top = point.y < window.top + frame.left;
    const bool is_bottom = point.y >= window.bottom - frame.bottom;
    if (!is_left && !is_right && !is_top && !is_bottom) return HTNOWHERE;
    const bool is_near_left = point.x < window.left + corner;
    const bool is_near_right = point.x >= window.right - corner;
    const bool is_near_top = point.y < window.top + corner;
    const bool is_near_bottom = point.y >= window.bottom - corner;
    if (is_near_top && is_near_left) return HTTOPLEFT;
    if (is_near_top && is_near_right) return HTTOPRIGHT;
    if (is_near_bottom && is_near_left) return HTBOTTOMLEFT;
    if (is_near_bottom && is_near_right) return HTBOTTOMRIGHT;
    if (is_left) return HTLEFT;
    if (is_right) return HTRIGHT;
    return is_top ? HTTOP : HTBOTTOM;
}

LRESULT hit_test(HWND window, POINT point) {
    FrameFacts facts;
    if (!find_facts(window, facts) || PtInRect(&facts.window, point) == 0) return HTNOWHERE;
    if ((facts.style & WS_THICKFRAME) != 0 && (facts.style & (WS_MAXIMIZE | WS_MINIMIZE)) == 0) {
        if (const auto edge = hit_edge(facts, point); edge != HTNOWHERE) return edge;
    }
    if (PtInRect(&facts.client, point) != 0) return HTCLIENT;
    const bool is_beside = point.y >= facts.client.top && point.y < facts.client.bottom;
    const bool is_below = point.x >= facts.client.left && point.x < facts.client.right;
    const auto bar = GetSystemMetricsForDpi(SM_CXVSCROLL, facts.dpi);
    if ((facts.style & WS_VSCROLL) != 0 && is_beside && point.x >= facts.client.right &&
        point.x < facts.client.right + bar) {
        return HTVSCROLL;
    }
    if ((facts.style & WS_HSCROLL) != 0 && is_below && point.y >= facts.client.bottom &&
        point.y < facts.client.bottom + bar) {
        return HTHSCROLL;
    }
    const auto menu_bar = menu_bar_place(window);
    if (PtInRect(&menu_bar, point) != 0) return HTMENU;
    if ((facts.style & WS_CAPTION) != WS_CAPTION || point.y >= facts.client.top) return HTBORDER;
    const auto button = close_button_of(window);
    return PtInRect(&button, point) != 0 ? HTCLOSE : HTCAPTION;
}

void calculate_client(HWND window, RECT& rect) {
    FrameFacts facts;
    if (!find_facts(window, facts) || (facts.style & WS_MINIMIZE) != 0) return;
    const auto frame = frame_thickness(facts.style, facts.ex_style, facts.dpi);
    rect.left += frame.left;
    rect.top += frame.top;
    rect.right -= frame.right;
    rect.bottom -= frame.bottom;
    rect.top += menu_bar_height(facts.menu, static_cast<int>(rect.right - rect.left), facts.dpi);
    const auto bar = GetSystemMetricsForDpi(SM_CXVSCROLL, facts.dpi);
    if ((facts.style & WS_VSCROLL) != 0) rect.right -= bar;
    if ((facts.style & WS_HSCROLL) != 0) rect.bottom -= bar;
    rect.right = std::max(rect.left, rect.right);
    rect.bottom = std::max(rect.top, rect.bottom);
}

void limit_position(HWND window, WINDOWPOS& wanted) {
    if ((wanted.flags & SWP_NOSIZE) != 0) return;
    if (!has_limits(static_cast<DWORD>(GetWindowLongW(window, GWL_STYLE)))) return;
    const auto size = within(limits_of(window), {wanted.cx, wanted.cy});
    wanted.cx = size.cx;
    wanted.cy = size.cy;
}

WPARAM size_type(DWORD style) {
    if ((style & WS_MINIMIZE) != 0) return SIZE_MINIMIZED;
    return (style & WS_MAXIMIZE) != 0 ? SIZE_MAXIMIZED : SIZE_RESTORED;
}

struct Told {
    RECT client{};  // in the parent's client area
    DWORD style = 0;
};

bool find_told(HWND window, Told& told) {
    const TreeLock tree;
    const auto* const record = tree.table.find(window);
    if (record == nullptr) return false;
    const auto& rect = record->rect;
    const auto& client = record->client;
    told = {{rect.left + client.left, rect.top + client.top, rect.left + client.right,
             rect.top + client.bottom},
            record->style};
    return true;
}

void send_size(HWND window) {
    Told told;
    if (!find_told(window, told)) return;
    const bool is_minimised = (told.style & WS_MINIMIZE) != 0;
    const auto width = is_minimised ? 0 : told.client.right - told.client.left;
    const auto height = is_minimised ? 0 : told.client.bottom - told.client.top;
    SendMessageW(window, WM_SIZE, size_type(told.style),
                 MAKELPARAM(static_cast<WORD>(width), static_cast<WORD>(height)));
}

void send_move(HWND window) {
    Told told;
    if (!find_told(window, told)) return;
    SendMessageW(
        window, WM_MOVE, 0,
        MAKELPARAM(static_cast<WORD>(told.client.left), static_cast<WORD>(told.client.top)));
}

}  // namespace

void tell_size(HWND window, bool anew) {
    {
        const TreeLock tree;
        auto* const record = tree.table.find(window);
        if (record == nullptr || (record->was_sized && !anew)) return;
        record->was_sized = true;
    }
    send_size(window);
    send_move(window);
}

RECT frame_thickness(DWORD style, DWORD ex_style, UINT dpi) {
    int side = 0;
    if ((style & WS_THICKFRAME) != 0) {
        side = GetSystemMetricsForDpi(SM_CXSIZEFRAME, dpi);
    } else if ((style & WS_DLGFRAME) != 0 || (ex_style & WS_EX_DLGMODALFRAME) != 0) {
        side = GetSystemMetricsForDpi(SM_CXFIXEDFRAME, dpi);
    } else if ((style & WS_BORDER) != 0) {
        side = GetSystemMetricsForDpi(SM_CXBORDER, dpi);
    }
    if ((ex_style & WS_EX_CLIENTEDGE) != 0) side += GetSystemMetricsForDpi(SM_CXEDGE, dpi);
    if ((ex_style & WS_EX_STATICEDGE) != 0) side += GetSystemMetricsForDpi(SM_CXBORDER, dpi);
    const bool has_caption = (style & WS_CAPTION) == WS_CAPTION;
    const int caption = has_caption ? GetSystemMetricsForDpi(SM_CYCAPTION, dpi) : 0;
    return {side, side + caption, side, side};
}

bool has_limits(DWORD style) {
    return (style & WS_THICKFRAME) != 0 || (style & (WS_CHILD | WS_POPUP)) == 0;
}

MINMAXINFO default_limits(DWORD style, DWORD ex_style, const RECT& rect) {
    const auto monitor = monitor_at(rect);
    const auto frame = frame_thickness(style, ex_style, monitor.dpi);
    const auto& work = monitor.work;
    const auto overlap = (style & WS_THICKFRAME) != 0 ? frame.left : 0;
    const POINT largest{work.right - work.left + 2 * overlap, work.bottom - work.top + 2 * overlap};
    MINMAXINFO limits{};
    limits.ptMaxSize = largest;
    limits.ptMaxPosition = {work.left - overlap, work.top - overlap};
    limits.ptMinTrackSize = {GetSystemMetricsForDpi(SM_CXMINTRACK, monitor.dpi),
                             GetSystemMetricsForDpi(SM_CYMINTRACK, monitor.dpi)};
    RECT all{};
    for (const auto& each : monitors()) {
        all.right = std::max(all.right, each.area.right);
        all.bottom = std::max(all.bottom, each.area.bottom);
    }
    limits.ptMaxTrackSize = {all.right + 2 * frame.left + 12, all.bottom + 2 * frame.left + 12};
    return limits;
}

MINMAXINFO limits_of(HWND window) {
    FrameFacts facts;
    if (!find_facts(window, facts)) return {};
    auto limits = default_limits(facts.style, facts.ex_style, facts.window);
    SendMessageW(window, WM_GETMINMAXINFO, 0, reinterpret_cast<LPARAM>(&limits));
    return limits;
}

SIZE within(const MINMAXINFO& limits, SIZE size) {
    const auto& least = limits.ptMinTrackSize;
    const auto& most = limits.ptMaxTrackSize;
    return {std::max(least.x, std::min(most.x, size.cx)),
            std::max(least.y, std::min(most.y, size.cy))};
}

RECT close_button_of(HWND window) {
    FrameFacts facts;
    if (!find_facts(window, facts)) return {};
    constexpr DWORD kCloses = WS_CAPTION | WS_SYSMENU;
    if ((facts.style & kCloses) != kCloses) return {};
    const auto frame = frame_thickness(facts.style, facts.ex_style, facts.dpi);
    const auto height = frame.top - frame.left;
    const auto right = facts.window.right - frame.right;
    const auto top = facts.window.top + frame.left;
    return {std::max(facts.window.left, right - height * 3 / 2), top, right, top + height};
}

bool handle_frame_message(HWND window, UINT message, LPARAM lparam, LRESULT& result) {
    result = 0;
    switch (message) {
        case WM_NCCALCSIZE:
            // With either kind of lparam the first thing there is a rectangle.
            calculate_client(window, *reinterpret_cast<RECT*>(lparam));
            return true;
        case WM_NCHITTEST:
            result =
                hit_test(window, {static_cast<std::int16_t>(LOWORD(static_cast<WPARAM>(lparam))),
                                  static_cast<std::int16_t>(HIWORD(static_cast<WPARAM>(lparam)))});
            return true;
        case WM_WINDOWPOSCHANGING:
            limit_position(window, *reinterpret_cast<WINDOWPOS*>(lparam));
            return true;
        case WM_WINDOWPOSCHANGED: {
            const auto flags = reinterpret_cast<const WINDOWPOS*>(lparam)->flags;
            if ((flags & SWP_NOCLIENTMOVE) == 0) send_move(window);
            if ((flags & SWP_NOCLIENTSIZE) == 0) send_size(window);
            return true;
        }
        default:
            return false;
    }
}

}  // namespace tvutil2
