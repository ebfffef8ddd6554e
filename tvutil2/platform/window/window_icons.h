// The icons of windows, which displays show in title bars and lists of windows.
#pragma once

#include "tvutil2/platform/base/types.h"

#include <array>
#include <memory>
#include <vector>

namespace tvutil2 {

class Surface;
struct Window;

/// What a window was given, by ICON_SMALL and ICON_BIG. They stay the program's.
using WindowIcons = std::array<HICON, 2>;

/// What stands for a window: its own icons, else those of its class. With the lock of the tree.
[[nodiscard]] WindowIcons icons_of(const Window& window);
/// What they show, once each; one that has been destroyed shows nothing.
[[nodiscard]] std::vector<std::shared_ptr<const Surface>> pictures_of(const WindowIcons& icons);

/// WM_SETICON and WM_GETICON; false for any other message.
bool handle_icon_message(HWND window, UINT message, WPARAM wparam, LPARAM lparam, LRESULT& result);

}  // namespace tvutil2
