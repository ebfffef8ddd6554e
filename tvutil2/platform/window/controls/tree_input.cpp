// What a person does in a tree view, and what its parent hears of it.
#include "tvutil2/platform/draw/rect.h"
#include "tvutil2/platform/window/controls/notify.h"
#include "tvutil2/platform/window/controls/tree_state.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/window.h"

#include <utility>

namespace tvutil2 {
namespace {

LRESULT tell_tree_parent(HWND window, TreeState& state, UINT code, UINT action, HTREEITEM old_item,
                         HTREEITEM new_item) {
    NMTREEVIEWW told{};
    told.action = action;
    const auto describe = [&state](HTREEITEM handle, TVITEMW& to) {
        to.hItem = handle;
        if (const auto* const item = state.items.find(handle)) {
            to.lParam = item->data;
            to.state = item->is_open ? TVIS_EXPANDED : 0;
        }
    };
    describe(old_item, told.itemOld);
    describe(new_item, told.itemNew);
    return notify_parent_of(window, told.hdr, code);
}

}  // namespace

void show_tree_item(HWND window, TreeState& state, HTREEITEM item) {
    // What it is in opens.
    bool opens = false;
    const auto* const found = state.items.find(item);
    if (found == nullptr) return;
    for (auto* each = state.items.find(found->parent); each != nullptr;
         each = state.items.find(each->parent)) {
        opens = !std::exchange(each->is_open, true) || opens;
    }
    if (opens) {
        state.items.changed();
        arrange_tree(window, state);
    }
    show_rows_from(window, state.rows, state.count(),
                   state.rows.top_for(client_of(window), state.row_of(item)));
}

void select_tree_item(HWND window, TreeState& state, HTREEITEM item, UINT how) {
    state.typed.text.clear();
    if (state.selected == item) return;
    auto* const before = std::exchange(state.selected, item);
    repaint_tree_item(window, state, before);
    if (item != nullptr) show_tree_item(window, state, item);
    repaint_tree_item(window, state, item);
    tell_tree_parent(window, state, TVN_SELCHANGEDW, how, before, item);
}

bool expand_tree_item(HWND window, TreeState& state, HTREEITEM item, WPARAM how) {
    const auto* found = state.items.find(item);
    if (found == nullptr) return false;
    const bool opens = how == TVE_TOGGLE ? !found->is_open : how == TVE_EXPAND;
    const bool can_open = !found->children.empty() || found->may_have_children;
    if (opens == found->is_open || (opens && !can_open)) return false;
    const auto action = static_cast<UINT>(opens ? TVE_EXPAND : TVE_COLLAPSE);
    if (tell_tree_parent(window, state, TVN_ITEMEXPANDINGW, action, nullptr, item) != 0)
        return false;
    auto* const again = state.items.find(item);
    if (again == nullptr || !IsWindow(window)) return false;
    again->is_open = opens && !again->children.empty();
    if (opens && again->children.empty()) again->may_have_children = false;
    state.items.changed();
    arrange_tree(window, state);
    // What can't be seen any more isn't selected.
    if (!opens && state.items.is_below(state.selected, item)) {
        select_tree_item(window, state, item, TVC_UNKNOWN);
    }
    if (IsWindow(window)) tell_tree_parent(window, state, TVN_ITEMEXPANDEDW, action, nullptr, item);
    return true;
}

void press_tree(HWND window, TreeState& state, POINT point, bool is_double) {
    if (GetFocus() != window) SetFocus(window);
    auto* const item = IsWindow(window) ? tree_item_at(window, state, point) : nullptr;
    const auto* const found = state.items.find(item);
    if (found != nullptr) {
        const auto row = state.rows.place(client_of(window), state.row_of(item));
        const auto arrow = tree_arrow(*found, row, GetDpiForWindow(window));
        if (point.x >= arrow.left && point.x < arrow.right) {
            expand_tree_item(window, state, item, TVE_TOGGLE);
            return;
        }
        select_tree_item(window, state, item, TVC_BYMOUSE);
        if (is_double && IsWindow(window)) expand_tree_item(window, state, item, TVE_TOGGLE);
    }
    if (!IsWindow(window)) return;
    NMHDR header{};
    notify_parent_of(window, header, is_double ? NM_DBLCLK : NM_CLICK);
}

void press_tree_key(HWND window, TreeState& state, WPARAM key) {
    auto* const item = state.selected;
    const auto* const found = state.items.find(item);
    switch (key) {
        case VK_LEFT:
            if (found != nullptr && found->is_open) {
                expand_tree_item(window, state, item, TVE_COLLAPSE);
            } else if (found != nullptr && found->parent != nullptr) {
                select_tree_item(window, state, found->parent, TVC_BYKEYBOARD);
            }
            return;
        case VK_RIGHT:
            if (found != nullptr && found->is_open) {
                select_tree_item(window, state, found->children.front(), TVC_BYKEYBOARD);
            } else {
                expand_tree_item(window, state, item, TVE_EXPAND);
            }
            return;
        case VK_ADD:
        case VK_SUBTRACT:
            expand_tree_item(window, state, item, key == VK_ADD ? TVE_EXPAND : TVE_COLLAPSE);
            return;
        case VK_RETURN: {
            NMHDR header{};
            notify_parent_of(window, header, NM_RETURN);
            return;
        }
        default: {
            const auto to = row_after_key(state.rows, client_of(window), state.count(),
                                          state.row_of(item), key);
            if (auto* const next = state.at(to))
                select_tree_item(window, state, next, TVC_BYKEYBOARD);
            return;
        }
    }
}

// The next item that begins with what was typed just now; one character again and again goes on.
void type_in_tree(HWND window, TreeState& state, char16_t character) {
    if (is_space(character) && state.typed.text.empty()) return;
    state.typed.add(character, static_cast<DWORD>(GetMessageTime()));
    const auto from = state.row_of(state.selected);
    const auto count = state.count();
    const int first = state.typed.text.size() > 1 ? 0 : 1;
    for (int i = first; i < count + first; ++i) {
        auto* const item = state.at((from + i + count) % count);
        if (!state.typed.begins(state.items.find(item)->text)) continue;
        const auto typed = state.typed;
        select_tree_item(window, state, item, TVC_BYKEYBOARD);
        state.typed = typed;
        return;
    }
}

void heat_tree(HWND window, TreeState& state, HTREEITEM item) {
    auto* const before = std::exchange(state.hot, item);
    if (before == item) return;
    repaint_tree_item(window, state, before);
    repaint_tree_item(window, state, item);
}

}  // namespace tvutil2
