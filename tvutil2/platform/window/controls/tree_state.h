// A tree view as it is: its items, what is selected of them, and where they are seen.
#pragma once

#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/picture/image_list.h"
#include "tvutil2/platform/window/controls/control.h"
#include "tvutil2/platform/window/controls/field.h"
#include "tvutil2/platform/window/controls/list_rows.h"
#include "tvutil2/platform/window/controls/tree_items.h"

#include <algorithm>
#include <string>

namespace tvutil2 {

/// What is typed in one go.
struct TypedName {
    static constexpr DWORD kPause = 1000;
    std::u16string text;
    DWORD last = 0;

    void add(char16_t character, DWORD time) {
        const bool goes_on = time - last < kPause && text != std::u16string(1, to_lower(character));
        last = time;
        if (!goes_on) text.clear();
        text += to_lower(character);
    }
    [[nodiscard]] bool begins(const std::u16string& name) const {
        return name.size() >= text.size() &&
               std::equal(text.begin(), text.end(), name.begin(),
                          [](char16_t a, char16_t b) { return a == to_lower(b); });
    }
};

struct TreeState : ControlState {
    TreeItems items;
    HTREEITEM selected = nullptr;
    HTREEITEM hot = nullptr;
    ListRows rows;
    FieldLook field;
    HIMAGELIST images = nullptr;  ///< the owner's
    bool is_frozen = false;       ///< WM_SETREDRAW: many items are on their way
    TypedName typed;
    HTREEITEM label_item = nullptr;  ///< whose name the person changes
    HWND label = nullptr;

    [[nodiscard]] int count() { return static_cast<int>(items.shown().size()); }
    /// -1 for an item that doesn't show.
    [[nodiscard]] int row_of(HTREEITEM item) {
        const auto& shown = items.shown();
        const auto found = std::ranges::find(shown, item);
        return found != shown.end() ? static_cast<int>(found - shown.begin()) : -1;
    }
    [[nodiscard]] HTREEITEM at(int row) {
        return row >= 0 && row < count() ? items.shown()[static_cast<std::size_t>(row)] : nullptr;
    }
};

// How it looks:

/// Where the arrow of an item is in its row.
[[nodiscard]] RECT tree_arrow(const TreeItem& item, RECT row, UINT dpi);
/// Where its text is.
[[nodiscard]] RECT tree_name(HWND window, TreeState& state, const TreeItem& item, RECT row);
/// Null where there is none.
[[nodiscard]] HTREEITEM tree_item_at(HWND window, TreeState& state, POINT point);
/// Another font, size or number of items.
void arrange_tree(HWND window, TreeState& state);
/// The edit control stays over its item.
void place_tree_label(HWND window, TreeState& state);
void repaint_tree_item(HWND window, TreeState& state, HTREEITEM item);
void paint_tree(HWND window, TreeState& state);

// What is done to it; the parent is told, and may have destroyed it behind each of these:

void show_tree_item(HWND window, TreeState& state, HTREEITEM item);
/// `how` is a TVC_ number.
void select_tree_item(HWND window, TreeState& state, HTREEITEM item, UINT how);
/// False when nothing changes: the parent may forbid it.
bool expand_tree_item(HWND window, TreeState& state, HTREEITEM item, WPARAM how);
void press_tree(HWND window, TreeState& state, POINT point, bool is_double);
void press_tree_key(HWND window, TreeState& state, WPARAM key);
void type_in_tree(HWND window, TreeState& state, char16_t character);
void heat_tree(HWND window, TreeState& state, HTREEITEM item);

}  // namespace tvutil2
