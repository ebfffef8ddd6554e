// Menus that are open.
#pragma once

namespace tvutil2 {

/// Closes the menus that the calling thread shows, if any: its window isn't the active one any
/// more.
void leave_menus();

}  // namespace tvutil2
