#include "tvutil2/platform/window/scrolling.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/draw/rect.h"
#include "tvutil2/platform/draw/shapes.h"
#include "tvutil2/platform/draw/theme.h"
#include "tvutil2/platform/window/default_paint.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/held_capture.h"
#include "tvutil2/platform/window/hit_test.h"
#include "tvutil2/platform/window/input.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/mouse.h"
#include "tvutil2/platform/window/paint.h"
#include "tvutil2/platform/window/parameters.h"
#include "tvutil2/platform/window/scroll_bars.h"
#include "tvutil2/platform/window/show.h"
#include "tvutil2/platform/window/timers.h"
#include "tvutil2/platform/window/window.h"
#include "tvutil2/platform/window/window_states.h"

#include <algorithm>
#include <utility>

namespace tvutil2 {
namespace {

constexpr UINT_PTR kRepeatTimer = ~UINT_PTR{0} - 31;
constexpr UINT kFirstRepeat = 350;
constexpr UINT kRepeat = 50;

DWORD style_of_bar(int bar) {
    return bar == SB_VERT ? WS_VSCROLL : WS_HSCROLL;
}

bool is_vertical_bar(const Window& window, int bar) {
    return bar == SB_VERT || (bar == SB_CTL && (window.style & SBS_VERT) != 0);
}

// A bar as it is now, on the screen.
struct Seen {
    ScrollBarPlace place;
    ScrollState state;
};

bool look_at(HWND window, int bar, Seen& seen) {
    const TreeLock tree;
    auto* const record = tree.table.find(window);
    if (record == nullptr) return false;
    if (bar != SB_CTL && (record->style & style_of_bar(bar)) == 0) return false;
    seen.place = {moved(scroll_bar_area(*record, bar), corner_of(*record)),
                  is_vertical_bar(*record, bar), dpi_of(*record)};
    seen.state = scroll_bars_of(*record).bars[static_cast<std::size_t>(bar)];
    return true;
}

void repaint_bar(HWND window, int bar) {
    if (bar == SB_CTL) {
        InvalidateRect(window, nullptr, FALSE);
    } else {
        repaint_frame(window);
    }
}

void change_looks(HWND window, int bar, ScrollPart hot, ScrollPart pressed) {
    {
        const TreeLock tree;
        auto* const record = tree.table.find(window);
        if (record == nullptr) return;
        auto& bars = scroll_bars_of(*record);
        if (hot == bars.hot && pressed == bars.pressed && (bar == bars.active || bar < 0)) return;
        bars.active = bar;
        bars.hot = hot;
        bars.pressed = pressed;
    }
    repaint_bar(window, bar == SB_CTL ? SB_CTL : SB_VERT);
}

void set_tracked(HWND window, int bar, int tracked) {
    const TreeLock tree;
    if (auto* const record = tree.table.find(window)) {
        scroll_bars_of(*record).bars[static_cast<std::size_t>(bar)].tracked = tracked;
    }
}

// The person holds a bar.
class Hold {
  public:
    Hold(HWND window, int bar, POINT from) : m_window(window), m_bar(bar), m_from(from) {}

    void run() {
        if (!look_at(m_window, m_bar, m_seen) || !m_seen.state.is_needed() ||
            m_seen.state.is_disabled) {
            return;
        }
        m_at = m_from;
        m_part = m_seen.place.part_at(m_seen.state, m_from);
        m_start = m_seen.state;
        const HeldCapture capture(m_window);
        const Repeated repeated{m_window};
        change_looks(m_window, m_bar, m_part, m_part);
        act();
        if (m_part != ScrollPart::thumb) SetTimer(m_window, kRepeatTimer, kFirstRepeat, nullptr);
        loop(capture);
        repeated.end();
        capture.release();
        if (m_part == ScrollPart::thumb) tell(SB_THUMBPOSITION, m_thumb);
        tell(SB_ENDSCROLL, 0);
        change_looks(m_window, m_bar, ScrollPart::none, ScrollPart::none);
    }

  private:
    struct Repeated {
        HWND window;
        void end() const { KillTimer(window, kRepeatTimer); }
        ~Repeated() { end(); }
    };

    void loop(const HeldCapture& capture) {
        MSG message{};
        while (IsWindow(m_window) && capture.is_held()) {
            if (GetMessageW(&message, nullptr, 0, 0) <= 0) {
                PostQuitMessage(static_cast<int>(message.wParam));
                return;
            }
            if (message.message == WM_LBUTTONUP) return;
            if (message.message == WM_MOUSEMOVE) {
                m_at = message.pt;
                if (m_part == ScrollPart::thumb) act();
            } else if (message.message == WM_TIMER && message.wParam == kRepeatTimer) {
                SetTimer(m_window, kRepeatTimer, kRepeat, nullptr);
                if (look_at(m_window, m_bar, m_seen) &&
                    m_seen.place.part_at(m_seen.state, m_at) == m_part) {
                    act();
                }
            } else {
                TranslateMessage(&message);
                DispatchMessageW(&message);
            }
        }
    }

