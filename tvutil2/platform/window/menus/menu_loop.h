// Menus that are open.
#pragma once

#include "tvutil2/platform/base/types.h"

namespace tvutil2 {

/// Closes the menus that the calling thread shows, if any: its window isn't the active one any
/// more.
void leave_menus();
/// The item that a person has come to in the bar of a window of the calling thread; -1 for none.
[[nodiscard]] int selected_in_menu_bar(HWND window);

}  // namespace tvutil2
