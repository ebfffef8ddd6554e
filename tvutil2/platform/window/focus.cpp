#include "tvutil2/platform/window/focus.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/guest_input.h"
#include "tvutil2/platform/window/input.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/menus/menu_loop.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/parameters.h"
#include "tvutil2/platform/window/screen.h"
#include "tvutil2/platform/window/window.h"
#include "tvutil2/platform/window/window_states.h"

#include <span>

namespace tvutil2 {
namespace {

std::atomic<std::uintptr_t> g_front{0};

bool is_own(const Window& record) {
    return record.queue == ThreadQueue::current_or_null();
}

// Whether the window could have the focus; with the last error.
bool can_have_focus(HWND window) {
    const TreeLock tree;
    const auto* const record = tree.find(window);
    if (record == nullptr) return false;
    if (!is_own(*record)) return fail_with(ERROR_ACCESS_DENIED);
    for (const auto* each = record;; each = each->parent) {
        if (each->is_destroying || (each->style & WS_DISABLED) != 0) return false;
        if (is_top_level(*each)) return true;
        if ((each->parent->style & WS_MINIMIZE) != 0) return false;
    }
}

bool can_be_active(HWND top) {
    const TreeLock tree;
    const auto* const record = tree.find(top);
    if (record == nullptr || !is_own(*record)) return false;
    constexpr DWORD kNeeded = WS_VISIBLE | WS_DISABLED;
    return is_top_level(*record) && !record->is_destroying && !is_child(*record) &&
           (record->style & kNeeded) == WS_VISIBLE;
}

// Whom the activation goes to when a window goes: its owner, or what is next in front.
HWND next_active(HWND window) {
    const TreeLock tree;
    const auto* const record = tree.table.find(window);
    if (record == nullptr) return nullptr;
    const auto fits = [record](const Window& other) {
        constexpr DWORD kNeeded = WS_VISIBLE | WS_DISABLED | WS_MINIMIZE;
        return &other != record && other.queue == record->queue.load() && !other.is_destroying &&
               other.top != nullptr && (other.style & kNeeded) == WS_VISIBLE &&
               (other.ex_style & WS_EX_NOACTIVATE) == 0;
    };
    if (record->owner != nullptr && fits(*record->owner)) return record->owner->hwnd();
    for (const auto* each = tree.table.root().first_child; each != nullptr; each = each->next) {
        if (fits(*each)) return each->hwnd();
    }
    return nullptr;
}

// The keyboard goes elsewhere, and nobody tells which keys go up there.
void forget_keys_down(InputState& state) {
    for (auto& key : std::span(state.keys).subspan(VK_BACK)) key &= 1;
}

bool is_inside(HWND outer, HWND window) {
    return window != nullptr && (outer == window || IsChild(outer, window) != 0);
}

}  // namespace

void change_focus(InputState& state, HWND window, HWND taker) {
    auto* const before = std::exchange(state.focus, window);
    tell_focus(state, before, window != nullptr ? window : taker);
    if (before != nullptr) {
        SendMessageW(before, WM_KILLFOCUS,
                     reinterpret_cast<WPARAM>(window != nullptr ? window : taker), 0);
    }
    if (window != nullptr && state.focus == window) {
        SendMessageW(window, WM_SETFOCUS, reinterpret_cast<WPARAM>(before), 0);
    }
}

HWND window_in_front() {
    auto* const window = reinterpret_cast<HWND>(g_front.load());
    return WindowTable::instance().find(window) != nullptr ? window : nullptr;
}

bool activate(HWND top, WORD how) {
    auto& state = input_state();
    auto* const before = state.active;
    const auto front = g_front.exchange(reinterpret_cast<std::uintptr_t>(top));
    auto* const other = reinterpret_cast<HWND>(front);
    if (before == top) return true;
    if (top != nullptr && !can_be_active(top)) {
        g_front = front;
        return false;
    }
    // The window of another thread of the process that was in front.
    if (other != nullptr && other != before && other != top) {
        RawInput news;
        news.kind = RawInput::Kind::deactivate;
        news.window = other;
        put_input(news);
    }
    state.active = top;
    if (before != nullptr) {
        SendMessageW(before, WM_NCACTIVATE, FALSE, as_lparam(top));
        SendMessageW(before, WM_ACTIVATE, WA_INACTIVE, as_lparam(top));
    }
    if (state.active != top) return false;
    if (top == nullptr) {
        forget_keys_down(state);
        change_focus(state, nullptr);
        return true;
    }
    SetWindowPos(top, HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
    SendMessageW(top, WM_NCACTIVATE, TRUE, as_lparam(before));
    SendMessageW(top, WM_ACTIVATE, how, as_lparam(before));
    // A window that doesn't care where the focus is has it itself.
    if (state.active == top && state.focus != nullptr && !is_inside(top, state.focus)) {
        change_focus(state, nullptr);
    }
    return state.active == top;
}

void follow_activation(const RawInput& input) {
    auto& state = input_state();
    if (input.kind == RawInput::Kind::activate) {
        if (state.active == input.window) return;
        SendMessageW(input.window, WM_ACTIVATEAPP, TRUE, 0);
        activate(input.window, WA_ACTIVE);
        return;
    }
    if (state.active != input.window) return;
    leave_menus();
    auto expected = reinterpret_cast<std::uintptr_t>(input.window);
    const bool leaves_process = g_front.compare_exchange_strong(expected, 0);
    state.active = nullptr;
    forget_keys_down(state);
    SendMessageW(input.window, WM_NCACTIVATE, FALSE, 0);
    SendMessageW(input.window, WM_ACTIVATE, WA_INACTIVE, 0);
    if (leaves_process) SendMessageW(input.window, WM_ACTIVATEAPP, FALSE, 0);
    if (state.active == nullptr) change_focus(state, nullptr);
}

void leave_focus(HWND window) {
    auto* const state = input_state_or_null();
    if (state == nullptr) return;
    if (state->capture != nullptr && is_inside(window, state->capture)) set_capture(nullptr);
    if (state->active == window) {
        auto* const next = next_active(window);
        activate(next, WA_ACTIVE);
        auto* const driver = loaded_display();
        if (next != nullptr && driver != nullptr && state->active == next) driver->activate(next);
    }
    if (!is_inside(window, state->focus)) return;
    auto* const parent = GetAncestor(window, GA_PARENT);
    if (parent != nullptr && can_have_focus(parent)) {
        SetFocus(parent);
    } else {
        change_focus(*state, nullptr);
    }
}

void set_capture(HWND window) {
    auto& state = input_state();
    auto* const before = std::exchange(state.capture, window);
    note_capture(before, window);
    auto* const driver = loaded_display();
    if (driver != nullptr && (before != nullptr) != (window != nullptr)) {
        driver->set_capture(window != nullptr);
    }
    if (before != nullptr && before != window) {
        SendMessageW(before, WM_CAPTURECHANGED, 0, as_lparam(window));
    }
}

}  // namespace tvutil2

using tvutil2::input_state;
using tvutil2::input_state_or_null;

HWND SetFocus(HWND window) {
    auto& state = input_state();
    auto* const before = state.focus;
    if (before == window || tvutil2::offer_focus(window)) return before;
    if (window != nullptr) {
        if (!tvutil2::can_have_focus(window)) return nullptr;
        auto* const top = GetAncestor(window, GA_ROOT);
        if (state.active != top && tvutil2::can_be_active(top)) {
            if (!tvutil2::activate(top, WA_ACTIVE)) return nullptr;
            if (auto* const driver = tvutil2::loaded_display()) driver->activate(top);
            // The activation may have brought the focus there.
            if (state.focus == window) return before;
        }
    }
    tvutil2::change_focus(state, window);
    return before;
}

HWND GetFocus() {
    const auto* const state = input_state_or_null();
    if (state == nullptr) return nullptr;
    return state->focus != nullptr ? state->focus : tvutil2::focused_guest(*state);
}

HWND SetActiveWindow(HWND window) {
    auto* const before = input_state().active;
    if (!tvutil2::activate(window, WA_ACTIVE)) return nullptr;
    auto* const driver = tvutil2::loaded_display();
    if (window != nullptr && driver != nullptr) driver->activate(window);
    return before;
}

HWND GetActiveWindow() {
    const auto* const state = input_state_or_null();
    return state != nullptr ? state->active : nullptr;
}

HWND SetCapture(HWND window) {
    auto* const before = input_state().capture;
    const auto* const record = tvutil2::WindowTable::instance().find(window);
    if (record == nullptr || !tvutil2::is_own(*record)) return nullptr;
    tvutil2::set_capture(window);
    return before;
}

BOOL ReleaseCapture() {
    if (input_state_or_null() != nullptr) tvutil2::set_capture(nullptr);
    return TRUE;
}

HWND GetCapture() {
    const auto* const state = input_state_or_null();
    return state != nullptr ? state->capture : nullptr;
}
