#include "tvutil2/platform/window/accessible_items.h"

#include "tvutil2/platform/window/class_table.h"
#include "tvutil2/platform/window/controls/combo_box.h"
#include "tvutil2/platform/window/controls/list_box.h"
#include "tvutil2/platform/window/controls/list_view.h"
#include "tvutil2/platform/window/controls/tree_view.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/parameters.h"
#include "tvutil2/platform/window/window.h"

#include <algorithm>
#include <cstring>
#include <functional>

namespace tvutil2 {
namespace {

constexpr int kMostText = 1024;  // of an item, that is read out
constexpr int kMostColumns = 32;
constexpr int kMostChoices = 100;  // of a combo box, around the one chosen

// What kinds of lists have in common. Rectangles are in the window's client area.
struct Items {
    int count = 0;
    std::function<RECT(int)> place;
    std::function<std::u16string(int)> text;
    std::function<bool(int)> is_selected;
    int focused = -1;
};

std::u16string list_box_text(HWND window, int index) {
    const auto row = static_cast<WPARAM>(index);
    const auto length = SendMessageW(window, LB_GETTEXTLEN, row, 0);
    if (length <= 0) return {};
    std::u16string text(static_cast<std::size_t>(length) + 1, u'\0');
    SendMessageW(window, LB_GETTEXT, row, as_lparam(text.data()));
    text.pop_back();
    return text;
}

Items of_list_box(HWND window) {
    Items items;
    items.count = static_cast<int>(SendMessageW(window, LB_GETCOUNT, 0, 0));
    items.focused = static_cast<int>(SendMessageW(window, LB_GETCURSEL, 0, 0));
    items.place = [window](int i) {
        RECT place{};
        SendMessageW(window, LB_GETITEMRECT, static_cast<WPARAM>(i), as_lparam(&place));
        return place;
    };
    items.text = [window](int i) { return list_box_text(window, i); };
    items.is_selected = [window](int i) {
        return SendMessageW(window, LB_GETSEL, static_cast<WPARAM>(i), 0) > 0;
    };
    return items;
}

// All columns of a row, as they are read from left to right.
std::u16string list_view_text(HWND window, int row) {
    std::u16string all;
    for (int column = 0; column < kMostColumns; ++column) {
        if (column > 0 &&
            SendMessageW(window, LVM_GETCOLUMNWIDTH, static_cast<WPARAM>(column), 0) <= 0) {
            break;
        }
        char16_t text[kMostText] = {};
        LVITEMW item = {};
        item.iSubItem = column;
        item.pszText = text;
        item.cchTextMax = kMostText;
        SendMessageW(window, LVM_GETITEMTEXTW, static_cast<WPARAM>(row), as_lparam(&item));
        if (text[0] == 0) continue;
        if (!all.empty()) all += u", ";
        all += text;
    }
    return all;
}

Items of_list_view(HWND window) {
    Items items;
    items.count = static_cast<int>(SendMessageW(window, LVM_GETITEMCOUNT, 0, 0));
    items.focused = static_cast<int>(
        SendMessageW(window, LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_FOCUSED));
    items.place = [window](int i) {
        RECT place{};
        SendMessageW(window, LVM_GETITEMRECT, static_cast<WPARAM>(i), as_lparam(&place));
        return place;
    };
    items.text = [window](int i) { return list_view_text(window, i); };
    items.is_selected = [window](int i) {
        return SendMessageW(window, LVM_GETITEMSTATE, static_cast<WPARAM>(i), LVIS_SELECTED) != 0;
    };
    return items;
}

// Items stand in rows from above: the first that ends below the upper edge.
int first_in_view(const Items& items) {
    int low = 0;
    int high = items.count;
    while (low < high) {
        const int middle = low + (high - low) / 2;
        if (items.place(middle).bottom > 0) {
            high = middle;
        } else {
            low = middle + 1;
        }
    }
    return low;
}

Accessible item_of(const Accessible& list, AccessibleRole role, std::intptr_t number, RECT place) {
    Accessible item;
    item.window = list.window;
    item.item = number;
    item.role = role;
    item.state.is_visible = list.state.is_visible;
    item.state.is_enabled = list.state.is_enabled;
    MapWindowPoints(list.window, nullptr, reinterpret_cast<POINT*>(&place), 2);
    item.place = place;
    return item;
}

void describe_rows(Accessible& list, const Items& items) {
    RECT area{};
    GetClientRect(list.window, &area);
    if (items.focused >= 0 && items.focused < items.count) list.value = items.text(items.focused);
    for (int i = first_in_view(items); i < items.count; ++i) {
        const auto place = items.place(i);
        if (place.top >= area.bottom) break;
        auto item = item_of(list, AccessibleRole::list_item, i, place);
        item.name = items.text(i);
        item.state.is_selected = items.is_selected(i);
        item.state.has_focus = list.state.has_focus && i == items.focused;
        list.children.push_back(std::move(item));
    }
}

// The items of a combo box, whether its list is open or not.
void describe_choices(Accessible& box) {
    auto* const window = box.window;
    const auto count = static_cast<int>(SendMessageW(window, CB_GETCOUNT, 0, 0));
    const auto chosen = static_cast<int>(SendMessageW(window, CB_GETCURSEL, 0, 0));
    const int first = std::clamp(chosen - kMostChoices / 2, 0, std::max(count - kMostChoices, 0));
    for (int i = first; i < std::min(count, first + kMostChoices); ++i) {
        Accessible item;
        item.window = window;
        item.item = i;
        item.role = AccessibleRole::list_item;
        const auto length = SendMessageW(window, CB_GETLBTEXTLEN, static_cast<WPARAM>(i), 0);
        item.name.resize(static_cast<std::size_t>(std::max<LRESULT>(length, 0)) + 1);
        SendMessageW(window, CB_GETLBTEXT, static_cast<WPARAM>(i), as_lparam(item.name.data()));
        item.name.pop_back();
        item.state.is_enabled = box.state.is_enabled;
        item.state.is_selected = i == chosen;
        item.place = box.place;
        box.children.push_back(std::move(item));
    }
}

// ---- trees

HTREEITEM step(HWND tree, WPARAM way, HTREEITEM from) {
    return reinterpret_cast<HTREEITEM>(SendMessageW(tree, TVM_GETNEXTITEM, way, as_lparam(from)));
}

int level_of(HWND tree, HTREEITEM item) {
    int level = 0;
    for (; item != nullptr; item = step(tree, TVGN_PARENT, item)) ++level;
    return level;
}

// The one that is shown below it.
HTREEITEM below(HWND tree, HTREEITEM item, bool is_expanded) {
    auto* next = is_expanded ? step(tree, TVGN_CHILD, item) : nullptr;
    for (; next == nullptr && item != nullptr; item = step(tree, TVGN_PARENT, item)) {
        next = step(tree, TVGN_NEXT, item);
    }
    return next;
}

void read_tree_item(Accessible& item, HTREEITEM handle) {
    char16_t text[kMostText] = {};
    TVITEMW asked = {};
    asked.mask = TVIF_HANDLE | TVIF_TEXT | TVIF_STATE | TVIF_CHILDREN;
    asked.hItem = handle;
    asked.stateMask = TVIS_SELECTED | TVIS_EXPANDED;
    asked.pszText = text;
    asked.cchTextMax = kMostText;
    SendMessageW(item.window, TVM_GETITEMW, 0, as_lparam(&asked));
    item.name = text;
    item.state.is_selected = (asked.state & TVIS_SELECTED) != 0;
    item.state.is_expanded = (asked.state & TVIS_EXPANDED) != 0;
    item.state.is_expandable = asked.cChildren != 0;
    item.level = level_of(item.window, handle);
}

void describe_tree(Accessible& tree) {
    auto* const window = tree.window;
    RECT area{};
    GetClientRect(window, &area);
    TVHITTESTINFO corner = {{1, 1}, 0, nullptr};
    auto* item =
        reinterpret_cast<HTREEITEM>(SendMessageW(window, TVM_HITTEST, 0, as_lparam(&corner)));
    if (item == nullptr) item = step(window, TVGN_ROOT, nullptr);
    auto* const chosen = step(window, TVGN_CARET, nullptr);
    while (item != nullptr) {
        RECT place{};
        const auto asked = reinterpret_cast<std::uintptr_t>(item);
        std::memcpy(&place, &asked, sizeof asked);
        if (SendMessageW(window, TVM_GETITEMRECT, FALSE, as_lparam(&place)) == 0) break;
        if (place.top >= area.bottom) break;
        auto told =
            item_of(tree, AccessibleRole::tree_item, reinterpret_cast<std::intptr_t>(item), place);
        read_tree_item(told, item);
        told.state.has_focus = tree.state.has_focus && item == chosen;
        if (item == chosen) tree.value = told.name;
        item = below(window, item, told.state.is_expanded);
        tree.children.push_back(std::move(told));
    }
}

}  // namespace

void describe_items(Accessible& list) {
    if (list.role == AccessibleRole::combo_box) return describe_choices(list);
    if (list.role == AccessibleRole::tree) return describe_tree(list);
    char16_t name[64] = {};
    GetClassNameW(list.window, name, 64);
    const bool is_view = folded_name(name) == u"syslistview32";
    describe_rows(list, is_view ? of_list_view(list.window) : of_list_box(list.window));
}

}  // namespace tvutil2
