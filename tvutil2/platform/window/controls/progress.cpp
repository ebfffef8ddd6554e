#include "tvutil2/platform/window/controls/progress.h"

#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/draw/look.h"
#include "tvutil2/platform/draw/rect.h"
#include "tvutil2/platform/draw/shapes.h"
#include "tvutil2/platform/window/controls/control.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/timers.h"
#include "tvutil2/platform/window/window.h"

#include <algorithm>
#include <utility>

namespace tvutil2 {
namespace {

constexpr int kThickness = 6;
constexpr UINT_PTR kMarqueeTimer = 1;
constexpr DWORD kRound = 1800;  // milliseconds from one end to the other

struct ProgressState : ControlState {
    int least = 0, most = 100, position = 0, step = 10;
    bool moves = false;
};

void set_position(HWND window, ProgressState& state, std::int64_t position) {
    const auto held = std::clamp<std::int64_t>(position, state.least, state.most);
    if (std::exchange(state.position, static_cast<int>(held)) != held) repaint(window);
}

void set_range(HWND window, ProgressState& state, int least, int most) {
    state.least = least;
    state.most = std::max(least, most);
    set_position(window, state, state.position);
    repaint(window);
}

// What is done, as parts of a million of the bar: from, to.
std::pair<std::int64_t, std::int64_t> filled(const ProgressState& state, DWORD style) {
    constexpr std::int64_t kWhole = 1000000;
    if ((style & PBS_MARQUEE) != 0) {
        const auto at = kWhole * 13 / 10 * (GetTickCount() % kRound) / kRound - kWhole * 3 / 10;
        return {std::max<std::int64_t>(at, 0), std::min(at + kWhole * 3 / 10, kWhole)};
    }
    const auto range = std::int64_t{state.most} - state.least;
    return {0, range > 0 ? (std::int64_t{state.position} - state.least) * kWhole / range : 0};
}

// With high contrast an outline: what is done couldn't be told from a white area.
void draw_track(HDC context, RECT bar, UINT dpi) {
    draw_round_area(context, bar, kThickness / 2, theme().palette.divider);
    if (theme().mode != ThemeMode::high_contrast) return;
    const auto line = scaled(1, dpi);
    InflateRect(&bar, -line, -line);
    draw_round_area(context, bar, kThickness / 2 - 1, GetSysColor(COLOR_WINDOW));
}

void paint(HWND window, const ProgressState& state) {
    const ControlPaint paint(window, state);
    const auto style = style_of(window);
    FillRect(paint, &paint.client(), ask_colors(window, paint, WM_CTLCOLORSTATIC));
    const bool is_vertical = (style & PBS_VERTICAL) != 0;
    const auto thickness = scaled(kThickness, paint.dpi());
    auto bar = paint.client();
    const auto across = is_vertical ? bar.right - bar.left : bar.bottom - bar.top;
    const auto inset = static_cast<int>(std::max<LONG>((across - thickness) / 2, 0));
    InflateRect(&bar, is_vertical ? -inset : 0, is_vertical ? 0 : -inset);
    draw_track(paint, bar, paint.dpi());
    const auto [from, to] = filled(state, style);
    if (to <= from) return;
    const auto length = is_vertical ? bar.bottom - bar.top : bar.right - bar.left;
    const auto begin = static_cast<LONG>(length * from / 1000000);
    const auto end = static_cast<LONG>(length * to / 1000000);
    const auto done = is_vertical ? RECT{bar.left, bar.bottom - end, bar.right, bar.bottom - begin}
                                  : RECT{bar.left + begin, bar.top, bar.left + end, bar.bottom};
    const bool is_disabled = (style & WS_DISABLED) != 0;
    draw_round_area(paint, done, kThickness / 2,
                    is_disabled ? GetSysColor(COLOR_GRAYTEXT) : theme().palette.accent);
}

void set_moving(HWND window, ProgressState& state, bool moves, UINT milliseconds) {
    state.moves = moves;
    if (moves) {
        SetTimer(window, kMarqueeTimer, milliseconds != 0 ? milliseconds : 30, nullptr);
    } else {
        KillTimer(window, kMarqueeTimer);
    }
    repaint(window);
}

// False for any other message.
bool handle_value(HWND window, ProgressState& state, UINT message, WPARAM wparam, LPARAM lparam,
                  LRESULT& result) {
    const auto before = state.position;
    const auto range = static_cast<WPARAM>(lparam);
    switch (message) {
        case PBM_SETRANGE:
            result = MAKELPARAM(static_cast<WORD>(state.least), static_cast<WORD>(state.most));
            set_range(window, state, LOWORD(range), HIWORD(range));
            return true;
        case PBM_SETRANGE32:
            result = MAKELPARAM(static_cast<WORD>(state.least), static_cast<WORD>(state.most));
            set_range(window, state, static_cast<int>(wparam), static_cast<int>(lparam));
            return true;
        case PBM_GETRANGE:
            result = wparam != 0 ? state.least : state.most;
            return true;
        case PBM_SETPOS:
            set_position(window, state, static_cast<int>(wparam));
            result = before;
            return true;
        case PBM_DELTAPOS:
            set_position(window, state, std::int64_t{before} + static_cast<int>(wparam));
            result = before;
            return true;
        case PBM_SETSTEP:
            result = std::exchange(state.step, static_cast<int>(wparam));
            return true;
        case PBM_STEPIT: {
            // Beyond the end it begins anew.
            const auto next = std::int64_t{before} + state.step;
            set_position(window, state, next > state.most ? state.least : next);
            result = before;
            return true;
        }
        case PBM_GETPOS:
            result = before;
            return true;
        case PBM_SETMARQUEE:
            set_moving(window, state, wparam != 0, static_cast<UINT>(lparam));
            result = TRUE;
            return true;
        default:
            return false;
    }
}

}  // namespace

LRESULT progress_procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    const auto state = state_of<ProgressState>(window);
    if (!state) return DefWindowProcW(window, message, wparam, lparam);
    LRESULT result = 0;
    if (handle_value(window, *state, message, wparam, lparam, result)) return result;
    switch (message) {
        case WM_PAINT:
            paint(window, *state);
            return 0;
        case WM_ERASEBKGND:
            return TRUE;
        case WM_TIMER:
            if (wparam == kMarqueeTimer) repaint(window);
            return 0;
        default:
            break;
    }
    if (handle_control_message(window, *state, message, wparam, lparam, result)) return result;
    return DefWindowProcW(window, message, wparam, lparam);
}

}  // namespace tvutil2
