// The scroll bars of a window, in its record.
#pragma once

#include "tvutil2/platform/window/scroll_state.h"
#include "tvutil2/platform/window/window_table.h"

#include <array>

namespace tvutil2 {

/// With the lock of the tree. The third one is that of a window that is a scroll bar itself.
struct ScrollBars {
    std::array<ScrollState, 3> bars;
    int active = -1;  ///< the one that `hot` and `pressed` are of
    ScrollPart hot = ScrollPart::none, pressed = ScrollPart::none;
};

/// From the corner of the window; the record's style says which there are.
[[nodiscard]] RECT scroll_bar_area(const Window& window, int bar);
[[nodiscard]] ScrollBars& scroll_bars_of(Window& window);

}  // namespace tvutil2
