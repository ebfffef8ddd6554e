// Buttons as they are, and as they look.
#pragma once

#include "tvutil2/platform/window/controls/button.h"
#include "tvutil2/platform/window/controls/control.h"

#include <string>

namespace tvutil2 {

struct ButtonState : ControlState {
    LRESULT check = BST_UNCHECKED;
    bool is_pressed = false;  ///< looks pressed
    bool is_held = false;     ///< by the pointer or the space key
    bool is_hot = false;
    std::u16string note;
};

[[nodiscard]] inline bool is_push(DWORD type) {
    return type <= BS_DEFPUSHBUTTON || type == BS_OWNERDRAW || type >= BS_COMMANDLINK;
}
[[nodiscard]] inline bool is_default(DWORD type) {
    return type == BS_DEFPUSHBUTTON || type == BS_DEFCOMMANDLINK;
}
[[nodiscard]] inline bool is_radio(DWORD type) {
    return type == BS_RADIOBUTTON || type == BS_AUTORADIOBUTTON;
}
[[nodiscard]] inline bool is_link(DWORD type) {
    return type >= BS_COMMANDLINK;
}

/// In answer to WM_PAINT.
void paint_button(HWND window, const ButtonState& state);

}  // namespace tvutil2