    void act() {
        switch (m_part) {
            case ScrollPart::line_up:
                return tell(SB_LINEUP, 0);
            case ScrollPart::line_down:
                return tell(SB_LINEDOWN, 0);
            case ScrollPart::page_up:
                return tell(SB_PAGEUP, 0);
            case ScrollPart::page_down:
                return tell(SB_PAGEDOWN, 0);
            case ScrollPart::thumb: {
                const auto way = m_seen.place.is_vertical ? m_at.y - m_from.y : m_at.x - m_from.x;
                const auto position = m_seen.place.dragged(m_start, way);
                if (std::exchange(m_thumb, position) != position || m_at.x == m_from.x) {
                    set_tracked(m_window, m_bar, position);
                    tell(SB_THUMBTRACK, position);
                }
                return;
            }
            default:
                return;
        }
    }

    void tell(WORD code, int position) const {
        const bool is_control = m_bar == SB_CTL;
        auto* const told = is_control ? GetParent(m_window) : m_window;
        const UINT message = m_seen.place.is_vertical ? WM_VSCROLL : WM_HSCROLL;
        SendMessageW(told, message, MAKEWPARAM(code, static_cast<WORD>(position)),
                     is_control ? reinterpret_cast<LPARAM>(m_window) : 0);
    }

    HWND m_window;
    int m_bar;
    POINT m_from;
    POINT m_at{};
    Seen m_seen;
    ScrollState m_start;
    ScrollPart m_part = ScrollPart::none;
    int m_thumb = 0;
};

int bar_of_hit(WPARAM hit) {
    return static_cast<LRESULT>(hit) == HTVSCROLL   ? SB_VERT
           : static_cast<LRESULT>(hit) == HTHSCROLL ? SB_HORZ
                                                    : -1;
}

POINT point_of(LPARAM lparam) {
    return {GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam)};
}

void heat(HWND window, int bar, POINT point) {
    Seen seen;
    if (!look_at(window, bar, seen)) return;
    change_looks(window, bar, seen.place.part_at(seen.state, point), ScrollPart::none);
    TRACKMOUSEEVENT track{sizeof track, TME_LEAVE, window, 0};
    TrackMouseEvent(&track);
}

// True when the bar's being there changes.
bool is_to_change(const Window& window, int bar, const ScrollState& state, UINT mask) {
    if ((mask & (SIF_RANGE | SIF_PAGE)) == 0 || (mask & SIF_DISABLENOSCROLL) != 0) return false;
    return ((window.style & style_of_bar(bar)) != 0) != state.is_needed();
}

int set_info(HWND window, int bar, const SCROLLINFO& info) {
    bool changes = false;
    ScrollState state;
    {
        const TreeLock tree;
        auto* const record = tree.find(window);
        if (record == nullptr) return 0;
        auto& kept = scroll_bars_of(*record).bars[static_cast<std::size_t>(bar)];
        kept.set(info);
        state = kept;
        changes = bar != SB_CTL && is_to_change(*record, bar, state, info.fMask);
    }
    if (changes) ShowScrollBar(window, bar, state.is_needed() ? TRUE : FALSE);
    repaint_bar(window, bar);
    return state.position;
}

}  // namespace

RECT scroll_bar_area(const Window& window, int bar) {
    const auto& client = window.client;
    const auto dpi = dpi_of(window);
    int width = 0;
    look_metric(SM_CXVSCROLL, dpi, width);
    if (bar == SB_VERT) return {client.right, client.top, client.right + width, client.bottom};
    if (bar == SB_HORZ) return {client.left, client.bottom, client.right, client.bottom + width};
    return client;
}

ScrollBars& scroll_bars_of(Window& window) {
    if (!window.scroll_bars) window.scroll_bars = std::make_shared<ScrollBars>();
    return *window.scroll_bars;
}

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
    change_looks(window, -1, ScrollPart::none, ScrollPart::none);
}

