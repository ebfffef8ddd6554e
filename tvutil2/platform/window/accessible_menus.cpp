#include "tvutil2/platform/window/accessible_menus.h"

#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/window/menus/menu_bar.h"
#include "tvutil2/platform/window/menus/menu_window.h"

#include <utility>

namespace tvutil2 {
namespace {

// What stands behind a tab is the item's key.
Accessible entry_of(HWND window, std::size_t number, const MenuItem& item, const RECT& place) {
    Accessible told;
    told.window = window;
    told.item = static_cast<std::intptr_t>(number);
    told.role = item.is_separator() ? AccessibleRole::separator : AccessibleRole::menu_item;
    told.name = without_mnemonic(item.text.substr(0, item.text.find(u'\t')), told.mnemonic);
    told.state.is_visible = true;
    told.state.is_enabled = !item.is_disabled();
    told.state.is_checked = (item.state & MFS_CHECKED) != 0;
    told.state.is_expandable = item.submenu != nullptr;
    told.place = place;
    return told;
}

}  // namespace

std::u16string without_mnemonic(const std::u16string& text, char16_t& mnemonic) {
    std::u16string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == u'&') {
            if (++i == text.size()) break;
            if (text[i] != u'&') mnemonic = to_lower(text[i]);
        }
        plain += text[i];
    }
    return plain;
}

Accessible accessible_menu_bar(HWND window) {
    Accessible bar;
    bar.window = window;
    bar.role = AccessibleRole::menu_bar;
    bar.state.is_visible = bar.state.is_enabled = true;
    bar.place = menu_bar_place(window);
    const auto items = items_of(GetMenu(window));
    const auto places = menu_bar_places(window);
    for (std::size_t i = 0; i < items.size() && i < places.size(); ++i) {
        bar.children.push_back(entry_of(window, i, items[i], places[i]));
    }
    return bar;
}

void describe_menu(Accessible& menu) {
    const auto state = state_of<MenuWindowState>(menu.window);
    if (!state) return;
    for (std::size_t i = 0; i < state->items.size(); ++i) {
        const auto number = static_cast<int>(i);
        auto item = entry_of(menu.window, i, state->items[i], menu_item_rect(menu.window, number));
        item.state.has_focus = item.state.is_selected = number == state->selected;
        menu.children.push_back(std::move(item));
    }
}

}  // namespace tvutil2
