#include "tvutil2/platform/window/accessibility.h"

#include "tvutil2/platform/window/accessible_items.h"
#include "tvutil2/platform/window/accessible_menus.h"
#include "tvutil2/platform/window/class_table.h"
#include "tvutil2/platform/window/controls/button.h"
#include "tvutil2/platform/window/controls/combo_box.h"
#include "tvutil2/platform/window/controls/control.h"
#include "tvutil2/platform/window/controls/edit.h"
#include "tvutil2/platform/window/controls/progress.h"
#include "tvutil2/platform/window/controls/static.h"
#include "tvutil2/platform/window/dialogs/dialogs.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/menus/menu_bar.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/parameters.h"
#include "tvutil2/platform/window/scrolling.h"
#include "tvutil2/platform/window/show.h"
#include "tvutil2/platform/window/window.h"

namespace tvutil2 {
namespace {

using Role = AccessibleRole;

Role role_of_button(DWORD style) {
    switch (style & BS_TYPEMASK) {
        case BS_CHECKBOX:
        case BS_AUTOCHECKBOX:
        case BS_3STATE:
        case BS_AUTO3STATE:
            return Role::check_box;
        case BS_RADIOBUTTON:
        case BS_AUTORADIOBUTTON:
            return Role::radio_button;
        case BS_GROUPBOX:
            return Role::group;
        default:
            return Role::push_button;
    }
}

Role role_of_static(DWORD style) {
    const auto type = style & SS_TYPEMASK;
    if (type == SS_BITMAP || type == SS_OWNERDRAW) return Role::picture;
    const bool is_drawn = (type >= SS_BLACKRECT && type <= SS_WHITEFRAME) ||
                          type == SS_ETCHEDHORZ || type == SS_ETCHEDVERT;
    return is_drawn ? Role::separator : Role::label;
}

Role role_of(HWND window, DWORD style) {
    char16_t name[64];
    GetClassNameW(window, name, 64);
    const auto folded = folded_name(name);
    if (folded == u"button") return role_of_button(style);
    if (folded == u"static") return role_of_static(style);
    if (folded == u"edit") {
        const bool is_password = SendMessageW(window, EM_GETPASSWORDCHAR, 0, 0) != 0;
        return is_password ? Role::password : Role::edit;
    }
    if (folded == u"listbox" || folded == u"combolbox") return Role::list;
    if (folded == u"syslistview32") return Role::list;
    if (folded == u"systreeview32") return Role::tree;
    if (folded == u"combobox") return Role::combo_box;
    if (folded == u"scrollbar") return Role::scroll_bar;
    if (folded == u"msctls_progress32") return Role::progress;
    if (folded == u"#32768") return Role::menu;
    if (folded == u"#32770") return Role::dialog;
    return (style & WS_CHILD) == 0 ? Role::window : Role::custom;
}

// Whose name is what they say themselves, and not a label's.
bool names_itself(Role role) {
    switch (role) {
        case Role::edit:
        case Role::password:
        case Role::list:
        case Role::tree:
        case Role::combo_box:
        case Role::scroll_bar:
        case Role::progress:
        case Role::picture:
        case Role::separator:
            return false;
        default:
            return true;
    }
}

std::u16string number_text(std::int64_t number) {
    const auto digits = std::to_string(number);
    return {digits.begin(), digits.end()};
}

std::u16string value_of(HWND window, Role role) {
    switch (role) {
        case Role::edit:
        case Role::combo_box:
            return text_of(window);
        case Role::progress:
            return number_text(SendMessageW(window, PBM_GETPOS, 0, 0));
        case Role::scroll_bar:
            return number_text(SendMessageW(window, SBM_GETPOS, 0, 0));
        default:
            return {};
    }
}

AccessibleRange range_of(HWND window, Role role) {
    AccessibleRange range;
    if (role == Role::progress) {
        range.least = static_cast<int>(SendMessageW(window, PBM_GETRANGE, TRUE, 0));
        range.most = static_cast<int>(SendMessageW(window, PBM_GETRANGE, FALSE, 0));
        range.now = static_cast<int>(SendMessageW(window, PBM_GETPOS, 0, 0));
    } else if (role == Role::scroll_bar) {
        SendMessageW(window, SBM_GETRANGE, reinterpret_cast<WPARAM>(&range.least),
                     reinterpret_cast<LPARAM>(&range.most));
        range.now = static_cast<int>(SendMessageW(window, SBM_GETPOS, 0, 0));
    }
    return range;
}

AccessibleState state_of_control(HWND window, Role role, DWORD style) {
    AccessibleState state;
    state.is_visible = IsWindowVisible(window) != 0;
    state.is_enabled = IsWindowEnabled(window) != 0;
    state.is_focusable = (style & WS_TABSTOP) != 0 && state.is_enabled;
    auto* const focus = GetFocus();
    state.has_focus =
        focus == window || (role == Role::combo_box && focus != nullptr && IsChild(window, focus));
    if (role == Role::check_box || role == Role::radio_button) {
        const auto check = SendMessageW(window, BM_GETCHECK, 0, 0);
        state.is_checked = check == BST_CHECKED;
        state.is_mixed = check == BST_INDETERMINATE;
    }
    if (role == Role::push_button) {
        state.is_default = (SendMessageW(window, WM_GETDLGCODE, 0, 0) & DLGC_DEFPUSHBUTTON) != 0;
    }
    if (role == Role::edit || role == Role::password) {
        state.is_read_only = (style & ES_READONLY) != 0;
        state.is_multiline = (style & ES_MULTILINE) != 0;
    }
    if (role == Role::combo_box) {
        state.is_expanded = SendMessageW(window, CB_GETDROPPEDSTATE, 0, 0) != 0;
    }
    return state;
}

// Labels name what comes behind them. Boxes of lines keep the label for what is behind these.
void name_by_labels(std::vector<Accessible>& controls) {
    const Accessible* label = nullptr;
    for (auto& each : controls) {
        if (each.role == Role::label || each.role == Role::group) {
            label = &each;
        } else if (!names_itself(each.role) && each.role != Role::separator) {
            if (label != nullptr && each.name.empty()) {
                each.name = label->name;
                each.mnemonic = label->mnemonic;
            }
            label = nullptr;
        } else if (names_itself(each.role)) {
            label = nullptr;
        }
    }
}

Accessible describe(HWND window, int depth) {
    Accessible found;
    const auto style = style_of(window);
    found.window = window;
    found.role = role_of(window, style);
    if (names_itself(found.role)) found.name = without_mnemonic(text_of(window), found.mnemonic);
    found.value = value_of(window, found.role);
    found.range = range_of(window, found.role);
    found.state = state_of_control(window, found.role, style);
    GetWindowRect(window, &found.place);
    if (found.role == Role::edit) {
        DWORD end = 0;
        SendMessageW(window, EM_GETSEL, 0, reinterpret_cast<LPARAM>(&end));
        found.caret = static_cast<int>(end);
    }
    const bool has_items = found.role == Role::list || found.role == Role::tree;
    if (has_items || found.role == Role::combo_box) describe_items(found);
    // The edit in a combo box is the box's own.
    if (found.role == Role::combo_box || depth > kMaxNesting) return found;
    for (auto* each = GetWindow(window, GW_CHILD); each != nullptr;
         each = GetWindow(each, GW_HWNDNEXT)) {
        found.children.push_back(describe(each, depth + 1));
    }
    if (depth == 0 && GetMenu(window) != nullptr) {
        found.children.insert(found.children.begin(), accessible_menu_bar(window));
    }
    if (found.role == Role::menu) describe_menu(found);
    name_by_labels(found.children);
    return found;
}

}  // namespace

// As the person would have done it: its parent hears of it.
void fill_control(HWND window, const std::u16string& text, int number) {
    if (IsWindowVisible(window) == 0 || IsWindowEnabled(window) == 0) return;
    const auto style = style_of(window);
    switch (role_of(window, style)) {
        case Role::edit:
            if ((style & ES_READONLY) != 0) return;
            SendMessageW(window, EM_SETSEL, 0, -1);
            SendMessageW(window, EM_REPLACESEL, TRUE, as_lparam(text.c_str()));
            return;
        case Role::combo_box:
            if (SendMessageW(window, CB_SETCURSEL, static_cast<WPARAM>(number), 0) == CB_ERR)
                return;
            notify_parent(window, CBN_SELENDOK);
            if (IsWindow(window)) notify_parent(window, CBN_SELCHANGE);
            return;
        case Role::scroll_bar:
            SendMessageW(GetParent(window), (style & SBS_VERT) != 0 ? WM_VSCROLL : WM_HSCROLL,
                         MAKEWPARAM(SB_THUMBPOSITION, static_cast<WORD>(number)),
                         as_lparam(window));
            return;
        default:
            return;
    }
}

Accessible accessible_tree(HWND window) {
    return IsWindow(window) ? describe(window, 0) : Accessible{};
}

}  // namespace tvutil2
