// Which keys are down, and what they write.
#include "tvutil2/platform/window/input_address.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/messages.h"

#include <string>
#include <utility>

namespace tvutil2 {
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

void set_key(InputState& state, int key, bool is_down) {
    auto& value = state.keys[static_cast<std::size_t>(key) & 0xFF];
    const bool toggles = is_down && (value & 0x80) == 0;
    value = static_cast<BYTE>((is_down ? 0x80 : 0) | ((value & 1) ^ (toggles ? 1 : 0)));
}

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
