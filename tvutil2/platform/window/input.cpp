// Raw input becomes messages.
#include "tvutil2/platform/window/input.h"

#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/window/class_table.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/guest_input.h"
#include "tvutil2/platform/window/hit_test.h"
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

constexpr DWORD kDoubleClickTime = 500;
constexpr LONG kDoubleClickWay = 2;
// What a thread that doesn't look keeps at most; then the oldest goes.
constexpr std::size_t kMostPending = 4096;

LPARAM packed(POINT point) {
    return MAKELPARAM(static_cast<WORD>(point.x), static_cast<WORD>(point.y));
}

bool is_key(Kind kind) {
    return kind == Kind::key_down || kind == Kind::key_up || kind == Kind::text;
}

bool is_pointer(Kind kind) {
    return kind == Kind::pointer_move || kind == Kind::button_down || kind == Kind::button_up ||
           kind == Kind::wheel;
}

int key_of_button(int button) {
    constexpr std::array<int, 3> kKeys{VK_LBUTTON, VK_RBUTTON, VK_MBUTTON};
    return kKeys[static_cast<std::size_t>(std::clamp(button, 0, 2))];
}

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

// Whom an input is for, and as what.
struct Addressed {
    HWND window = nullptr;
    LRESULT hit = HTCLIENT;
    MSG message{};
    bool is_double = false;
};

// The windows under a place, from the deepest up: the first that doesn't let it through.
HWND window_under(HWND top, POINT point, LRESULT& hit) {
    std::vector<HWND> transparent;
    for (;;) {
        HWND found = nullptr;
        {
            const TreeLock tree;
            auto* const record = tree.table.find(top);
            if (record == nullptr || (record->style & (WS_VISIBLE | WS_DISABLED)) != WS_VISIBLE) {
                return nullptr;
            }
            found = deepest_window(*record, point, transparent);
        }
        hit = SendMessageW(found, WM_NCHITTEST, 0, packed(point));
        if (hit != HTTRANSPARENT || found == top) return found;
        transparent.push_back(found);
    }
}

void address_key(const InputState& state, const RawInput& input, Addressed& result) {
    const bool is_up = input.kind == Kind::key_up;
    const bool alt = state.is_down(VK_MENU) && !state.is_down(VK_CONTROL);
    const bool is_system = state.focus == nullptr || alt ||
                           (input.key == VK_MENU && !state.is_down(VK_CONTROL)) ||
                           input.key == VK_F10;
    result.window = state.focus != nullptr ? state.focus : state.active;
    const auto key = input.kind == Kind::text ? VK_PROCESSKEY : input.key;
    const bool was_down = state.is_down(key);
    LPARAM lparam = 1 | static_cast<LPARAM>(input.scan_code & 0xFF) << 16;
    if (input.is_extended) lparam |= LPARAM{1} << 24;
    if (is_system && alt) lparam |= LPARAM{1} << 29;
    if (was_down || is_up) lparam |= LPARAM{1} << 30;
    if (is_up) lparam |= LPARAM{1} << 31;
    const auto down = is_system ? WM_SYSKEYDOWN : WM_KEYDOWN;
    const auto up = is_system ? WM_SYSKEYUP : WM_KEYUP;
    result.message = {result.window, is_up ? up : down, static_cast<WPARAM>(key),
                      lparam,        input.time,        state.message_point};
}

// With the change that the input itself makes.
WPARAM buttons_down(const InputState& state, const RawInput& input) {
    const auto is_down = [&](int key) {
        const bool is_its = (input.kind == Kind::button_down || input.kind == Kind::button_up) &&
                            key == key_of_button(input.button);
        return is_its ? input.kind == Kind::button_down : state.is_down(key);
    };
    return (is_down(VK_LBUTTON) ? MK_LBUTTON : 0) | (is_down(VK_RBUTTON) ? MK_RBUTTON : 0) |
           (is_down(VK_MBUTTON) ? MK_MBUTTON : 0) | (is_down(VK_SHIFT) ? MK_SHIFT : 0) |
           (is_down(VK_CONTROL) ? MK_CONTROL : 0);
}

bool takes_double_clicks(HWND window) {
    const TreeLock tree;
    const auto* const record = tree.table.find(window);
    return record != nullptr && (record->window_class->description.style & CS_DBLCLKS) != 0;
}

bool is_second_click(const InputState& state, const RawInput& input, HWND window) {
    return state.clicked == window && state.clicked_button == input.button &&
           input.time - state.click_time <= kDoubleClickTime &&
           std::abs(input.point.x - state.click_point.x) <= kDoubleClickWay &&
           std::abs(input.point.y - state.click_point.y) <= kDoubleClickWay;
}

