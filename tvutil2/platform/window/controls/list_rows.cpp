#include "tvutil2/platform/window/controls/list_rows.h"

#include "tvutil2/platform/window/controls/control.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/mouse.h"
#include "tvutil2/platform/window/scrolling.h"

#include <algorithm>
#include <utility>

namespace tvutil2 {

int WheelTurn::rows(int delta) {
    constexpr int kRowsOfNotch = 3;
    const bool goes_on = (delta > 0) == (m_rest < 0);
    m_rest = (goes_on ? m_rest : 0) - delta * kRowsOfNotch;
    const int whole = m_rest / WHEEL_DELTA;
    m_rest -= whole * WHEEL_DELTA;
    return whole;
}

int ListRows::in_view(const RECT& client) const {
    return std::max<int>((client.bottom - client.top - above) / height, 1);
}

RECT ListRows::place(const RECT& client, int row) const {
    const auto away = (std::int64_t{row} - top) * height;
    const auto from = static_cast<LONG>(std::clamp<std::int64_t>(away, -100000, 100000)) + above;
    return {client.left, from, client.right, from + height};
}

int ListRows::at(const RECT& client, int count, int y) const {
    if (y < above || y >= client.bottom) return -1;
    const int row = top + (y - above) / height;
    return row < count ? row : -1;
}

int ListRows::last_top(const RECT& client, int count) const {
    return std::max(count - in_view(client), 0);
}

int ListRows::top_for(const RECT& client, int row) const {
    if (row < top) return row;
    return std::max(top, row + 1 - in_view(client));
}

bool show_rows_from(HWND window, ListRows& rows, int count, int top) {
    const auto client = client_of(window);
    const auto before = std::exchange(rows.top, std::clamp(top, 0, rows.last_top(client, count)));
    if (rows.has_bar) {
        const SCROLLINFO info{
            sizeof info,
            SIF_RANGE | SIF_PAGE | SIF_POS | (rows.keeps_bar ? SIF_DISABLENOSCROLL : 0U),
            0,
            std::max(count - 1, 0),
            static_cast<UINT>(rows.in_view(client)),
            rows.top,
            0};
        SetScrollInfo(window, SB_VERT, &info, TRUE);
    }
    if (before != rows.top) repaint(window);
    return before != rows.top;
}

namespace {

// What WM_VSCROLL asks for: the first row then.
int top_after_scroll(HWND window, const ListRows& rows, int count, WORD code) {
    const auto client = client_of(window);
    SCROLLINFO info{};
    info.cbSize = sizeof info;
    info.fMask = SIF_TRACKPOS;
    switch (code) {
        case SB_LINEUP:
            return rows.top - 1;
        case SB_LINEDOWN:
            return rows.top + 1;
        case SB_PAGEUP:
            return rows.top - rows.in_view(client);
        case SB_PAGEDOWN:
            return rows.top + rows.in_view(client);
        case SB_TOP:
            return 0;
        case SB_BOTTOM:
            return count;
        case SB_THUMBTRACK:
        case SB_THUMBPOSITION:
            GetScrollInfo(window, SB_VERT, &info);
            return info.nTrackPos;
        default:
            return rows.top;
    }
}

}  // namespace

bool scroll_rows(HWND window, ListRows& rows, int count, UINT message, WPARAM wparam) {
    if (message == WM_VSCROLL) {
        const auto top = top_after_scroll(window, rows, count, LOWORD(wparam));
        show_rows_from(window, rows, count, top);
    } else if (message == WM_MOUSEWHEEL) {
        const auto by = rows.wheel.rows(GET_WHEEL_DELTA_WPARAM(wparam));
        show_rows_from(window, rows, count, rows.top + by);
    } else {
        return false;
    }
    return true;
}

int row_after_key(const ListRows& rows, const RECT& client, int count, int from, WPARAM key) {
    if (count == 0) return from;
    const auto page = std::max(rows.in_view(client) - 1, 1);
    const auto go = [&](int to) { return std::clamp(to, 0, count - 1); };
    switch (key) {
        case VK_UP:
            return go(from - 1);
        case VK_DOWN:
            return go(from + 1);
        case VK_PRIOR:
            return go(from - page);
        case VK_NEXT:
            return go(std::max(from, 0) + page);
        case VK_HOME:
            return go(0);
        case VK_END:
            return go(count - 1);
        default:
            return from;
    }
}

}  // namespace tvutil2
