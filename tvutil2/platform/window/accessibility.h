// What a window holds for somebody who doesn't see it: each control's role, name and state, in one
// walk.
//
// For the window's thread: controls are asked by messages. A control of a class that isn't known
// has the role `custom`. A label names what comes behind it, as its mnemonic does.
#pragma once

#include "tvutil2/platform/base/export.h"
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
    combo_box,
    scroll_bar,
    progress,
    menu,
    custom
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
    bool is_expanded = false;
};

struct Accessible {
    HWND window = nullptr;
    AccessibleRole role = AccessibleRole::custom;
    std::u16string name;   ///< without the mark of its mnemonic
    std::u16string value;  ///< text of a field, the item chosen, how far; never a password
    char16_t mnemonic = 0;
    AccessibleState state;
    RECT place{};  ///< on the screen
    std::vector<Accessible> children;
};

/// The window and all that is in it, in the order of the keyboard.
[[nodiscard]] TVUTIL_API Accessible accessible_tree(HWND window);

}  // namespace tvutil2
