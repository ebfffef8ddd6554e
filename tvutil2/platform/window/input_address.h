// Whom raw input is for, and as which message.
#pragma once

#include "tvutil2/platform/window/hit_test.h"
#include "tvutil2/platform/window/input.h"

namespace tvutil2 {

struct Addressed {
    HWND window = nullptr;  ///< null for nobody
    LRESULT hit = HTCLIENT;
    MSG message{};
    bool is_double = false;  ///< a button's second press
};

/// A key's or a pointer's. Sends WM_NCHITTEST on the way.
[[nodiscard]] Addressed address(const InputState& state, const RawInput& input);

/// The key that stands for a button of the pointer.
[[nodiscard]] int key_of_button(int button);
/// Notes that a key goes down or up; one that goes down switches its other state.
void set_key(InputState& state, int key, bool is_down);
/// A point as messages carry it.
[[nodiscard]] inline LPARAM packed(POINT point) {
    return MAKELPARAM(static_cast<WORD>(point.x), static_cast<WORD>(point.y));
}

}  // namespace tvutil2