bool handle_scroll_message(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
        case WM_NCLBUTTONDOWN:
        case WM_NCLBUTTONDBLCLK: {
            const auto bar = bar_of_hit(wparam);
            if (bar < 0) return false;
            Hold(window, bar, point_of(lparam)).run();
            return true;
        }
        case WM_NCMOUSEMOVE: {
            const auto bar = bar_of_hit(wparam);
            if (bar >= 0) {
                heat(window, bar, point_of(lparam));
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

// The class "ScrollBar".

namespace {

void paint_control(HWND window) {
    PAINTSTRUCT paint;
    auto* const context = BeginPaint(window, &paint);
    ScrollBars bars;
    ScrollBarPlace place;
    {
        const TreeLock tree;
        auto* const record = tree.table.find(window);
        if (record == nullptr) return;
        bars = scroll_bars_of(*record);
        const auto& client = record->client;
        place = {{0, 0, client.right - client.left, client.bottom - client.top},
                 is_vertical_bar(*record, SB_CTL),
                 dpi_of(*record)};
    }
    auto& state = bars.bars[SB_CTL];
    if (!IsWindowEnabled(window)) state.is_disabled = true;
    const bool is_focused = GetFocus() == window;
    place.draw(context, state, is_focused ? ScrollPart::thumb : bars.hot, bars.pressed);
    EndPaint(window, &paint);
}

WORD code_of_key(WPARAM key) {
    switch (key) {
        case VK_LEFT:
        case VK_UP:
            return SB_LINEUP;
        case VK_RIGHT:
        case VK_DOWN:
            return SB_LINEDOWN;
        case VK_PRIOR:
            return SB_PAGEUP;
        case VK_NEXT:
            return SB_PAGEDOWN;
        case VK_HOME:
            return SB_TOP;
        case VK_END:
            return SB_BOTTOM;
        default:
            return SB_ENDSCROLL;
    }
}

void press_key_in(HWND window, WPARAM key) {
    const auto code = code_of_key(key);
    if (code == SB_ENDSCROLL) return;
    const bool is_vertical =
        (static_cast<DWORD>(GetWindowLongW(window, GWL_STYLE)) & SBS_VERT) != 0;
    const UINT message = is_vertical ? WM_VSCROLL : WM_HSCROLL;
    for (const auto each : {code, SB_ENDSCROLL}) {
        SendMessageW(GetParent(window), message, MAKEWPARAM(each, 0), as_lparam(window));
    }
}

int set_position(HWND window, int bar, int position) {
    Seen seen;
    const int before = look_at(window, bar, seen) ? seen.state.position : 0;
    set_info(window, bar, {sizeof(SCROLLINFO), SIF_POS, 0, 0, 0, position, 0});
    return before;
}

// The messages that set and ask values. False for any other.
bool handle_values(HWND window, UINT message, WPARAM wparam, LPARAM lparam, LRESULT& result) {
    Seen seen;
    switch (message) {
        case SBM_SETPOS:
            result = set_position(window, SB_CTL, static_cast<int>(wparam));
            return true;
        case SBM_GETPOS:
            result = look_at(window, SB_CTL, seen) ? seen.state.position : 0;
            return true;
        case SBM_SETRANGE:
            set_info(window, SB_CTL,
                     {sizeof(SCROLLINFO), SIF_RANGE, static_cast<int>(wparam),
                      static_cast<int>(lparam), 0, 0, 0});
            return true;
        case SBM_GETRANGE:
            if (!look_at(window, SB_CTL, seen)) return true;
            *reinterpret_cast<int*>(wparam) = seen.state.least;
            *reinterpret_cast<int*>(lparam) = seen.state.most;
            return true;
        case SBM_SETSCROLLINFO:
            result = set_info(window, SB_CTL, *reinterpret_cast<const SCROLLINFO*>(lparam));
            return true;
        case SBM_GETSCROLLINFO:
            result = look_at(window, SB_CTL, seen) ? TRUE : FALSE;
            if (result != 0) seen.state.get(*reinterpret_cast<SCROLLINFO*>(lparam));
            return true;
        default:
            return false;
    }
}

}  // namespace

LRESULT scroll_bar_procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    LRESULT result = 0;
    if (handle_values(window, message, wparam, lparam, result)) return result;
    switch (message) {
        case WM_PAINT:
            paint_control(window);
            return 0;
        case WM_ERASEBKGND:
            return TRUE;
        case WM_GETDLGCODE:
            return 1;  // DLGC_WANTARROWS
        case WM_LBUTTONDOWN:
        case WM_LBUTTONDBLCLK: {
            const auto style = static_cast<DWORD>(GetWindowLongW(window, GWL_STYLE));
            if ((style & WS_TABSTOP) != 0) SetFocus(window);
            auto point = point_of(lparam);
            ClientToScreen(window, &point);
            Hold(window, SB_CTL, point).run();
            return 0;
        }
        case WM_MOUSEMOVE: {
            auto point = point_of(lparam);
            ClientToScreen(window, &point);
            heat(window, SB_CTL, point);
            return 0;
        }
        case WM_MOUSELEAVE:
            change_looks(window, SB_CTL, ScrollPart::none, ScrollPart::none);
            return 0;
        case WM_SETFOCUS:
        case WM_KILLFOCUS:
        case WM_ENABLE:
            InvalidateRect(window, nullptr, FALSE);
            return 0;
        case WM_KEYDOWN:
            press_key_in(window, wparam);
            return 0;
        default:
            return DefWindowProcW(window, message, wparam, lparam);
    }
}

}  // namespace tvutil2

using tvutil2::as_lparam;
using tvutil2::TreeLock;

int SetScrollInfo(HWND window, int bar, const SCROLLINFO* info, BOOL redraw) {
    if (info == nullptr || bar < SB_HORZ || bar > SB_CTL) {
        return tvutil2::fail_with(ERROR_INVALID_PARAMETER);
    }
    if (bar != SB_CTL) return tvutil2::set_info(window, bar, *info);
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
