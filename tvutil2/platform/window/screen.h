// Top-level windows and the display that shows them.
#pragma once

#include "tvutil2/platform/display/driver.h"

namespace tvutil2 {

/// The driver, loaded by the first call; null where nothing shows windows.
[[nodiscard]] Driver* display();
/// The driver if it has been loaded.
[[nodiscard]] Driver* loaded_display();

/// Brings a visible top-level window onto the display, or takes a hidden one off it, or tells the
/// display how it is now. Nothing for any other window.
void tell_display(HWND window, bool activates);
/// Says what a pop-up opens at, on the screen, before it is shown: a display that knows better
/// where there is room may put it at another side of that.
void set_popup_base(HWND popup, const RECT& base);
/// Whether the display does: where its windows are the program doesn't know then.
[[nodiscard]] bool display_finds_room();
/// Whether a display shows it, or would if nothing were in front of it.
[[nodiscard]] bool is_on_display(HWND window);
/// The window is about to end without having been hidden.
void leave_display(HWND window);

/// Where text is typed next in a window, in its client area: for input methods.
void tell_caret(HWND window, const RECT& place);

/// Tells the display what is in a window, if somebody has asked for that. For the window's thread.
void tell_content(HWND window);

/// Does what the desktop asks for: a place, a scale, a look. For the window's thread.
void follow_desktop(const RawInput& input);

}  // namespace tvutil2
