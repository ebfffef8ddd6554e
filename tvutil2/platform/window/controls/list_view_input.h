// What a person does in a list view, and how its items are selected. The parent is told, and may
// have destroyed the window behind each of these.
#pragma once

#include "tvutil2/platform/window/controls/list_view_state.h"

namespace tvutil2 {

/// LVIS_ flags.
[[nodiscard]] UINT list_item_state(const ListViewState& state, int index);
/// Selects or not, and moves the focus: what changes is told item by item.
void change_list_item(HWND window, ListViewState& state, int index, UINT bits, UINT mask);
/// False for a key that means nothing here.
bool press_list_key(HWND window, ListViewState& state, WPARAM key);
void press_list_view(HWND window, ListViewState& state, POINT point, bool is_double);
void move_over_list_view(HWND window, ListViewState& state, POINT point);
void release_list_view(HWND window, ListViewState& state, POINT point);
/// False where the pointer has nothing to say.
bool set_list_cursor(HWND window, ListViewState& state);

/// The messages about names that the person changes. False for any other.
bool handle_list_label(HWND window, ListViewState& state, UINT message, WPARAM wparam,
                       LRESULT& result);
/// Ends a change of a name, which may be none.
void end_list_label(HWND window, ListViewState& state, bool gives_up);

/// The messages about items. False for any other.
bool handle_list_view_items(HWND window, ListViewState& state, UINT message, WPARAM wparam,
                            LPARAM lparam, LRESULT& result);

}  // namespace tvutil2
