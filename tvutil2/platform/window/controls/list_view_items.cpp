#include "tvutil2/platform/window/controls/list_view_input.h"
#include "tvutil2/platform/window/window.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace tvutil2 {
namespace {

constexpr int kMostItems = 100000000;

void take_over(ListViewItem& item, const LVITEMW& given) {
    if ((given.mask & LVIF_TEXT) != 0) {
        const auto column = static_cast<std::size_t>(given.iSubItem);
        if (item.texts.size() <= column) item.texts.resize(column + 1);
        item.texts[column] = given.pszText != nullptr ? given.pszText : u"";
    }
    if ((given.mask & LVIF_IMAGE) != 0) item.image = given.iImage;
    if ((given.mask & LVIF_PARAM) != 0) item.data = given.lParam;
}

LRESULT insert_item(HWND window, ListViewState& state, const LVITEMW& given) {
    if (given.iItem < 0 || given.iSubItem != 0 || state.count() >= kMostItems ||
        (style_of(window) & LVS_OWNERDATA) != 0) {
        return -1;
    }
    const auto index = std::min(given.iItem, state.count());
    ListViewItem item;
    take_over(item, given);
    state.items.insert(state.items.begin() + index, std::move(item));
    state.selected.insert(state.selected.begin() + index, false);
    if (state.focused >= index) ++state.focused;
    if (state.anchor >= index) ++state.anchor;
    ListViewView(window, state).arrange();
    if ((given.mask & LVIF_STATE) != 0) {
        change_list_item(window, state, index, given.state, given.stateMask);
    }
    return index;
}

void forget_item(ListViewState& state, int index) {
    if (state.selected[static_cast<std::size_t>(index)]) --state.selected_count;
    state.selected.erase(state.selected.begin() + index);
    if (!state.items.empty()) state.items.erase(state.items.begin() + index);
    for (auto* const each : {&state.focused, &state.anchor, &state.hot}) {
        if (*each == index) *each = -1;
        if (*each > index) --*each;
    }
}

void set_count(HWND window, ListViewState& state, int count) {
    end_list_label(window, state, true);
    if (!IsWindow(window)) return;
    state.selected.resize(static_cast<std::size_t>(std::clamp(count, 0, kMostItems)), false);
    if ((style_of(window) & LVS_OWNERDATA) == 0) state.items.resize(state.selected.size());
    state.selected_count =
        static_cast<int>(std::count(state.selected.begin(), state.selected.end(), true));
    for (auto* const each : {&state.focused, &state.anchor, &state.hot}) {
        if (!state.has(*each)) *each = -1;
    }
    ListViewView(window, state).arrange();
}

LRESULT get_item(HWND window, ListViewState& state, LVITEMW& asked) {
    if (!state.has(asked.iItem)) return FALSE;
    const ListViewView view(window, state);
    if ((asked.mask & LVIF_TEXT) != 0 && asked.pszText != nullptr && asked.cchTextMax > 0) {
        const auto text = view.text_of_item(asked.iItem, std::max(asked.iSubItem, 0));
        const auto size = text.copy(asked.pszText, static_cast<std::size_t>(asked.cchTextMax) - 1);
        asked.pszText[size] = 0;
    }
    if ((asked.mask & LVIF_IMAGE) != 0) asked.iImage = view.image_of(asked.iItem);
    if ((asked.mask & LVIF_PARAM) != 0 && !state.items.empty()) {
        asked.lParam = state.items[static_cast<std::size_t>(asked.iItem)].data;
    }
    if ((asked.mask & LVIF_STATE) != 0) {
        asked.state = list_item_state(state, asked.iItem) & asked.stateMask;
    }
    return TRUE;
}

LRESULT set_item(HWND window, ListViewState& state, const LVITEMW& given) {
    if (!state.has(given.iItem) || given.iSubItem < 0 || given.iSubItem > kMostColumns) {
        return FALSE;
    }
    if (!state.items.empty()) {
        take_over(state.items[static_cast<std::size_t>(given.iItem)], given);
    }
    if ((given.mask & LVIF_STATE) != 0) {
        change_list_item(window, state, given.iItem, given.state, given.stateMask);
    }
    if (IsWindow(window)) ListViewView(window, state).repaint_item(given.iItem);
    return TRUE;
}

LRESULT next_item(const ListViewState& state, int from, WPARAM flags) {
    for (int i = from + 1; i < state.count(); ++i) {
        const bool is_focused = (flags & LVNI_FOCUSED) == 0 || state.focused == i;
        const bool is_selected =
            (flags & LVNI_SELECTED) == 0 || state.selected[static_cast<std::size_t>(i)];
        if (is_focused && is_selected) return i;
    }
    return -1;
}

LRESULT set_item_state(HWND window, ListViewState& state, int index, const LVITEMW& given) {
    if (index == -1) {
        for (int i = 0; i < state.count(); ++i) {
            change_list_item(window, state, i, given.state, given.stateMask);
        }
    } else {
        change_list_item(window, state, index, given.state, given.stateMask);
        // What Shift goes on from is where the program has put the person.
        const bool is_focused = (given.state & given.stateMask & LVIS_FOCUSED) != 0;
        if (is_focused && state.has(index)) state.anchor = index;
    }
    return TRUE;
}

}  // namespace

bool handle_list_view_items(HWND window, ListViewState& state, UINT message, WPARAM wparam,
                            LPARAM lparam, LRESULT& result) {
    const auto index = static_cast<int>(wparam);
    switch (message) {
        case LVM_GETITEMCOUNT:
            result = state.count();
            return true;
        case LVM_SETITEMCOUNT:
            set_count(window, state, index);
            result = TRUE;
            return true;
        case LVM_INSERTITEMW:
            result = insert_item(window, state, *reinterpret_cast<const LVITEMW*>(lparam));
            return true;
        case LVM_DELETEITEM:
            result = state.has(index) ? TRUE : FALSE;
            if (result != 0) forget_item(state, index);
            ListViewView(window, state).arrange();
            return true;
        case LVM_DELETEALLITEMS:
            set_count(window, state, 0);
            result = TRUE;
            return true;
        case LVM_GETITEMW:
            result = get_item(window, state, *reinterpret_cast<LVITEMW*>(lparam));
            return true;
        case LVM_SETITEMW:
            result = set_item(window, state, *reinterpret_cast<const LVITEMW*>(lparam));
            return true;
        case LVM_GETITEMTEXTW: {
            auto asked = *reinterpret_cast<LVITEMW*>(lparam);
            asked.iItem = index;
            asked.mask = LVIF_TEXT;
            result = get_item(window, state, asked) != 0 && asked.pszText != nullptr
                         ? static_cast<LRESULT>(std::u16string_view(asked.pszText).size())
                         : 0;
            return true;
        }
        case LVM_SETITEMTEXTW: {
            auto given = *reinterpret_cast<const LVITEMW*>(lparam);
            given.iItem = index;
            given.mask = LVIF_TEXT;
            result = set_item(window, state, given);
            return true;
        }
        case LVM_SETITEMSTATE:
            result =
                set_item_state(window, state, index, *reinterpret_cast<const LVITEMW*>(lparam));
            return true;
        case LVM_GETITEMSTATE:
            result =
                state.has(index) ? list_item_state(state, index) & static_cast<UINT>(lparam) : 0;
            return true;
        case LVM_GETNEXTITEM:
            result = next_item(state, index, static_cast<WPARAM>(lparam));
            return true;
        case LVM_GETSELECTEDCOUNT:
            result = state.selected_count;
            return true;
        default:
            return false;
    }
}

}  // namespace tvutil2
