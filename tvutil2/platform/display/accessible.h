// What windows hold for somebody who doesn't see them. Drivers hand it to the desktop.
#pragma once

#include "tvutil2/platform/base/types.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tvutil2 {

enum class AccessibleRole : std::uint8_t {
    window,
    dialog,
    push_button,
    check_box,
    radio_button,
    group,
    label,
    picture,
    separator,
    edit,
    password,
    list,
    list_item,
    tree,
    tree_item,
    combo_box,
    scroll_bar,
    progress,
    menu,
    menu_bar,
    menu_item,
    custom
};

/// Of progress bars and scroll bars.
struct AccessibleRange {
    int least = 0, most = 0, now = 0;
    friend bool operator==(const AccessibleRange&, const AccessibleRange&) = default;
};

struct AccessibleState {
    bool is_visible = false;
    bool is_enabled = false;
    bool is_focusable = false;
    bool has_focus = false;
    bool is_checked = false;
    bool is_mixed = false;
    bool is_default = false;
    bool is_read_only = false;
    bool is_multiline = false;
    bool is_selected = false;
    bool is_expandable = false;
    bool is_expanded = false;
};

struct Accessible {
    HWND window = nullptr;
    std::intptr_t item = -1;  ///< what it is in its window: a number, or a handle; -1: all of it
    AccessibleRole role = AccessibleRole::custom;
    std::u16string name;   ///< without the mark of its mnemonic
    std::u16string value;  ///< text of a field, the item chosen, how far; never a password
    char16_t mnemonic = 0;
    int level = 0;  ///< of an item in a tree; the uppermost have 1
    int caret = 0;  ///< where text is typed next in `value`, in units
    AccessibleState state;
    AccessibleRange range;
    RECT place{};  ///< on the screen
    std::vector<Accessible> children;
};

}  // namespace tvutil2
