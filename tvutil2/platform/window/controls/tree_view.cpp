#include "tvutil2/platform/window/controls/tree_view.h"

#include "tvutil2/platform/window/controls/label_edit.h"
#include "tvutil2/platform/window/controls/tree_state.h"
#include "tvutil2/platform/window/dialogs/dialogs.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/mouse.h"
#include "tvutil2/platform/window/window.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace tvutil2 {
namespace {

void take_over(TreeItem& item, const TVITEMW& given) {
    if ((given.mask & TVIF_TEXT) != 0) item.text = given.pszText != nullptr ? given.pszText : u"";
    if ((given.mask & TVIF_PARAM) != 0) item.data = given.lParam;
    if ((given.mask & TVIF_IMAGE) != 0) {
        item.image = given.iImage;
        item.selected_image = given.iSelectedImage;
    }
    if ((given.mask & TVIF_CHILDREN) != 0) item.may_have_children = given.cChildren != 0;
}

LRESULT insert(HWND window, TreeState& state, const TVINSERTSTRUCTW& given) {
    TreeItem item;
    take_over(item, given.item);
    auto* const made = state.items.insert(given.hParent, given.hInsertAfter, std::move(item));
    if (made != nullptr) arrange_tree(window, state);
    return reinterpret_cast<LRESULT>(made);
}

LRESULT remove(HWND window, TreeState& state, HTREEITEM item) {
    std::vector<std::pair<HTREEITEM, LPARAM>> gone;
    if (item == TVI_ROOT || item == nullptr) {
        while (auto* const root = state.items.relative(nullptr, TVGN_ROOT)) {
            const auto part = state.items.remove(root);
            gone.insert(gone.end(), part.begin(), part.end());
        }
    } else {
        gone = state.items.remove(item);
        if (gone.empty()) return FALSE;
    }
    if (state.items.find(state.selected) == nullptr) state.selected = nullptr;
    state.hot = nullptr;
    arrange_tree(window, state);
    for (const auto& [handle, data] : gone) {
        NMTREEVIEWW told{};
        told.itemOld.hItem = handle;
        told.itemOld.lParam = data;
        if (IsWindow(window)) notify_parent_of(window, told.hdr, TVN_DELETEITEMW);
    }
    return TRUE;
}

// Ends the change of a name: FALSE when there was none.
LRESULT end_label(HWND window, TreeState& state, bool gives_up) {
    auto* const edit = std::exchange(state.label, nullptr);
    auto* const item = std::exchange(state.label_item, nullptr);
    if (edit == nullptr) return FALSE;
    auto text = close_label_edit(edit);
    NMTVDISPINFOW told{};
    told.item.mask = TVIF_TEXT | TVIF_HANDLE;
    told.item.hItem = item;
    told.item.pszText = gives_up || state.items.find(item) == nullptr ? nullptr : text.data();
    const bool is_taken = notify_parent_of(window, told.hdr, TVN_ENDLABELEDITW) != 0;
    auto* const found = state.items.find(item);
    if (is_taken && found != nullptr && told.item.pszText != nullptr) found->text = text;
    if (IsWindow(window)) repaint(window);
    return TRUE;
}

LRESULT edit_label(HWND window, TreeState& state, HTREEITEM item) {
    end_label(window, state, false);
    if (state.items.find(item) == nullptr || (style_of(window) & TVS_EDITLABELS) == 0) return 0;
    NMTVDISPINFOW told{};
    told.item.hItem = item;
    if (notify_parent_of(window, told.hdr, TVN_BEGINLABELEDITW) != 0) return 0;
    select_tree_item(window, state, item, TVC_UNKNOWN);
    show_tree_item(window, state, item);
    const auto* const found = state.items.find(item);
    if (found == nullptr) return 0;
    const auto name =
        tree_name(window, state, *found, state.rows.place(client_of(window), state.row_of(item)));
    state.label_item = item;
    state.label = open_label_edit(window, TVM_ENDEDITLABELNOW, label_edit_place(window, name),
                                  found->text, state.font);
    return reinterpret_cast<LRESULT>(state.label);
}

LRESULT get_item(TreeState& state, TVITEMW& asked) {
    const auto* const item = state.items.find(asked.hItem);
    if (item == nullptr) return FALSE;
    if ((asked.mask & TVIF_TEXT) != 0 && asked.pszText != nullptr && asked.cchTextMax > 0) {
        const auto size =
            item->text.copy(asked.pszText, static_cast<std::size_t>(asked.cchTextMax) - 1);
        asked.pszText[size] = 0;
    }
    asked.lParam = item->data;
    asked.iImage = item->image;
    asked.iSelectedImage = item->selected_image;
    asked.cChildren = !item->children.empty() || item->may_have_children ? 1 : 0;
    asked.state =
        (item->is_open ? TVIS_EXPANDED : 0) | (state.selected == asked.hItem ? TVIS_SELECTED : 0);
    return TRUE;
}

// False for any other message.
bool handle_items(HWND window, TreeState& state, UINT message, WPARAM wparam, LPARAM lparam,
                  LRESULT& result) {
    auto* const item = reinterpret_cast<HTREEITEM>(lparam);
    switch (message) {
        case TVM_INSERTITEMW:
            result = insert(window, state, *reinterpret_cast<const TVINSERTSTRUCTW*>(lparam));
            return true;
        case TVM_DELETEITEM:
            result = remove(window, state, item);
            return true;
        case TVM_EXPAND:
            result = expand_tree_item(window, state, item, wparam & TVE_TOGGLE) ? TRUE : FALSE;
            return true;
        case TVM_GETCOUNT:
            result = static_cast<LRESULT>(state.items.count());
            return true;
        case TVM_GETNEXTITEM:
            result = reinterpret_cast<LRESULT>(
                wparam == TVGN_CARET ? state.selected : state.items.relative(item, wparam));
            return true;
        case TVM_SELECTITEM:
            result = item == nullptr || state.items.find(item) != nullptr ? TRUE : FALSE;
            if (result != 0) select_tree_item(window, state, item, TVC_UNKNOWN);
            return true;
        case TVM_GETITEMW:
            result = get_item(state, *reinterpret_cast<TVITEMW*>(lparam));
            return true;
        case TVM_SETITEMW: {
            const auto& given = *reinterpret_cast<const TVITEMW*>(lparam);
            auto* const found = state.items.find(given.hItem);
            result = found != nullptr ? TRUE : FALSE;
            if (found != nullptr) take_over(*found, given);
            repaint(window);
            return true;
        }
        case TVM_ENSUREVISIBLE:
            show_tree_item(window, state, item);
            result = TRUE;
            return true;
        case TVM_GETITEMRECT: {
            auto& place = *reinterpret_cast<RECT*>(lparam);
            std::uintptr_t asked = 0;
            // The handle stands where the rectangle goes.
            std::copy_n(reinterpret_cast<const std::byte*>(&place), sizeof asked,
                        reinterpret_cast<std::byte*>(&asked));
            const auto row = state.row_of(reinterpret_cast<HTREEITEM>(asked));
            result = row >= 0 ? TRUE : FALSE;
            if (row >= 0) place = state.rows.place(client_of(window), row);
            return true;
        }
        case TVM_HITTEST: {
            auto& asked = *reinterpret_cast<TVHITTESTINFO*>(lparam);
            asked.hItem = tree_item_at(window, state, asked.pt);
            result = reinterpret_cast<LRESULT>(asked.hItem);
            return true;
        }
        case TVM_EDITLABELW:
            result = edit_label(window, state, item);
            return true;
        case TVM_ENDEDITLABELNOW:
            result = end_label(window, state, wparam != 0);
            return true;
        case TVM_GETEDITCONTROL:
            result = reinterpret_cast<LRESULT>(state.label);
            return true;
        case TVM_SETIMAGELIST:
            result = reinterpret_cast<LRESULT>(
                std::exchange(state.images, reinterpret_cast<HIMAGELIST>(lparam)));
            arrange_tree(window, state);
            return true;
        default:
            return false;
    }
}

// The person's doings and the window's. False for any other message.
bool handle_window(HWND window, TreeState& state, UINT message, WPARAM wparam, LPARAM lparam,
                   LRESULT& result) {
    const POINT point{GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam)};
    switch (message) {
        case WM_CREATE:
            state.field.color_message = WM_CTLCOLORLISTBOX;
            arrange_tree(window, state);
            return true;
        case WM_SIZE:
            arrange_tree(window, state);
            return true;
        case WM_SETREDRAW:
            state.is_frozen = wparam == 0;
            result = DefWindowProcW(window, message, wparam, lparam);
            arrange_tree(window, state);
            return true;
        case WM_PAINT:
            paint_tree(window, state);
            return true;
        case WM_ERASEBKGND:
            result = TRUE;
            return true;
        case WM_GETDLGCODE:
            result = DLGC_WANTARROWS | DLGC_WANTCHARS;
            return true;
        case WM_SETFOCUS:
        case WM_KILLFOCUS: {
            // Somebody who comes by keyboard has to see where he is.
            auto* const first = state.items.relative(nullptr, TVGN_ROOT);
            if (message == WM_SETFOCUS && state.selected == nullptr && first != nullptr) {
                select_tree_item(window, state, first, TVC_UNKNOWN);
            }
            repaint(window);
            NMHDR header{};
            notify_parent_of(window, header, message == WM_SETFOCUS ? NM_SETFOCUS : NM_KILLFOCUS);
            return true;
        }
        case WM_KEYDOWN:
            press_tree_key(window, state, wparam);
            return true;
        case WM_CHAR:
            type_in_tree(window, state, static_cast<char16_t>(wparam));
            return true;
        case WM_LBUTTONDOWN:
        case WM_LBUTTONDBLCLK:
            press_tree(window, state, point, message == WM_LBUTTONDBLCLK);
            return true;
        case WM_MOUSEMOVE:
            heat_tree(window, state, tree_item_at(window, state, point));
            return true;
        case WM_MOUSEWHEEL:
        case WM_VSCROLL:
            scroll_rows(window, state.rows, state.count(), message, wparam);
            place_tree_label(window, state);
            return true;
        default:
            return false;
    }
}

}  // namespace

LRESULT tree_view_procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    const auto state = state_of<TreeState>(window);
    if (!state || message == WM_NCCREATE) return DefWindowProcW(window, message, wparam, lparam);
    LRESULT result = 0;
    if (handle_field_message(window, state->field, message, wparam, lparam, result)) {
        if (message == WM_MOUSELEAVE) heat_tree(window, *state, nullptr);
        return result;
    }
    if (handle_items(window, *state, message, wparam, lparam, result) ||
        handle_window(window, *state, message, wparam, lparam, result)) {
        return result;
    }
    if (handle_control_message(window, *state, message, wparam, lparam, result)) {
        if (message == WM_SETFONT) arrange_tree(window, *state);
        return result;
    }
    return DefWindowProcW(window, message, wparam, lparam);
}

}  // namespace tvutil2
