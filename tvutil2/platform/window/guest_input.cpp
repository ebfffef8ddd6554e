#include "tvutil2/platform/window/guest_input.h"

#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/screen.h"
#include "tvutil2/platform/window/window.h"
#include "tvutil2/platform/window/window_states.h"
#include "tvutil2/platform/window/window_table.h"

#include <atomic>
#include <utility>

namespace tvutil2 {
namespace {

std::atomic<std::uintptr_t> g_capture{0};

// The top-level window of another thread that a window of the calling one is in, or null.
HWND host_of(HWND window) {
    const TreeLock tree;
    const auto* each = tree.table.find(window);
    while (each != nullptr && !is_top_level(*each)) each = each->parent;
    const bool is_other = each != nullptr && each->queue != ThreadQueue::current_or_null();
    return is_other ? each->hwnd() : nullptr;
}

void tell_of_focus(RawInput::Kind kind, HWND to, HWND guest) {
    RawInput news;
    news.kind = kind;
    news.window = to;
    news.control = guest;
    put_input(std::move(news));
}

}  // namespace

bool is_handed_on(const RawInput& input) {
    const TreeLock tree;
    const auto* const record = tree.table.find(input.window);
    return record != nullptr && !is_top_level(*record);
}

bool is_guest(HWND window) {
    const TreeLock tree;
    const auto* const record = tree.table.find(window);
    return record != nullptr && record->queue != ThreadQueue::current_or_null();
}

void hand_on(InputState& state, RawInput input, HWND guest) {
    if (is_pointer(input.kind)) {
        if (state.guest != guest) leave_guest(state, input);
        state.guest = guest;
    }
    input.window = guest;
    input.keys = std::make_shared<const std::array<BYTE, 256>>(state.keys);
    put_input(std::move(input));
}

void leave_guest(InputState& state, const RawInput& input) {
    if (state.guest == nullptr) return;
    RawInput news;
    news.kind = RawInput::Kind::pointer_leave;
    news.window = std::exchange(state.guest, nullptr);
    news.point = input.point;
    news.time = input.time;
    put_input(std::move(news));
}

bool offer_focus(HWND guest) {
    {
        const TreeLock tree;
        auto* const queue = ThreadQueue::current_or_null();
        const auto* each = tree.table.find(guest);
        if (each == nullptr || each->queue == queue) return false;
        while (!is_top_level(*each)) each = each->parent;
        if (each->queue != queue) return false;
    }
    tell_of_focus(RawInput::Kind::focus, guest, guest);
    return true;
}

HWND focused_guest(const InputState& state) {
    if (state.focus != nullptr || state.active == nullptr) return nullptr;
    return GetAncestor(state.focused_guest, GA_ROOT) == state.active ? state.focused_guest
                                                                     : nullptr;
}

void tell_focus(InputState& state, HWND before, HWND now) {
    if (state.focused_guest != nullptr && state.focused_guest != now) {
        auto* const guest = std::exchange(state.focused_guest, nullptr);
        tell_of_focus(RawInput::Kind::focus_left, guest, guest);
    }
    auto* const left = host_of(before);
    auto* const taken = host_of(now);
    if (taken != nullptr) {
        tell_of_focus(RawInput::Kind::focus_taken, taken, now);
    } else if (left != nullptr) {
        tell_of_focus(RawInput::Kind::focus_left, left, before);
    }
}

void follow_guest_focus(InputState& state, const RawInput& input) {
    auto* const guest = input.control;
    if (input.kind == RawInput::Kind::focus_left) {
        if (input.window != guest && std::exchange(state.focused_guest, nullptr) != guest) return;
        // One that has given it up, or ends, leaves it to its host.
        const bool is_hosts = state.focus == nullptr && state.active == input.window;
        if (input.window != guest && is_hosts) SetFocus(input.window);
        if (input.window == guest && state.focus == guest) change_focus(state, nullptr);
        return;
    }
    if (!IsWindow(guest)) return;
    if (state.active != input.window) SetActiveWindow(input.window);
    if (state.active != input.window) return;
    change_focus(state, nullptr, guest);
    state.focused_guest = guest;
}

void note_capture(HWND before, HWND now) {
    auto expected = reinterpret_cast<std::uintptr_t>(before);
    if (now != nullptr) {
        g_capture = reinterpret_cast<std::uintptr_t>(now);
    } else {
        g_capture.compare_exchange_strong(expected, 0);
    }
}

Window* capturing_guest(const Window& top) {
    auto* const record = WindowTable::instance().find(reinterpret_cast<HWND>(g_capture.load()));
    if (record == nullptr || record->queue == top.queue.load()) return nullptr;
    const auto* each = record;
    while (!is_top_level(*each)) each = each->parent;
    return each == &top ? record : nullptr;
}

}  // namespace tvutil2
