#include "tvutil2/platform/window/scroll_hold.h"

#include "tvutil2/platform/window/held_capture.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/mouse.h"
#include "tvutil2/platform/window/scroll_bars.h"
#include "tvutil2/platform/window/timers.h"
#include "tvutil2/platform/window/window.h"

#include <utility>

namespace tvutil2 {
namespace {

constexpr UINT_PTR kRepeatTimer = ~UINT_PTR{0} - 31;
constexpr UINT kFirstRepeat = 350;
constexpr UINT kRepeat = 50;

void set_tracked(HWND window, int bar, int tracked) {
    const TreeLock tree;
    if (auto* const record = tree.table.find(window)) {
        scroll_bars_of(*record).bars[static_cast<std::size_t>(bar)].tracked = tracked;
    }
}

class Hold {
  public:
    Hold(HWND window, int bar, POINT from) : m_window(window), m_bar(bar), m_from(from) {}

    void run() {
        if (!look_at_bar(m_window, m_bar, m_seen) || !m_seen.state.is_needed() ||
            m_seen.state.is_disabled) {
            return;
        }
        m_at = m_from;
        m_part = m_seen.place.part_at(m_seen.state, m_from);
        m_start = m_seen.state;
        const HeldCapture capture(m_window);
        const Repeated repeated{m_window};
        change_bar_looks(m_window, m_bar, m_part, m_part);
        act();
        if (m_part != ScrollPart::thumb) SetTimer(m_window, kRepeatTimer, kFirstRepeat, nullptr);
        loop(capture);
        repeated.end();
        capture.release();
        if (m_part == ScrollPart::thumb) tell(SB_THUMBPOSITION, m_thumb);
        tell(SB_ENDSCROLL, 0);
        change_bar_looks(m_window, m_bar, ScrollPart::none, ScrollPart::none);
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
                if (look_at_bar(m_window, m_bar, m_seen) &&
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
    SeenBar m_seen;
    ScrollState m_start;
    ScrollPart m_part = ScrollPart::none;
    int m_thumb = 0;
};

}  // namespace

void hold_scroll_bar(HWND window, int bar, POINT from) {
    Hold(window, bar, from).run();
}

void heat_scroll_bar(HWND window, int bar, POINT point) {
    SeenBar seen;
    if (!look_at_bar(window, bar, seen)) return;
    change_bar_looks(window, bar, seen.place.part_at(seen.state, point), ScrollPart::none);
    TRACKMOUSEEVENT track{sizeof track, TME_LEAVE, window, 0};
    TrackMouseEvent(&track);
}

}  // namespace tvutil2
