// How a person moves in a window's menu bar.
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/draw/rect.h"
#include "tvutil2/platform/window/default_paint.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/menus/menu_tracking.h"
#include "tvutil2/platform/window/mouse.h"
#include "tvutil2/platform/window/screen.h"
#include "tvutil2/platform/window/window.h"

#include <algorithm>

namespace tvutil2 {
int MenuLoop::bar_item_at(POINT point) const {
    if (!has_bar()) return -1;
    const auto places = menu_bar_places(m_owner);
    for (std::size_t i = 0; i < std::min(places.size(), m_bar_items.size()); ++i) {
        if (PtInRect(&places[i], point)) return static_cast<int>(i);
    }
    return -1;
}

// The items as the window has made them by now (WM_INITMENU).
bool MenuLoop::begin_bar() {
    m_bar = GetMenu(m_owner);
    // From here on the pointer leads to what the keys lead to.
    cool_menu_bar(m_owner);
    begin(m_bar);
    m_bar = IsWindow(m_owner) ? GetMenu(m_owner) : nullptr;
    m_bar_items = items_of(m_bar);
    if (m_bar_items.empty()) return false;
    SetCapture(m_owner);
    return true;
}

void MenuLoop::select_in_bar(int index) {
    if (m_bar_item == index) return;
    close_down_to(0);
    m_bar_item = index;
    repaint_frame(m_owner);
    if (index >= 0) tell_selected(m_bar, bar_item_of(index), index);
}

void MenuLoop::step_in_bar(int step) {
    const auto count = static_cast<int>(m_bar_items.size());
    const bool was_open = !m_open.empty();
    select_in_bar((m_bar_item + step + count) % count);
    if (was_open) open_from_bar(true);
}

// An item without a menu below it is chosen.
void MenuLoop::open_from_bar(bool selects_first) {
    if (m_bar_item < 0) return;
    const auto item = bar_item_of(m_bar_item);
    if (item.is_disabled()) return;
    if (item.submenu == nullptr) {
        if (!selects_first && !m_was_pressed) return;
        m_chosen = item.id;
        m_is_done = true;
        return;
    }
    const auto places = menu_bar_places(m_owner);
    // The window may have taken items away meanwhile.
    if (static_cast<std::size_t>(m_bar_item) >= places.size()) return;
    const auto& place = places[static_cast<std::size_t>(m_bar_item)];
    MenuAnchor anchor;
    anchor.point = {place.left, place.bottom};
    anchor.beside = place;
    if (!open(item.submenu, anchor) || !selects_first) return;
    const auto opened = top();
    if (opened) select(0, opened->next(-1, 1));
}

// A second press on the item whose menu is open closes it, and one elsewhere ends it all.
void MenuLoop::press_in_bar(POINT point) {
    const auto item = bar_item_at(point);
    if (item < 0 || (item == m_bar_item && !m_open.empty())) {
        m_is_done = true;
        return;
    }
    select_in_bar(item);
    open_from_bar(false);
}

// False for what is up to the open menu.
bool MenuLoop::key_in_bar(WPARAM key) {
    const auto state = m_open.empty() ? nullptr : top();
    const bool leads_on =
        state && state->can_select(state->selected) &&
        state->items[static_cast<std::size_t>(state->selected)].submenu != nullptr;
    switch (key) {
        case VK_LEFT:
            if (m_open.size() > 1) return false;
            step_in_bar(-1);
            return true;
        case VK_RIGHT:
            if (leads_on) return false;
            close_down_to(std::min<std::size_t>(m_open.size(), 1));
            step_in_bar(1);
            return true;
        case VK_ESCAPE:
            if (m_open.size() > 1) return false;
            if (m_open.empty()) m_is_done = true;
            close_down_to(0);
            return true;
        case VK_DOWN:
        case VK_UP:
        case VK_RETURN:
            if (!m_open.empty()) return false;
            open_from_bar(true);
            return true;
        default:
            return m_open.empty();
    }
}

void MenuLoop::type_in_bar(char16_t character) {
    const auto wanted = to_lower(character);
    for (std::size_t i = 0; i < m_bar_items.size() && wanted > u' '; ++i) {
        if (mnemonic_of(m_bar_items[i]) != wanted) continue;
        select_in_bar(static_cast<int>(i));
        return open_from_bar(true);
    }
}

UINT MenuLoop::run_bar(POINT point) {
    m_start = point;
    if (begin_bar()) {
        m_was_pressed = true;
        press_in_bar(point);
        follow_all();
    }
    return end();
}

UINT MenuLoop::run_bar(char16_t mnemonic) {
    if (begin_bar()) {
        if (mnemonic == 0) {
            select_in_bar(0);
        } else {
            type_in_bar(mnemonic);
        }
        if (m_bar_item >= 0) follow_all();
    }
    return end();
}

namespace {

template <class From>
void choose_from_bar(HWND window, From from) {
    if (MenuLoop::t_running != nullptr || display() == nullptr) return;
    if (items_of(GetMenu(window)).empty()) return;
    const auto chosen = MenuLoop(window, 0).run_bar(from);
    if (chosen != 0) PostMessageW(window, WM_COMMAND, MAKEWPARAM(static_cast<WORD>(chosen), 0), 0);
}

}  // namespace

void enter_menu_bar(HWND window, POINT point) {
    choose_from_bar(window, point);
}

void enter_menu_bar(HWND window, char16_t mnemonic) {
    choose_from_bar(window, mnemonic);
}

}  // namespace tvutil2
