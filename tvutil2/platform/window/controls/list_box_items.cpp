// What programs ask of a list box.
#include "tvutil2/platform/window/controls/list_box.h"
#include "tvutil2/platform/window/controls/list_state.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/mouse.h"
#include "tvutil2/platform/window/window.h"

#include <algorithm>

namespace tvutil2 {
namespace {

LRESULT set_current(HWND window, ListState& state, int index) {
    if (index != -1 && !state.items.has(index)) return LB_ERR;
    go_to_item(window, state, index);
    return index == -1 ? LB_ERR : index;
}

LRESULT set_selected(HWND window, ListState& state, bool selects, int index) {
    if (!takes_several(style_of(window)) || (index != -1 && !state.items.has(index))) return LB_ERR;
    for (int i = 0; i < state.items.count(); ++i) {
        if (index == -1 || i == index) state.items.at(i).is_selected = selects;
    }
    repaint(window);
    return LB_OKAY;
}

LRESULT selected_items(const ListState& state, WPARAM room, int* to) {
    WPARAM found = 0;
    for (int i = 0; i < state.items.count(); ++i) {
        if (!state.items.at(i).is_selected) continue;
        if (to != nullptr && found < room) to[found] = i;
        ++found;
    }
    return static_cast<LRESULT>(to != nullptr ? std::min(found, room) : found);
}

}  // namespace

bool handle_list_items(HWND window, ListState& state, UINT message, WPARAM wparam, LPARAM lparam,
                       LRESULT& result) {
    auto& items = state.items;
    const auto index = static_cast<int>(wparam);
    const auto* const text = reinterpret_cast<const char16_t*>(lparam);
    result = LB_ERR;
    switch (message) {
        case LB_ADDSTRING:
            result = items.add(text, (style_of(window) & LBS_SORT) != 0);
            break;
        case LB_INSERTSTRING:
            result = items.insert(index, text);
            break;
        case LB_DELETESTRING:
            if (!items.has(index)) return true;
            items.remove(index);
            if (state.current == index) state.current = -1;
            if (state.current > index) --state.current;
            result = items.count();
            break;
        case LB_RESETCONTENT:
            items.all.clear();
            state.current = state.anchor = state.hot = -1;
            result = LB_OKAY;
            break;
        case LB_GETCOUNT:
            result = items.count();
            return true;
        case LB_GETTEXT:
            if (!items.has(index)) return true;
            result = static_cast<LRESULT>(items.at(index).text.size());
            items.at(index).text.copy(reinterpret_cast<char16_t*>(lparam),
                                      items.at(index).text.size());
            reinterpret_cast<char16_t*>(lparam)[result] = 0;
            return true;
        case LB_GETTEXTLEN:
            if (items.has(index)) result = static_cast<LRESULT>(items.at(index).text.size());
            return true;
        case LB_GETITEMDATA:
            if (items.has(index)) result = static_cast<LRESULT>(items.at(index).data);
            return true;
        case LB_SETITEMDATA:
            if (!items.has(index)) return true;
            items.at(index).data = static_cast<std::uintptr_t>(lparam);
            result = LB_OKAY;
            return true;
        case LB_FINDSTRING:
        case LB_FINDSTRINGEXACT:
            result = items.find(index, text, message == LB_FINDSTRINGEXACT);
            return true;
        default:
            return false;
    }
    arrange_list(window, state);
    return true;
}

bool handle_list_selection(HWND window, ListState& state, UINT message, WPARAM wparam,
                           LPARAM lparam, LRESULT& result) {
    const auto index = static_cast<int>(wparam);
    const auto style = style_of(window);
    switch (message) {
        case LB_SETCURSEL:
            result = takes_several(style) ? LB_ERR : set_current(window, state, index);
            return true;
        case LB_GETCURSEL:
            result = state.current;
            return true;
        case LB_SETSEL:
            result = set_selected(window, state, wparam != 0, static_cast<int>(lparam));
            return true;
        case LB_GETSEL:
            result = LB_ERR;
            if (state.items.has(index)) result = is_list_item_selected(state, style, index) ? 1 : 0;
            return true;
        case LB_GETSELCOUNT:
            result = takes_several(style) ? selected_items(state, 0, nullptr) : LB_ERR;
            return true;
        case LB_GETSELITEMS:
            result = takes_several(style)
                         ? selected_items(state, wparam, reinterpret_cast<int*>(lparam))
                         : LB_ERR;
            return true;
        case LB_SELECTSTRING: {
            const auto found =
                state.items.find(index, reinterpret_cast<const char16_t*>(lparam), false);
            result = found >= 0 ? set_current(window, state, found) : LB_ERR;
            return true;
        }
        case LB_GETTOPINDEX:
            result = state.rows.top;
            return true;
        case LB_SETTOPINDEX:
            show_rows_from(window, state.rows, state.items.count(), index);
            result = LB_OKAY;
            return true;
        case LB_GETITEMHEIGHT:
            result = state.rows.height;
            return true;
        case LB_GETITEMRECT:
            result = state.items.has(index) ? 1 : LB_ERR;
            *reinterpret_cast<RECT*>(lparam) = state.rows.place(client_of(window), index);
            return true;
        case LB_ITEMFROMPOINT: {
            const POINT point{GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam)};
            const auto found = list_item_under(window, state, point);
            result = found >= 0 ? found : MAKELPARAM(static_cast<WORD>(state.items.count() - 1), 1);
            return true;
        }
        default:
            return false;
    }
}

}  // namespace tvutil2
