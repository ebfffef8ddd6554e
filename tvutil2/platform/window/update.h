// Which parts of the windows on a display are out of date. All with the lock of the tree.
#pragma once

#include "tvutil2/platform/draw/region.h"
#include "tvutil2/platform/window/window_states.h"

namespace tvutil2 {

/// Whether the window, and all that it is in, are shown on a display.
[[nodiscard]] bool is_on_display(const Window& window);
/// The corner of the window, in pixels of its top-level window's surface.
[[nodiscard]] POINT corner_on_surface(const Window& window);
/// What of the window, or of its client area, isn't covered, in pixels of the surface. Children
/// cover the client area of a window with WS_CLIPCHILDREN.
[[nodiscard]] Region visible_part(const Window& window, bool is_client);
/// The whole window from its own corner, and its client area.
[[nodiscard]] RECT area_of(const Window& window);

enum class Children { by_style, none, all };

/// Makes a part of the window, from its own corner, out of date.
void invalidate(Window& window, const Region& part, bool erase, bool frame, Children children);
/// Makes the frame out of date, and nothing else.
void invalidate_frame(Window& window);
inline void invalidate_all(Window& window) {
    invalidate(window, Region(area_of(window)), true, true, Children::all);
}
void validate(Window& window, const Region& part);
/// Forgets what is out of date in it and below.
void forget_updates(Window& window);

/// How a window lies before a change.
struct Placement {
    bool is_on_display = false;
    RECT rect{}, client{};
    Region visible;  ///< in pixels of the surface
};
[[nodiscard]] Placement placement_of(const Window& window);
/// Makes out of date what a change uncovers, and what has to be painted anew in the window.
void update_after(Window& window, const Placement& before, bool changes_order, bool changes_frame);

/// The first window of the thread that is out of date, from the top; null for none.
[[nodiscard]] Window* next_out_of_date(WindowTable& table, ThreadQueue& queue);
/// What is out of date of the client area, from the window's corner.
[[nodiscard]] Region client_update(const Window& window);
/// Nothing of the window is out of date any more: what was.
struct Update {
    Region part;
    bool erase = false, frame = false;
};
Update take_update(Window& window);

}  // namespace tvutil2
