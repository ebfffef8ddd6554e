#include "tvutil2/platform/window/input_address.h"

#include "tvutil2/platform/window/class_table.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/guest_input.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/mouse.h"
#include "tvutil2/platform/window/window_states.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <vector>

namespace tvutil2 {
namespace {

using Kind = RawInput::Kind;

constexpr DWORD kDoubleClickTime = 500;
constexpr LONG kDoubleClickWay = 2;

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
    // Menus and drags of the host's keep the keys.
    auto* const guest = state.capture == nullptr ? focused_guest(state) : nullptr;
    auto* const focus = guest != nullptr ? guest : state.focus;
    const bool is_system = focus == nullptr || alt ||
                           (input.key == VK_MENU && !state.is_down(VK_CONTROL)) ||
                           input.key == VK_F10;
    result.window = focus != nullptr ? focus : state.active;
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

}  // namespace

int key_of_button(int button) {
    constexpr std::array<int, 3> kKeys{VK_LBUTTON, VK_RBUTTON, VK_MBUTTON};
    return kKeys[static_cast<std::size_t>(std::clamp(button, 0, 2))];
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

}  // namespace tvutil2

UINT GetDoubleClickTime() {
    return tvutil2::kDoubleClickTime;
}
