#include "tvutil2/platform/window/controls/list_view_input.h"

#include "tvutil2/platform/draw/rect.h"
#include "tvutil2/platform/window/controls/notify.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/mouse.h"
#include "tvutil2/platform/window/window.h"

#include <algorithm>
#include <utility>

namespace tvutil2 {
namespace {

constexpr int kNarrowestColumn = 10;

void tell_item(HWND window, UINT code, int index, UINT old_bits, UINT new_bits) {
    NMLISTVIEW told{};
    told.iItem = index;
    told.uOldState = old_bits;
    told.uNewState = new_bits;
    told.uChanged = LVIF_STATE;
    notify_parent_of(window, told.hdr, code);
}

}  // namespace

UINT list_item_state(const ListViewState& state, int index) {
    return (state.focused == index ? LVIS_FOCUSED : 0) |
           (state.selected[static_cast<std::size_t>(index)] ? LVIS_SELECTED : 0);
}

void change_list_item(HWND window, ListViewState& state, int index, UINT bits, UINT mask) {
    if (!state.has(index)) return;
    const auto before = list_item_state(state, index);
    if ((mask & LVIS_SELECTED) != 0) {
        const bool selects = (bits & LVIS_SELECTED) != 0;
        if (state.selected[static_cast<std::size_t>(index)] != selects) {
            state.selected[static_cast<std::size_t>(index)] = selects;
            state.selected_count += selects ? 1 : -1;
        }
    }
    if ((mask & LVIS_FOCUSED) != 0) {
        if ((bits & LVIS_FOCUSED) != 0) {
            const auto last = std::exchange(state.focused, index);
            if (last != index) ListViewView(window, state).repaint_item(last);
        } else if (state.focused == index) {
            state.focused = -1;
        }
    }
    const auto after = list_item_state(state, index);
    if (before == after) return;
    ListViewView(window, state).repaint_item(index);
    tell_item(window, LVN_ITEMCHANGED, index, before, after);
}

namespace {

void unselect_others(HWND window, ListViewState& state, int first, int last) {
    if (state.selected_count == 0) return;
    for (int i = 0; i < state.count() && IsWindow(window); ++i) {
        const bool stays = i >= first && i <= last;
        if (!stays && state.selected[static_cast<std::size_t>(i)]) {
            change_list_item(window, state, i, 0, LVIS_SELECTED);
        }
    }
}

// The person goes to an item.
void choose(HWND window, ListViewState& state, int index, bool by_pointer) {
    const bool is_single = (style_of(window) & LVS_SINGLESEL) != 0;
    const bool with_control = GetKeyState(VK_CONTROL) < 0 && !is_single;
    const bool with_shift = GetKeyState(VK_SHIFT) < 0 && !is_single && state.has(state.anchor);
    if (!state.has(index)) {
        if (!with_control) unselect_others(window, state, -1, -1);
        return;
    }
    if (with_shift) {
        const auto first = std::min(state.anchor, index);
        const auto last = std::max(state.anchor, index);
        unselect_others(window, state, first, last);
        for (int i = first; i <= last && state.has(i); ++i) {
            change_list_item(window, state, i, LVIS_SELECTED, LVIS_SELECTED);
        }
        change_list_item(window, state, index, LVIS_FOCUSED, LVIS_FOCUSED);
    } else if (with_control) {
        const bool is_selected = state.selected[static_cast<std::size_t>(index)];
        const UINT bits = by_pointer && !is_selected ? LVIS_SELECTED : 0;
        const UINT mask = by_pointer ? LVIS_SELECTED : 0;
        change_list_item(window, state, index, bits | LVIS_FOCUSED, mask | LVIS_FOCUSED);
        state.anchor = index;
    } else {
        unselect_others(window, state, index, index);
        change_list_item(window, state, index, LVIS_SELECTED | LVIS_FOCUSED,
                         LVIS_SELECTED | LVIS_FOCUSED);
        state.anchor = index;
    }
    if (IsWindow(window)) ListViewView(window, state).show(index);
}

int index_after_key(ListViewView& view, WPARAM key) {
    const auto& state = view.state();
    if (state.count() == 0) return -1;
    const auto from = state.focused;
    const auto last = state.count() - 1;
    if (state.focused < 0) return key == VK_END ? last : 0;
    if (view.shows_icons()) {
        const auto step = key == VK_LEFT ? -1 : key == VK_RIGHT ? 1 : 0;
        if (step != 0) return std::clamp(from + step, 0, last);
    }
    if (key == VK_HOME) return 0;
    if (key == VK_END) return last;
    const auto row =
        row_after_key(state.rows, view.client(), view.row_count(), from / state.per_row, key);
    return std::clamp(row * state.per_row + from % state.per_row, 0, last);
}

void press_header(HWND window, ListViewState& state, int column, bool is_edge, int x) {
    if (is_edge) {
        state.sized_column = column;
        state.held_x = x;
        state.held_width = state.columns[static_cast<std::size_t>(column)].width;
    } else {
        state.pressed_column = column;
    }
    SetCapture(window);
    repaint(window);
}

}  // namespace

bool press_list_key(HWND window, ListViewState& state, WPARAM key) {
    ListViewView view(window, state);
    switch (key) {
        case VK_SPACE:
            if (state.has(state.focused)) {
                const bool is_on = state.selected[static_cast<std::size_t>(state.focused)];
                const bool turns_off = is_on && GetKeyState(VK_CONTROL) < 0;
                change_list_item(window, state, state.focused, turns_off ? 0 : LVIS_SELECTED,
                                 LVIS_SELECTED);
            }
            return true;
        case VK_RETURN:
            if (state.has(state.focused)) tell_item(window, LVN_ITEMACTIVATE, state.focused, 0, 0);
            return true;
        case VK_LEFT:
        case VK_RIGHT:
            if (!view.shows_icons()) {
                view.scroll_to_x(state.scroll_x + (key == VK_LEFT ? -20 : 20));
                return true;
            }
            break;
        case VK_UP:
        case VK_DOWN:
        case VK_PRIOR:
        case VK_NEXT:
        case VK_HOME:
        case VK_END:
            break;
        default:
            return false;
    }
    const auto to = index_after_key(view, key);
    if (to >= 0 && to != state.focused) choose(window, state, to, false);
    return true;
}

void press_list_view(HWND window, ListViewState& state, POINT point, bool is_double) {
    if (GetFocus() != window) SetFocus(window);
    if (!IsWindow(window)) return;
    ListViewView view(window, state);
    bool is_edge = false;
    const auto column = view.column_at(point, is_edge);
    if (column >= 0 && is_double && is_edge) {
        state.columns[static_cast<std::size_t>(column)].width = view.width_for(column);
        view.arrange();
        return;
    }
    if (column >= 0) return press_header(window, state, column, is_edge, static_cast<int>(point.x));
    const auto index = view.item_at(point);
    if (!is_double) choose(window, state, index, true);
    if (!IsWindow(window)) return;
    NMLISTVIEW told{};
    told.iItem = index;
    told.ptAction = point;
    notify_parent_of(window, told.hdr, is_double ? NM_DBLCLK : NM_CLICK);
    if (is_double && index >= 0 && IsWindow(window)) {
        tell_item(window, LVN_ITEMACTIVATE, index, 0, 0);
    }
}

void move_over_list_view(HWND window, ListViewState& state, POINT point) {
    ListViewView view(window, state);
    if (state.sized_column >= 0) {
        auto& column = state.columns[static_cast<std::size_t>(state.sized_column)];
        column.width =
            std::max(state.held_width + static_cast<int>(point.x) - state.held_x, kNarrowestColumn);
        view.arrange();
        return;
    }
    const auto before = std::exchange(state.hot, view.item_at(point));
    if (before == state.hot) return;
    view.repaint_item(before);
    view.repaint_item(state.hot);
}

void release_list_view(HWND window, ListViewState& state, POINT point) {
    const auto pressed = std::exchange(state.pressed_column, -1);
    const bool was_sizing = std::exchange(state.sized_column, -1) >= 0;
    if (pressed < 0 && !was_sizing) return;
    if (GetCapture() == window) ReleaseCapture();
    repaint(window);
    bool is_edge = false;
    if (pressed < 0 || ListViewView(window, state).column_at(point, is_edge) != pressed) return;
    NMLISTVIEW told{};
    told.iItem = -1;
    told.iSubItem = pressed;
    notify_parent_of(window, told.hdr, LVN_COLUMNCLICK);
}

bool set_list_cursor(HWND window, ListViewState& state) {
    POINT point{};
    GetCursorPos(&point);
    ScreenToClient(window, &point);
    bool is_edge = false;
    const auto column = ListViewView(window, state).column_at(point, is_edge);
    if (column >= 0 && is_edge) SetCursor(LoadCursorW(nullptr, IDC_SIZEWE));
    return column >= 0 && is_edge;
}

}  // namespace tvutil2
