// Raw input becomes messages.
#include "tvutil2/platform/window/input.h"

#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/guest_input.h"
#include "tvutil2/platform/window/input_address.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/mouse.h"
#include "tvutil2/platform/window/screen.h"
#include "tvutil2/platform/window/show.h"
#include "tvutil2/platform/window/system_commands.h"
#include "tvutil2/platform/window/update.h"
#include "tvutil2/platform/window/window.h"

#include <algorithm>
#include <cstdlib>

namespace tvutil2 {
namespace {

using Kind = RawInput::Kind;

// What a thread that doesn't look keeps at most; then the oldest goes.
constexpr std::size_t kMostPending = 4096;

void take_over(InputState& state) {
    const std::lock_guard guard(state.lock);
    for (auto& input : state.incoming) state.pending.push_back({++state.count, std::move(input)});
    state.incoming.clear();
}

bool erase(InputState& state, std::uint64_t number) {
    const auto found = std::find_if(state.pending.begin(), state.pending.end(),
                                    [number](const auto& each) { return each.number == number; });
    if (found == state.pending.end()) return false;
    state.pending.erase(found);
    return true;
}

// A click on a window that a dialog has disabled brings the dialog to the person.
void activate_enabled_popup(HWND top) {
    HWND popup = nullptr;
    {
        const TreeLock tree;
        const auto* const record = tree.table.find(top);
        if (record == nullptr) return;
        for (const auto* each = tree.table.root().first_child; each != nullptr; each = each->next) {
            const auto* owner = each->owner;
            while (owner != nullptr && owner != record) owner = owner->owner;
            const bool is_usable = (each->style & (WS_VISIBLE | WS_DISABLED)) == WS_VISIBLE;
            if (owner != nullptr && is_usable) {
                popup = each->hwnd();
                break;
            }
        }
    }
    if (popup != nullptr) SetActiveWindow(popup);
}

// What goes before a press of a button: parents hear of it, and the window becomes the active one.
// False when the press is used up.
bool prepare_press(InputState& state, const RawInput& input, const Addressed& to) {
    if (to.hit == HTCLIENT) {
        for (auto* each = to.window; each != nullptr;) {
            const auto style = static_cast<DWORD>(GetWindowLongW(each, GWL_STYLE));
            auto* const parent = (style & WS_CHILD) != 0 ? GetParent(each) : nullptr;
            if (parent == nullptr || (static_cast<DWORD>(GetWindowLongW(each, GWL_EXSTYLE)) &
                                      WS_EX_NOPARENTNOTIFY) != 0) {
                break;
            }
            auto point = input.point;
            ScreenToClient(parent, &point);
            SendMessageW(parent, WM_PARENTNOTIFY, to.message.message, packed(point));
            each = parent;
        }
    }
    auto* const top = GetAncestor(to.window, GA_ROOT);
    if (top == nullptr || top == state.active) return IsWindow(to.window) != 0;
    const auto answer =
        SendMessageW(to.window, WM_MOUSEACTIVATE, reinterpret_cast<WPARAM>(top),
                     MAKELPARAM(static_cast<WORD>(to.hit), static_cast<WORD>(to.message.message)));
    if (answer != MA_NOACTIVATE && answer != MA_NOACTIVATEANDEAT) activate(top, WA_CLICKACTIVE);
    return answer != MA_ACTIVATEANDEAT && answer != MA_NOACTIVATEANDEAT && IsWindow(to.window) != 0;
}

void note_click(InputState& state, const RawInput& input, const Addressed& to) {
    // A third click is a first one again.
    state.clicked = to.is_double ? nullptr : to.window;
    state.clicked_button = input.button;
    state.click_time = input.time;
    state.click_point = input.point;
}

// What follows from an input once its message is taken. False when the message is used up.
bool accept(InputState& state, const RawInput& input, const Addressed& to) {
    if (is_key(input.kind)) {
        const bool is_down = input.kind != Kind::key_up;
        if (input.kind != Kind::text) set_key(state, input.key, is_down);
        if (is_down) {
            state.written_key = to.message.wParam;
            state.written_lparam = to.message.lParam;
            state.written = input.text;
        }
        return true;
    }
    state.message_point = input.point;
    leave_guest(state, input);
    pointer_is_over(to.window, input.point);
    if (input.kind == Kind::button_down) {
        set_key(state, key_of_button(input.button), true);
        // What was handed on is prepared already, where the top-level window is.
        const bool is_prepared = state.capture != nullptr || is_handed_on(input);
        if (!is_prepared && !prepare_press(state, input, to)) return false;
        note_click(state, input, to);
    }
    if (input.kind == Kind::button_up) set_key(state, key_of_button(input.button), false);
    if (state.capture == nullptr && input.kind != Kind::wheel) {
        SendMessageW(to.window, WM_SETCURSOR, reinterpret_cast<WPARAM>(to.window),
                     MAKELPARAM(static_cast<WORD>(to.hit), static_cast<WORD>(to.message.message)));
    }
    return IsWindow(to.window) != 0;
}

// Does what goes before it here, and hands it on to the window's thread.
void pass_to_guest(InputState& state, const RawInput& input, const Addressed& to) {
    if (is_key(input.kind)) {
        hand_on(state, input, to.window);
        if (input.kind != Kind::text) set_key(state, input.key, input.kind == Kind::key_down);
        return;
    }
    pointer_is_over(nullptr, input.point);
    if (input.kind == Kind::button_down && !prepare_press(state, input, to)) return;
    hand_on(state, input, to.window);
}

// What isn't a message: the desktop's wishes.
void follow(InputState& state, const RawInput& input) {
    switch (input.kind) {
        case Kind::activate:
        case Kind::deactivate:
            if (input.kind == Kind::deactivate) state.keys.fill(0);
            follow_activation(input);
            break;
        case Kind::focus_taken:
        case Kind::focus_left:
            follow_guest_focus(state, input);
            break;
        case Kind::dismissed:
            // Whatever has opened it has the pointer.
            if (state.capture != nullptr) SendMessageW(state.capture, WM_CANCELMODE, 0, 0);
            break;
        case Kind::close:
            if (IsWindowEnabled(input.window) != 0) {
                PostMessageW(input.window, WM_SYSCOMMAND, SC_CLOSE, 0);
            } else {
                activate_enabled_popup(input.window);
            }
            break;
        case Kind::pointer_leave:
            pointer_is_over(nullptr, input.point);
            leave_guest(state, input);
            break;
        default:
            follow_desktop(input);
            break;
    }
}

std::atomic<std::uint64_t> g_pointer{0};

InputState& state_of(ThreadQueue& queue) {
    auto* state = queue.m_input.load(std::memory_order_acquire);
    if (state != nullptr) return *state;
    auto fresh = std::make_unique<InputState>();
    // The queue keeps it: queues are never freed.
    if (queue.m_input.compare_exchange_strong(state, fresh.get())) state = fresh.release();
    return *state;
}

}  // namespace

InputState& input_state() {
    return state_of(ThreadQueue::current());
}

InputState* input_state_or_null() {
    const auto* const queue = ThreadQueue::current_or_null();
    return queue != nullptr ? queue->m_input.load(std::memory_order_relaxed) : nullptr;
}

void put_input(RawInput input) {
    if (is_pointer(input.kind)) {
        g_pointer = static_cast<std::uint64_t>(static_cast<std::uint32_t>(input.point.x)) << 32 |
                    static_cast<std::uint32_t>(input.point.y);
    }
    const TreeLock tree;
    auto* record = tree.table.find(input.window != nullptr ? input.window : window_in_front());
    if (record == nullptr) return;
    auto* const guest = is_pointer(input.kind) ? capturing_guest(*record) : nullptr;
    if (guest != nullptr) {
        record = guest;
        input.window = guest->hwnd();
    }
    auto& queue = *record->queue.load(std::memory_order_relaxed);
    auto& state = state_of(queue);
    {
        const std::lock_guard guard(state.lock);
        auto& incoming = state.incoming;
        const bool replaces = input.kind == Kind::pointer_move && !incoming.empty() &&
                              incoming.back().kind == Kind::pointer_move &&
                              incoming.back().window == input.window;
        if (replaces) incoming.pop_back();
        if (incoming.size() >= kMostPending) incoming.erase(incoming.begin());
        incoming.push_back(std::move(input));
    }
    queue.tell(ThreadQueue::input);
}

bool take_input(ThreadQueue& queue, MSG& message, const MessageFilter& filter, bool remove) {
    auto* const state = queue.m_input.load(std::memory_order_relaxed);
    if (state == nullptr) return false;
    for (std::size_t at = 0;;) {
        take_over(*state);
        if (at >= state->pending.size()) return false;
        // Whatever is sent from here on may take input itself.
        const auto [number, input] = state->pending[at];
        if (!is_key(input.kind) && !is_pointer(input.kind)) {
            erase(*state, number);
            follow(*state, input);
            continue;
        }
        if (input.keys) state->keys = *input.keys;
        const auto to = address(*state, input);
        if (to.window == nullptr) {
            if (!erase(*state, number)) continue;
            if (input.kind == Kind::button_down) activate_enabled_popup(input.window);
            if (input.kind == Kind::pointer_move) pointer_is_over(nullptr, input.point);
            leave_guest(*state, input);
            continue;
        }
        if (is_guest(to.window)) {
            if (erase(*state, number)) pass_to_guest(*state, input, to);
            continue;
        }
        if (!filter.takes(to.message.hwnd, to.message.message)) {
            ++at;
            continue;
        }
        if (remove && (!erase(*state, number) || !accept(*state, input, to))) continue;
        message = to.message;
        return true;
    }
}

void forget_input(ThreadQueue& queue) {
    auto* const state = queue.m_input.load(std::memory_order_relaxed);
    if (state == nullptr) return;
    const std::lock_guard guard(state->lock);
    state->incoming.clear();
    state->pending.clear();
    state->focus = state->active = state->capture = nullptr;
    state->tracked = state->hovered = state->clicked = nullptr;
    state->guest = state->focused_guest = nullptr;
    state->keys.fill(0);
    state->written.clear();
}

void forget_window(ThreadQueue& queue, HWND window) {
    auto* const state = queue.m_input.load(std::memory_order_relaxed);
    if (state == nullptr) return;
    for (auto* const each : {&state->focus, &state->active, &state->capture, &state->tracked,
                             &state->hovered, &state->clicked}) {
        if (*each == window) *each = nullptr;
    }
}

}  // namespace tvutil2

BOOL GetCursorPos(POINT* point) {
    const auto pointer = tvutil2::g_pointer.load();
    *point = {static_cast<LONG>(static_cast<std::uint32_t>(pointer >> 32)),
              static_cast<LONG>(static_cast<std::uint32_t>(pointer))};
    return TRUE;
}

DWORD GetMessagePos() {
    const auto* const state = tvutil2::input_state_or_null();
    const POINT point = state != nullptr ? state->message_point : POINT{};
    return MAKELONG(static_cast<WORD>(point.x), static_cast<WORD>(point.y));
}
