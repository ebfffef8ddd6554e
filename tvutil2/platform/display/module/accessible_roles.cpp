#include "tvutil2/platform/display/module/accessible_roles.h"

namespace tvutil2 {

AtkRole role_of(const Accessible& told) {
    switch (told.role) {
        case AccessibleRole::window:
        case AccessibleRole::dialog:
            return ATK_ROLE_PANEL;
        case AccessibleRole::push_button:
            return ATK_ROLE_PUSH_BUTTON;
        case AccessibleRole::check_box:
            return ATK_ROLE_CHECK_BOX;
        case AccessibleRole::radio_button:
            return ATK_ROLE_RADIO_BUTTON;
        case AccessibleRole::group:
            return ATK_ROLE_GROUPING;
        case AccessibleRole::label:
            return ATK_ROLE_LABEL;
        case AccessibleRole::picture:
            return ATK_ROLE_IMAGE;
        case AccessibleRole::separator:
            return ATK_ROLE_SEPARATOR;
        case AccessibleRole::edit:
            return told.state.is_multiline ? ATK_ROLE_TEXT : ATK_ROLE_ENTRY;
        case AccessibleRole::password:
            return ATK_ROLE_PASSWORD_TEXT;
        case AccessibleRole::list:
            return ATK_ROLE_LIST;
        case AccessibleRole::list_item:
            return ATK_ROLE_LIST_ITEM;
        case AccessibleRole::tree:
            return ATK_ROLE_TREE;
        case AccessibleRole::tree_item:
            return ATK_ROLE_TREE_ITEM;
        case AccessibleRole::combo_box:
            return ATK_ROLE_COMBO_BOX;
        case AccessibleRole::scroll_bar:
            return ATK_ROLE_SCROLL_BAR;
        case AccessibleRole::progress:
            return ATK_ROLE_PROGRESS_BAR;
        case AccessibleRole::menu:
            return ATK_ROLE_MENU;
        case AccessibleRole::menu_bar:
            return ATK_ROLE_MENU_BAR;
        case AccessibleRole::menu_item:
            return told.state.is_expandable ? ATK_ROLE_MENU : ATK_ROLE_MENU_ITEM;
        case AccessibleRole::custom:
            break;
    }
    return ATK_ROLE_UNKNOWN;
}

bool is_item(const Accessible& told) {
    return told.role == AccessibleRole::list_item || told.role == AccessibleRole::tree_item ||
           told.role == AccessibleRole::menu_item;
}

States states_of(const Accessible& told) {
    const auto& state = told.state;
    const bool is_field =
        told.role == AccessibleRole::edit || told.role == AccessibleRole::password;
    return {{{ATK_STATE_VISIBLE, state.is_visible},
             {ATK_STATE_SHOWING, state.is_visible},
             {ATK_STATE_ENABLED, state.is_enabled},
             {ATK_STATE_SENSITIVE, state.is_enabled},
             {ATK_STATE_FOCUSABLE, state.is_focusable || is_item(told)},
             {ATK_STATE_FOCUSED, state.has_focus},
             {ATK_STATE_CHECKED, state.is_checked},
             {ATK_STATE_INDETERMINATE, state.is_mixed},
             {ATK_STATE_DEFAULT, state.is_default},
             {ATK_STATE_READ_ONLY, state.is_read_only},
             {ATK_STATE_EDITABLE, is_field && !state.is_read_only},
             {ATK_STATE_MULTI_LINE, state.is_multiline},
             {ATK_STATE_SELECTABLE, is_item(told)},
             {ATK_STATE_SELECTED, state.is_selected},
             {ATK_STATE_EXPANDABLE, state.is_expandable || told.role == AccessibleRole::combo_box},
             {ATK_STATE_EXPANDED, state.is_expanded}}};
}

}  // namespace tvutil2
