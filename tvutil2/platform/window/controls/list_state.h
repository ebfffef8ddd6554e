// A list box as it is, for it and for the combo box that it is the list of.
#pragma once

#include "tvutil2/platform/window/controls/control.h"
#include "tvutil2/platform/window/controls/field.h"
#include "tvutil2/platform/window/controls/list_items.h"
#include "tvutil2/platform/window/controls/list_rows.h"

namespace tvutil2 {

struct ListState : ControlState {
    ListItems items;
    ListRows rows;
    FieldLook field;
    int current = -1;  ///< the one, or the one that the keys are at
    int anchor = -1;   ///< where a range begins
    int hot = -1;
    bool is_pressed = false;
    std::u16string typed;  ///< what the person looks for
    DWORD typed_at = 0;
    HWND combo = nullptr;  ///< whose list it is
    bool is_scrolling = false;
    LPARAM pointer = -1;  ///< where it was last
};

/// What the person has typed in a second, with one more character; finds the item.
[[nodiscard]] int find_typed(ListState& state, char16_t character, DWORD now);
/// Makes an item the current one and shows it.
void go_to_item(HWND window, ListState& state, int index);
/// Another font, size or number of items.
void arrange_list(HWND window, ListState& state);

/// -1 for none.
[[nodiscard]] int list_item_under(HWND window, const ListState& state, POINT point);
[[nodiscard]] bool takes_several(DWORD style);
[[nodiscard]] bool is_list_item_selected(const ListState& state, DWORD style, int index);

/// Text, data and numbers of the items; what is selected and what shows. False for any other
/// message.
bool handle_list_items(HWND window, ListState& state, UINT message, WPARAM wparam, LPARAM lparam,
                       LRESULT& result);
bool handle_list_selection(HWND window, ListState& state, UINT message, WPARAM wparam,
                           LPARAM lparam, LRESULT& result);

/// What a list tells its combo box.
void list_chosen(HWND combo, int index);
void list_left(HWND combo);

}  // namespace tvutil2