void address_pointer(const InputState& state, const RawInput& input, Addressed& result) {
    result.window = state.capture;
    if (result.window == nullptr && input.window != nullptr) {
        result.window = window_under(input.window, input.point, result.hit);
    }
    if (result.window == nullptr) return;
    const auto where = result.window;
    if (input.kind == Kind::wheel) {
        const auto delta = static_cast<WORD>(static_cast<std::int16_t>(input.delta));
        result.message = {where,
                          input.is_horizontal ? WM_MOUSEHWHEEL : WM_MOUSEWHEEL,
                          MAKEWPARAM(static_cast<WORD>(buttons_down(state, input)), delta),
                          packed(input.point),
                          input.time,
                          input.point};
        return;
    }
    UINT message = WM_MOUSEMOVE;
    if (input.kind != Kind::pointer_move) {
        message = WM_LBUTTONDOWN + static_cast<UINT>(std::clamp(input.button, 0, 2)) * 3 +
                  (input.kind == Kind::button_up ? 1U : 0U);
    }
    const bool in_client = result.hit == HTCLIENT;
    if (input.kind == Kind::button_down && is_second_click(state, input, where) &&
        (!in_client || takes_double_clicks(where))) {
        message += 2;
        result.is_double = true;
    }
    if (!in_client) {
        result.message = {where,
                          message - WM_MOUSEMOVE + WM_NCMOUSEMOVE,
                          static_cast<WPARAM>(result.hit),
                          packed(input.point),
                          input.time,
                          input.point};
        return;
    }
    auto point = input.point;
    ScreenToClient(where, &point);
    result.message = {where,         message,    buttons_down(state, input),
                      packed(point), input.time, input.point};
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

void set_key(InputState& state, int key, bool is_down) {
    auto& value = state.keys[static_cast<std::size_t>(key) & 0xFF];
    const bool toggles = is_down && (value & 0x80) == 0;
    value = static_cast<BYTE>((is_down ? 0x80 : 0) | ((value & 1) ^ (toggles ? 1 : 0)));
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

Addressed address(const InputState& state, const RawInput& input) {
    Addressed result;
    if (is_key(input.kind)) {
        address_key(state, input, result);
    } else {
        address_pointer(state, input, result);
    }
    return result;
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
        const auto to = address(*state, input);
        if (to.window == nullptr) {
            if (!erase(*state, number)) continue;
            if (input.kind == Kind::button_down) activate_enabled_popup(input.window);
            if (input.kind == Kind::pointer_move) pointer_is_over(nullptr, input.point);
            leave_guest(*state, input);
            continue;
        }
        if (is_pointer(input.kind) && is_guest(to.window)) {
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
    state->tracked = state->hovered = state->clicked = state->guest = nullptr;
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

namespace {

// What a key writes by itself: where the driver doesn't say, and with Ctrl.
std::u16string plain_text(const InputState& state, WPARAM key) {
    const bool is_control = state.is_down(VK_CONTROL) && !state.is_down(VK_MENU);
    switch (key) {
        case VK_RETURN:
            return is_control ? u"\n" : u"\r";
        case VK_TAB:
            return is_control ? u"" : u"\t";
        case VK_ESCAPE:
            return u"\x1B";
        case VK_BACK:
            return is_control ? u"\x7F" : u"\b";
        case VK_SPACE:
            return u" ";
        default:
            break;
    }
    const auto unit = static_cast<char16_t>(key);
    if (key >= 'A' && key <= 'Z') {
        if (is_control) return {static_cast<char16_t>(unit - 'A' + 1)};
        const bool is_upper = state.is_down(VK_SHIFT) != ((state.keys[VK_CAPITAL] & 1) != 0);
        return {is_upper ? unit : static_cast<char16_t>(unit - 'A' + 'a')};
    }
    return key >= '0' && key <= '9' && !is_control ? std::u16string{unit} : std::u16string{};
}

}  // namespace

void translate_key(const MSG& message) {
    auto& state = input_state();
    const bool is_its = state.written_key == message.wParam &&
                        state.written_lparam == message.lParam && !state.written.empty();
    auto text = is_its ? std::exchange(state.written, {}) : std::u16string{};
    const bool is_control = state.is_down(VK_CONTROL) && !state.is_down(VK_MENU);
    if (text.empty() || (is_control && text.front() >= u' ')) {
        text = plain_text(state, message.wParam);
    }
    const UINT kind = message.message == WM_SYSKEYDOWN ? WM_SYSCHAR : WM_CHAR;
    for (const auto unit : text) PostMessageW(message.hwnd, kind, unit, message.lParam);
}

}  // namespace tvutil2

SHORT GetKeyState(int key) {
    const auto* const state = tvutil2::input_state_or_null();
    if (state == nullptr || key < 0 || key > 0xFF) return 0;
    const auto value = state->keys[static_cast<std::size_t>(key)];
    return static_cast<SHORT>(((value & 0x80) != 0 ? -128 : 0) | (value & 1));
}

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

UINT GetDoubleClickTime() {
    return tvutil2::kDoubleClickTime;
}
