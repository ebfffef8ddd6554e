// Where the caller's own part of the dialog for files is, and what it leaves to the dialog's own
// controls: they are above it, or where its control stc32 is.
#pragma once

#include "tvutil2/platform/window/window_types.h"

namespace tvutil2 {

/// What the part takes of the dialog's client area, in pixels.
struct PartRoom {
    RECT sides{};    ///< at each side of the dialog's own controls
    LONG width = 0;  ///< that the whole must have
};

/// Nothing where there is no part.
[[nodiscard]] PartRoom room_of_part(HWND dialog);

/// Puts the part where it belongs in the client area. What is to the right of stc32, or below it,
/// keeps its distance from the dialog's own controls.
void place_part(HWND dialog);

/// Keeps a part that has just been made from taking more than a monitor has room for.
void cut_part_to_monitor(HWND part);

}  // namespace tvutil2
