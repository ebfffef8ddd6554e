// An edit's messages about its rows and places.
#pragma once

#include "tvutil2/platform/window/controls/edit_input.h"

namespace tvutil2 {

/// False for any other message.
bool handle_edit_rows(EditInput& edit, HWND window, UINT message, WPARAM wparam, LPARAM lparam,
                      LRESULT& result);

[[nodiscard]] inline LRESULT as_result(std::size_t value) {
    return static_cast<LRESULT>(value);
}

}  // namespace tvutil2
