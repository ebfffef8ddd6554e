// The scroll bars of a window, in its record, and what changes there and shows.
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
[[nodiscard]] DWORD style_of_bar(int bar);
[[nodiscard]] bool is_vertical_bar(const Window& window, int bar);

// The rest takes the lock itself.

/// A bar as it is now, on the screen.
struct SeenBar {
    ScrollBarPlace place;
    ScrollState state;
};
/// False where there is none.
bool look_at_bar(HWND window, int bar, SeenBar& seen);

/// With -1 for all bars of the frame.
void change_bar_looks(HWND window, int bar, ScrollPart hot, ScrollPart pressed);

/// The position that the bar has then. One in the frame comes and goes as it is needed.
int set_bar_info(HWND window, int bar, const SCROLLINFO& info);

}  // namespace tvutil2
