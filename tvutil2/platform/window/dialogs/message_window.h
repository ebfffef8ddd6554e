// A question or message to the person as a window.
#pragma once

#include "tvutil2/platform/base/types.h"

#include <optional>
#include <span>

namespace tvutil2 {

struct WindowMessage {
    HWND owner = nullptr;  ///< can't be used meanwhile
    const char16_t* text = nullptr;
    const char16_t* caption = nullptr;  ///< null says that it is an error
    UINT icon = 0;                      ///< MB_ICON...
    std::span<const int> buttons;       ///< by what they answer (IDOK...)
    std::size_t default_button = 0;
    int refusing = 0;  ///< the answer when the display goes away, or the program is to quit
};

/// The button that was chosen. Nothing where no display shows windows, or it couldn't be made; 0
/// with ERROR_INVALID_WINDOW_HANDLE for an owner that is no window. Buttons speak the language of
/// the calling thread. Of a text longer than a screen the first 16,384 units or 1000 lines count.
/// Esc and closing answer Cancel, or OK where that is all, and else nothing; Ctrl+C copies what is
/// to be read.
[[nodiscard]] std::optional<int> ask_in_window(const WindowMessage& message);

}  // namespace tvutil2
