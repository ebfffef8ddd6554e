// What the sources of this folder tell a window about its place, and know of its frame.
#pragma once

#include "tvutil2/platform/window/window_table.h"

#include <span>

namespace tvutil2 {

/// WM_SIZE and WM_MOVE, to a window that hasn't had them yet, or `anew`.
void tell_size(HWND window, bool anew);

/// What a window of a class of the system keeps, made by the first call. Null when the window has
/// gone or keeps something else.
template <class T>
[[nodiscard]] std::shared_ptr<T> state_of(HWND window) {
    const TreeLock tree;
    auto* const record = tree.table.find(window);
    if (record == nullptr) return nullptr;
    if (!record->state) record->state = std::make_shared<T>();
    return std::dynamic_pointer_cast<T>(record->state);
}
/// Without making it.
template <class T>
[[nodiscard]] bool has_state(HWND window) {
    const TreeLock tree;
    const auto* const record = tree.table.find(window);
    return record != nullptr && dynamic_cast<const T*>(record->state.get()) != nullptr;
}

// With the lock of the tree:

[[nodiscard]] bool is_child(const Window& window);
[[nodiscard]] inline bool is_top_level(const Window& window) {
    return window.parent->handle == 0;
}
[[nodiscard]] Window& top_level_of(Window& window);
/// The corner of the window on the screen.
[[nodiscard]] POINT corner_of(const Window& window);
/// The corner of its client area on the screen.
[[nodiscard]] POINT client_corner_of(const Window& window);
[[nodiscard]] UINT dpi_of(const Window& window);
/// Whether it and all its parents are shown; not whether a display shows them.
[[nodiscard]] bool is_shown(const Window& window);
/// The deepest visible window at a place on the screen, from `window` down; disabled ones and those
/// of `without` are looked through.
[[nodiscard]] HWND deepest_window(Window& window, POINT point, std::span<const HWND> without);
/// Puts a window into its place among its siblings: false when it is there. What a window owns
/// stays in front of it, and topmost windows stay in front of the others.
bool reorder(WindowTable& table, Window& window, HWND after);

// The frame around a client area:

/// Its thickness at each side.
[[nodiscard]] RECT frame_thickness(DWORD style, DWORD ex_style, UINT dpi);
/// What WM_GETMINMAXINFO starts with, for a window at that place.
[[nodiscard]] MINMAXINFO default_limits(DWORD style, DWORD ex_style, const RECT& rect);
/// Asks the window; then keeps a size within what it says.
[[nodiscard]] MINMAXINFO limits_of(HWND window);
[[nodiscard]] SIZE within(const MINMAXINFO& limits, SIZE size);
[[nodiscard]] bool has_limits(DWORD style);

/// The messages of the frame and of the place that DefWindowProcW answers. False for any other.
bool handle_frame_message(HWND window, UINT message, LPARAM lparam, LRESULT& result);

}  // namespace tvutil2
