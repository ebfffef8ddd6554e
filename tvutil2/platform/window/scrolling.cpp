#include "tvutil2/platform/window/scrolling.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/draw/shapes.h"
#include "tvutil2/platform/draw/theme.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/hit_test.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/mouse.h"
#include "tvutil2/platform/window/parameters.h"
#include "tvutil2/platform/window/scroll_bars.h"
#include "tvutil2/platform/window/scroll_hold.h"
#include "tvutil2/platform/window/show.h"
#include "tvutil2/platform/window/window.h"
#include "tvutil2/platform/window/window_states.h"

#include <array>
#include <utility>

namespace tvutil2 {
namespace {

int bar_of_hit(WPARAM hit) {
    return static_cast<LRESULT>(hit) == HTVSCROLL   ? SB_VERT
           : static_cast<LRESULT>(hit) == HTHSCROLL ? SB_HORZ
                                                    : -1;
}

POINT point_of(LPARAM lparam) {
    return {GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam)};
}

}  // namespace

void paint_scroll_bars(HWND window, HDC context) {
    ScrollBars bars;
    std::array<ScrollBarPlace, 2> places{};
    std::array<bool, 2> is_there{};
    RECT corner{};
    {
        const TreeLock tree;
        auto* const record = tree.table.find(window);
        if (record == nullptr || (record->style & (WS_VSCROLL | WS_HSCROLL)) == 0) return;
        bars = scroll_bars_of(*record);
        for (const int bar : {SB_HORZ, SB_VERT}) {
            const auto index = static_cast<std::size_t>(bar);
            is_there[index] = (record->style & style_of_bar(bar)) != 0;
            places[index] = {scroll_bar_area(*record, bar), bar == SB_VERT, dpi_of(*record)};
            if ((record->style & WS_DISABLED) != 0) bars.bars[index].is_disabled = true;
        }
        corner = {places[1].area.left, places[0].area.top, places[1].area.right,
                  places[0].area.bottom};
    }
    for (std::size_t i = 0; i < 2; ++i) {
        if (!is_there[i]) continue;
        const bool is_active = bars.active == static_cast<int>(i);
        places[i].draw(context, bars.bars[i], is_active ? bars.hot : ScrollPart::none,
                       is_active ? bars.pressed : ScrollPart::none);
    }
    if (is_there[0] && is_there[1]) FillRect(context, &corner, GetSysColorBrush(COLOR_SCROLLBAR));
}

void cool_scroll_bars(HWND window) {
    {
        const TreeLock tree;
        const auto* const record = tree.table.find(window);
        if (record == nullptr || !record->scroll_bars ||
            record->scroll_bars->hot == ScrollPart::none ||
            record->scroll_bars->pressed != ScrollPart::none) {
            return;
        }
    }
    change_bar_looks(window, -1, ScrollPart::none, ScrollPart::none);
}

bool handle_scroll_message(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
        case WM_NCLBUTTONDOWN:
        case WM_NCLBUTTONDBLCLK: {
            const auto bar = bar_of_hit(wparam);
            if (bar < 0) return false;
            hold_scroll_bar(window, bar, point_of(lparam));
            return true;
        }
        case WM_NCMOUSEMOVE: {
            const auto bar = bar_of_hit(wparam);
            if (bar >= 0) {
                heat_scroll_bar(window, bar, point_of(lparam));
            } else {
                cool_scroll_bars(window);
            }
            return bar >= 0;
        }
        case WM_MOUSEMOVE:
        case WM_MOUSELEAVE:
            cool_scroll_bars(window);
            return false;
        default:
            return false;
    }
}

}  // namespace tvutil2

using tvutil2::as_lparam;
using tvutil2::TreeLock;

int SetScrollInfo(HWND window, int bar, const SCROLLINFO* info, BOOL redraw) {
    if (info == nullptr || bar < SB_HORZ || bar > SB_CTL) {
        return tvutil2::fail_with(ERROR_INVALID_PARAMETER);
    }
    if (bar != SB_CTL) return tvutil2::set_bar_info(window, bar, *info);
    return static_cast<int>(SendMessageW(window, SBM_SETSCROLLINFO, redraw != 0, as_lparam(info)));
}

BOOL GetScrollInfo(HWND window, int bar, SCROLLINFO* info) {
    if (info == nullptr || info->cbSize != sizeof *info || bar < SB_HORZ || bar > SB_CTL) {
        return tvutil2::fail_with(ERROR_INVALID_PARAMETER);
    }
    if (bar == SB_CTL) {
        return SendMessageW(window, SBM_GETSCROLLINFO, 0, as_lparam(info)) != 0 ? TRUE : FALSE;
    }
    const TreeLock tree;
    auto* const record = tree.find(window);
    if (record == nullptr) return FALSE;
    tvutil2::scroll_bars_of(*record).bars[static_cast<std::size_t>(bar)].get(*info);
    return TRUE;
}

int SetScrollPos(HWND window, int bar, int position, BOOL redraw) {
    const auto before = GetScrollPos(window, bar);
    const SCROLLINFO info{sizeof info, SIF_POS, 0, 0, 0, position, 0};
    SetScrollInfo(window, bar, &info, redraw);
    return before;
}

int GetScrollPos(HWND window, int bar) {
    SCROLLINFO info{};
    info.cbSize = sizeof info;
    info.fMask = SIF_POS;
    return GetScrollInfo(window, bar, &info) ? info.nPos : 0;
}

BOOL SetScrollRange(HWND window, int bar, int least, int most, BOOL redraw) {
    const SCROLLINFO info{sizeof info, SIF_RANGE, least, most, 0, 0, 0};
    SetScrollInfo(window, bar, &info, redraw);
    return IsWindow(window);
}

BOOL ShowScrollBar(HWND window, int bar, BOOL show) {
    if (bar == SB_CTL) {
        ShowWindow(window, show != 0 ? SW_SHOW : SW_HIDE);
        return IsWindow(window);
    }
    {
        const TreeLock tree;
        auto* const record = tree.find(window);
        if (record == nullptr) return FALSE;
        const DWORD bits = bar == SB_BOTH ? WS_VSCROLL | WS_HSCROLL : tvutil2::style_of_bar(bar);
        const auto style = show != 0 ? record->style | bits : record->style & ~bits;
        if (std::exchange(record->style, style) == style) return TRUE;
    }
    return SetWindowPos(window, nullptr, 0, 0, 0, 0,
                        SWP_FRAMECHANGED | SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}
