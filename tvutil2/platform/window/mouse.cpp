#include "tvutil2/platform/window/mouse.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/window/class_table.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/hit_test.h"
#include "tvutil2/platform/window/input.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/screen.h"
#include "tvutil2/platform/window/timers.h"
#include "tvutil2/platform/window/window.h"
#include "tvutil2/platform/window/window_table.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>

namespace tvutil2 {
namespace {

constexpr UINT_PTR kHoverTimer = ~UINT_PTR{0} - 15;
constexpr DWORD kHoverTime = 400;
constexpr LONG kHoverWay = 2;

constexpr std::array<std::pair<WORD, CursorShape>, 14> kCursors{{{32512, CursorShape::arrow},
                                                                 {32513, CursorShape::text},
                                                                 {32514, CursorShape::wait},
                                                                 {32515, CursorShape::cross},
                                                                 {32516, CursorShape::up},
                                                                 {32642, CursorShape::size_nwse},
                                                                 {32643, CursorShape::size_nesw},
                                                                 {32644, CursorShape::size_we},
                                                                 {32645, CursorShape::size_ns},
                                                                 {32646, CursorShape::size_all},
                                                                 {32648, CursorShape::no},
                                                                 {32649, CursorShape::hand},
                                                                 {32650, CursorShape::app_starting},
                                                                 {32651, CursorShape::help}}};

thread_local HCURSOR t_cursor = nullptr;
// The last that the display was told, by whichever thread.
std::atomic<HCURSOR> g_shown_cursor{nullptr};

WORD number_of(const void* cursor) {
    return static_cast<WORD>(reinterpret_cast<std::uintptr_t>(cursor));
}

const char16_t* cursor_of_hit(LRESULT hit) {
    switch (hit) {
        case HTLEFT:
        case HTRIGHT:
            return IDC_SIZEWE;
        case HTTOP:
        case HTBOTTOM:
            return IDC_SIZENS;
        case HTTOPLEFT:
        case HTBOTTOMRIGHT:
            return IDC_SIZENWSE;
        case HTTOPRIGHT:
        case HTBOTTOMLEFT:
            return IDC_SIZENESW;
        default:
            return IDC_ARROW;
    }
}

void stop_hover(InputState& state) {
    if (state.hovered != nullptr) KillTimer(state.hovered, kHoverTimer);
    state.hovered = nullptr;
}

void hover(HWND window, UINT /*message*/, UINT_PTR /*id*/, DWORD /*time*/) {
    auto& state = input_state();
    if (state.hovered != window) return;
    stop_hover(state);
    auto point = state.message_point;
    ScreenToClient(window, &point);
    PostMessageW(window, WM_MOUSEHOVER, 0,
                 MAKELPARAM(static_cast<WORD>(point.x), static_cast<WORD>(point.y)));
}

HWND window_at_pointer() {
    POINT point{};
    GetCursorPos(&point);
    return WindowFromPoint(point);
}

}  // namespace

void start_hover(HWND window, DWORD milliseconds) {
    auto& state = input_state();
    stop_hover(state);
    state.hovered = window;
    GetCursorPos(&state.hover_point);
    SetTimer(window, kHoverTimer, milliseconds == HOVER_DEFAULT ? kHoverTime : milliseconds, hover);
}

void pointer_is_over(HWND window, POINT point) {
    auto& state = input_state();
    if (state.tracked != nullptr && state.tracked != window && state.capture == nullptr) {
        PostMessageW(std::exchange(state.tracked, nullptr), WM_MOUSELEAVE, 0, 0);
    }
    if (state.hovered == nullptr) return;
    if (state.hovered != window) return stop_hover(state);
    const bool rests = std::abs(point.x - state.hover_point.x) <= kHoverWay &&
                       std::abs(point.y - state.hover_point.y) <= kHoverWay;
    if (!rests) start_hover(window, HOVER_DEFAULT);
}

void show_cursor_of_hit(HWND window, LRESULT hit) {
    HCURSOR cursor = nullptr;
    if (hit == HTCLIENT) {
        const TreeLock tree;
        const auto* const record = tree.table.find(window);
        if (record != nullptr) cursor = record->window_class->description.hCursor;
        // A window without one sets it itself.
        if (cursor == nullptr) return;
    }
    SetCursor(cursor != nullptr ? cursor : LoadCursorW(nullptr, cursor_of_hit(hit)));
}

}  // namespace tvutil2

HCURSOR LoadCursorW(HINSTANCE module, const char16_t* name) {
    const auto number = IS_INTRESOURCE(name) ? tvutil2::number_of(name) : WORD{0};
    const auto& all = tvutil2::kCursors;
    const bool is_known = std::any_of(all.begin(), all.end(),
                                      [number](const auto& each) { return each.first == number; });
    if (module == nullptr && is_known) {
        return reinterpret_cast<HCURSOR>(static_cast<std::uintptr_t>(number));
    }
    SetLastError(ERROR_RESOURCE_NAME_NOT_FOUND);
    return nullptr;
}

HCURSOR SetCursor(HCURSOR cursor) {
    auto* const before = std::exchange(tvutil2::t_cursor, cursor);
    auto* const driver = tvutil2::loaded_display();
    if (driver == nullptr || tvutil2::g_shown_cursor.exchange(cursor) == cursor) return before;
    for (const auto& [number, shape] : tvutil2::kCursors) {
        if (number == tvutil2::number_of(cursor)) driver->set_cursor(shape);
    }
    return before;
}

HCURSOR GetCursor() {
    return tvutil2::t_cursor;
}

BOOL TrackMouseEvent(TRACKMOUSEEVENT* track) {
    auto* const window = track->hwndTrack;
    if (track->cbSize != sizeof *track) return tvutil2::fail_with(ERROR_INVALID_PARAMETER);
    if (!IsWindow(window)) return tvutil2::fail_with(ERROR_INVALID_WINDOW_HANDLE);
    auto& state = tvutil2::input_state();
    const bool leaves = (track->dwFlags & TME_LEAVE) != 0;
    const bool hovers = (track->dwFlags & TME_HOVER) != 0;
    if ((track->dwFlags & TME_CANCEL) != 0) {
        if (leaves && state.tracked == window) state.tracked = nullptr;
        if (hovers && state.hovered == window) tvutil2::stop_hover(state);
        return TRUE;
    }
    const bool is_there = tvutil2::window_at_pointer() == window || state.capture == window;
    if (leaves && !is_there) PostMessageW(window, WM_MOUSELEAVE, 0, 0);
    if (leaves && is_there) state.tracked = window;
    if (hovers && is_there) tvutil2::start_hover(window, track->dwHoverTime);
    return TRUE;
}
