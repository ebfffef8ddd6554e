// A combo box as it is: a field, with the list that opens below it.
#pragma once

#include "tvutil2/platform/window/controls/control.h"
#include "tvutil2/platform/window/controls/list_state.h"

#include <memory>

namespace tvutil2 {

struct ComboState : ControlState {
    HWND list = nullptr;
    HWND edit = nullptr;
    WNDPROC edit_procedure = nullptr;
    bool is_open = false;
    bool is_hot = false;
    bool has_focus = false;
    bool is_filling = false;   ///< the edit, which nobody has to hear of
    int selected_before = -1;  ///< the list opened
    int dropped_width = 0;
};

[[nodiscard]] std::shared_ptr<ListState> list_of(const ComboState& state);

// The parent is told, and may have destroyed the window behind each of these.

/// The chosen text into the edit.
void fill_combo_edit(ComboState& state, int index);
void go_to_in_combo(HWND window, ComboState& state, int index);
void open_combo(HWND window, ComboState& state);
/// Hides the list: SELENDOK or SELENDCANCEL, then CLOSEUP.
void close_combo(HWND window, ComboState& state, bool takes);
/// A key has gone to an item.
void follow_combo_key(HWND window, ComboState& state, int index);
/// False for a key that is the edit's, or means nothing here.
bool press_combo_key(HWND window, ComboState& state, WPARAM key, bool with_alt);
void turn_combo_wheel(HWND window, ComboState& state, int delta);

/// What programs ask of the box and its list. False for any other message.
bool handle_combo_list(HWND window, ComboState& state, UINT message, WPARAM wparam, LPARAM lparam,
                       LRESULT& result);

}  // namespace tvutil2
