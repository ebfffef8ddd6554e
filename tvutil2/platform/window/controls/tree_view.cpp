#include "tvutil2/platform/window/controls/tree_view.h"

#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/draw/device_context.h"
#include "tvutil2/platform/draw/look.h"
#include "tvutil2/platform/draw/objects.h"
#include "tvutil2/platform/draw/rect.h"
#include "tvutil2/platform/draw/shapes.h"
#include "tvutil2/platform/draw/text.h"
#include "tvutil2/platform/picture/image_list.h"
#include "tvutil2/platform/window/controls/control.h"
#include "tvutil2/platform/window/controls/field.h"
#include "tvutil2/platform/window/controls/list_rows.h"
#include "tvutil2/platform/window/controls/tree_items.h"
#include "tvutil2/platform/window/controls/tree_label.h"
#include "tvutil2/platform/window/dialogs/dialogs.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/mouse.h"
#include "tvutil2/platform/window/paint.h"
#include "tvutil2/platform/window/window.h"

#include <algorithm>
#include <utility>

namespace tvutil2 {
namespace {

// In pixels at 96 dots an inch.
constexpr int kRowMargin = 4;
constexpr int kIndent = 19;
constexpr int kSide = 4;
constexpr int kWheelRows = 3;

// What is typed in one go.
struct TypedName {
    static constexpr DWORD kPause = 1000;
    std::u16string text;
    DWORD last = 0;

    void add(char16_t character, DWORD time) {
        const bool goes_on = time - last < kPause && text != std::u16string(1, to_lower(character));
        last = time;
        if (!goes_on) text.clear();
        text += to_lower(character);
    }
    [[nodiscard]] bool begins(const std::u16string& name) const {
        return name.size() >= text.size() &&
               std::equal(text.begin(), text.end(), name.begin(),
                          [](char16_t a, char16_t b) { return a == to_lower(b); });
    }
};

struct TreeState : ControlState {
    TreeItems items;
    HTREEITEM selected = nullptr;
    HTREEITEM hot = nullptr;
    ListRows rows;
    FieldLook field;
    HIMAGELIST images = nullptr;  ///< the owner's
    bool is_frozen = false;       ///< WM_SETREDRAW: many items are on their way
    TypedName typed;
    HTREEITEM label_item = nullptr;  ///< whose name the person changes
    HWND label = nullptr;

    [[nodiscard]] int count() { return static_cast<int>(items.shown().size()); }
    /// -1 for an item that doesn't show.
    [[nodiscard]] int row_of(HTREEITEM item) {
        const auto& shown = items.shown();
        const auto found = std::ranges::find(shown, item);
        return found != shown.end() ? static_cast<int>(found - shown.begin()) : -1;
    }
    [[nodiscard]] HTREEITEM at(int row) {
        return row >= 0 && row < count() ? items.shown()[static_cast<std::size_t>(row)] : nullptr;
    }
};

RECT client_of(HWND window) {
    RECT client{};
    GetClientRect(window, &client);
    return client;
}

// Where the arrow of an item is, and where its text begins.
RECT arrow_of(const TreeItem& item, RECT row, UINT dpi) {
    row.left += scaled(kSide, dpi) + item.depth * scaled(kIndent, dpi);
    row.right = row.left + scaled(kIndent, dpi);
    return row;
}

// Where the text of an item is.
RECT name_of(HWND window, TreeState& state, const TreeItem& item, RECT row) {
    const auto dpi = GetDpiForWindow(window);
    row.left = arrow_of(item, row, dpi).right;
    if (state.images != nullptr) {
        int width = 0;
        int height = 0;
        ImageList_GetIconSize(state.images, &width, &height);
        row.left += width + scaled(kSide, dpi);
    }
    row.right -= scaled(kSide, dpi);
    return row;
}

// The edit control stays over its item.
void place_label(HWND window, TreeState& state) {
    const auto* const item = state.items.find(state.label_item);
    const auto row = state.row_of(state.label_item);
    if (state.label == nullptr || item == nullptr || row < 0) return;
    const auto place = label_edit_place(
        window, name_of(window, state, *item, state.rows.place(client_of(window), row)));
    SetWindowPos(state.label, nullptr, place.left, place.top, place.right - place.left,
                 place.bottom - place.top, SWP_NOZORDER | SWP_NOACTIVATE);
}

void arrange(HWND window, TreeState& state) {
    if (state.is_frozen) return;
    state.rows.has_bar = true;
    state.rows.height =
        line_height(window, state) + 2 * scaled(kRowMargin, GetDpiForWindow(window));
    show_rows_from(window, state.rows, state.count(), state.rows.top);
    place_label(window, state);
    repaint(window);
}

void repaint_item(HWND window, TreeState& state, HTREEITEM item) {
    const auto row = state.row_of(item);
    if (row < 0) return;
    const auto place = state.rows.place(client_of(window), row);
    InvalidateRect(window, &place, TRUE);
}

LRESULT tell(HWND window, TreeState& state, UINT code, UINT action, HTREEITEM old_item,
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

void show(HWND window, TreeState& state, HTREEITEM item) {
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
        arrange(window, state);
    }
    show_rows_from(window, state.rows, state.count(),
                   state.rows.top_for(client_of(window), state.row_of(item)));
}

void select(HWND window, TreeState& state, HTREEITEM item, UINT how) {
    state.typed.text.clear();
    if (state.selected == item) return;
    auto* const before = std::exchange(state.selected, item);
    repaint_item(window, state, before);
    if (item != nullptr) show(window, state, item);
    repaint_item(window, state, item);
    tell(window, state, TVN_SELCHANGEDW, how, before, item);
}

// False when nothing changes: the parent may forbid it.
bool expand(HWND window, TreeState& state, HTREEITEM item, WPARAM how) {
    const auto* found = state.items.find(item);
    if (found == nullptr) return false;
    const bool opens = how == TVE_TOGGLE ? !found->is_open : how == TVE_EXPAND;
    const bool can_open = !found->children.empty() || found->may_have_children;
    if (opens == found->is_open || (opens && !can_open)) return false;
    const auto action = static_cast<UINT>(opens ? TVE_EXPAND : TVE_COLLAPSE);
    if (tell(window, state, TVN_ITEMEXPANDINGW, action, nullptr, item) != 0) return false;
    auto* const again = state.items.find(item);
    if (again == nullptr || !IsWindow(window)) return false;
    again->is_open = opens && !again->children.empty();
    if (opens && again->children.empty()) again->may_have_children = false;
    state.items.changed();
    arrange(window, state);
    // What can't be seen any more isn't selected.
    if (!opens && state.items.is_below(state.selected, item)) {
        select(window, state, item, TVC_UNKNOWN);
    }
    if (IsWindow(window)) tell(window, state, TVN_ITEMEXPANDEDW, action, nullptr, item);
    return true;
}

void paint_item(HWND window, TreeState& state, HDC context, int index, RECT row) {
    auto* const handle = state.at(index);
    const auto& item = *state.items.find(handle);
    const auto dpi = GetDpiForWindow(window);
    const auto style = style_of(window);
    const bool is_disabled = (style & WS_DISABLED) != 0;
    const bool has_focus = GetFocus() == window;
    auto ink = GetSysColor(is_disabled ? COLOR_GRAYTEXT : COLOR_WINDOWTEXT);
    auto band = row;
    InflateRect(&band, -scaled(2, dpi), -scaled(1, dpi));
    if (state.selected == handle && (has_focus || (style & TVS_SHOWSELALWAYS) != 0)) {
        draw_round_area(context, band, 3,
                        has_focus ? GetSysColor(COLOR_HIGHLIGHT) : theme().palette.quiet_row);
        if (has_focus) ink = GetSysColor(COLOR_HIGHLIGHTTEXT);
    } else if (state.hot == handle && !is_disabled) {
        draw_round_area(context, band, 3, theme().palette.hot_row);
    }
    const auto arrow = arrow_of(item, row, dpi);
    if (!item.children.empty() || item.may_have_children) {
        draw_glyph(context, arrow, item.is_open ? Glyph::down : Glyph::right, scaled(9, dpi), ink);
    }
    if (state.images != nullptr) {
        int width = 0;
        int height = 0;
        ImageList_GetIconSize(state.images, &width, &height);
        const auto image = state.selected == handle ? item.selected_image : item.image;
        ImageList_Draw(state.images, image, context, static_cast<int>(arrow.right),
                       static_cast<int>((row.top + row.bottom - height) / 2), ILD_TRANSPARENT);
    }
    row = name_of(window, state, item, row);
    SetTextColor(context, ink);
    DrawTextW(context, item.text.c_str(), static_cast<int>(item.text.size()), &row,
              DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX | DT_END_ELLIPSIS);
}

void paint(HWND window, TreeState& state) {
    const ControlPaint paint(window, state);
    FillRect(paint, &paint.client(), GetSysColorBrush(COLOR_WINDOW));
    RECT box{};
    GetClipBox(paint, &box);
    for (int i = state.rows.top; i < state.count(); ++i) {
        const auto row = state.rows.place(paint.client(), i);
        if (row.top >= box.bottom) break;
        if (row.bottom > box.top) paint_item(window, state, paint, i, row);
    }
}

HTREEITEM item_at(HWND window, TreeState& state, POINT point) {
    const auto client = client_of(window);
    if (PtInRect(&client, point) == 0) return nullptr;
    return state.at(state.rows.at(client, state.count(), static_cast<int>(point.y)));
}

void press(HWND window, TreeState& state, POINT point, bool is_double) {
    if (GetFocus() != window) SetFocus(window);
    auto* const item = IsWindow(window) ? item_at(window, state, point) : nullptr;
    const auto* const found = state.items.find(item);
    if (found != nullptr) {
        const auto row = state.rows.place(client_of(window), state.row_of(item));
        const auto arrow = arrow_of(*found, row, GetDpiForWindow(window));
        if (point.x >= arrow.left && point.x < arrow.right) {
            expand(window, state, item, TVE_TOGGLE);
            return;
        }
        select(window, state, item, TVC_BYMOUSE);
        if (is_double && IsWindow(window)) expand(window, state, item, TVE_TOGGLE);
    }
    if (!IsWindow(window)) return;
    NMHDR header{};
    notify_parent_of(window, header, is_double ? NM_DBLCLK : NM_CLICK);
}

void press_key(HWND window, TreeState& state, WPARAM key) {
    auto* const item = state.selected;
    const auto* const found = state.items.find(item);
    switch (key) {
        case VK_LEFT:
            if (found != nullptr && found->is_open) {
                expand(window, state, item, TVE_COLLAPSE);
            } else if (found != nullptr && found->parent != nullptr) {
                select(window, state, found->parent, TVC_BYKEYBOARD);
            }
            return;
        case VK_RIGHT:
            if (found != nullptr && found->is_open) {
                select(window, state, found->children.front(), TVC_BYKEYBOARD);
            } else {
                expand(window, state, item, TVE_EXPAND);
            }
            return;
        case VK_ADD:
        case VK_SUBTRACT:
            expand(window, state, item, key == VK_ADD ? TVE_EXPAND : TVE_COLLAPSE);
            return;
        case VK_RETURN: {
            NMHDR header{};
            notify_parent_of(window, header, NM_RETURN);
            return;
        }
        default: {
            const auto to = row_after_key(state.rows, client_of(window), state.count(),
                                          state.row_of(item), key);
            if (auto* const next = state.at(to)) select(window, state, next, TVC_BYKEYBOARD);
            return;
        }
    }
}

// The next item that begins with what was typed just now; one character again and again goes on.
void type(HWND window, TreeState& state, char16_t character) {
    if (is_space(character) && state.typed.text.empty()) return;
    state.typed.add(character, static_cast<DWORD>(GetMessageTime()));
    const auto from = state.row_of(state.selected);
    const auto count = state.count();
    const int first = state.typed.text.size() > 1 ? 0 : 1;
    for (int i = first; i < count + first; ++i) {
        auto* const item = state.at((from + i + count) % count);
        if (!state.typed.begins(state.items.find(item)->text)) continue;
        const auto typed = state.typed;
        select(window, state, item, TVC_BYKEYBOARD);
        state.typed = typed;
        return;
    }
}

void heat(HWND window, TreeState& state, HTREEITEM item) {
    auto* const before = std::exchange(state.hot, item);
    if (before == item) return;
    repaint_item(window, state, before);
    repaint_item(window, state, item);
}

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
    if (made != nullptr) arrange(window, state);
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
    arrange(window, state);
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
    auto text = text_of(edit);
    if (GetFocus() == edit) SetFocus(window);
    DestroyWindow(edit);
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
    select(window, state, item, TVC_UNKNOWN);
    show(window, state, item);
    const auto* const found = state.items.find(item);
    if (found == nullptr) return 0;
    const auto name =
        name_of(window, state, *found, state.rows.place(client_of(window), state.row_of(item)));
    state.label_item = item;
    state.label = open_label_edit(window, label_edit_place(window, name), found->text, state.font);
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
            result = expand(window, state, item, wparam & TVE_TOGGLE) ? TRUE : FALSE;
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
            if (result != 0) select(window, state, item, TVC_UNKNOWN);
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
            show(window, state, item);
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
            asked.hItem = item_at(window, state, asked.pt);
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
            arrange(window, state);
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
            arrange(window, state);
            return true;
        case WM_SIZE:
            arrange(window, state);
            return true;
        case WM_SETREDRAW:
            state.is_frozen = wparam == 0;
            result = DefWindowProcW(window, message, wparam, lparam);
            arrange(window, state);
            return true;
        case WM_PAINT:
            paint(window, state);
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
                select(window, state, first, TVC_UNKNOWN);
            }
            repaint(window);
            NMHDR header{};
            notify_parent_of(window, header, message == WM_SETFOCUS ? NM_SETFOCUS : NM_KILLFOCUS);
            return true;
        }
        case WM_KEYDOWN:
            press_key(window, state, wparam);
            return true;
        case WM_CHAR:
            type(window, state, static_cast<char16_t>(wparam));
            return true;
        case WM_LBUTTONDOWN:
        case WM_LBUTTONDBLCLK:
            press(window, state, point, message == WM_LBUTTONDBLCLK);
            return true;
        case WM_MOUSEMOVE:
            heat(window, state, item_at(window, state, point));
            return true;
        case WM_MOUSEWHEEL:
            show_rows_from(
                window, state.rows, state.count(),
                state.rows.top - GET_WHEEL_DELTA_WPARAM(wparam) * kWheelRows / WHEEL_DELTA);
            place_label(window, state);
            return true;
        case WM_VSCROLL:
            show_rows_from(window, state.rows, state.count(),
                           top_after_scroll(window, state.rows, state.count(), LOWORD(wparam)));
            place_label(window, state);
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
        if (message == WM_MOUSELEAVE) heat(window, *state, nullptr);
        return result;
    }
    if (handle_items(window, *state, message, wparam, lparam, result) ||
        handle_window(window, *state, message, wparam, lparam, result)) {
        return result;
    }
    if (handle_control_message(window, *state, message, wparam, lparam, result)) {
        if (message == WM_SETFONT) arrange(window, *state);
        return result;
    }
    return DefWindowProcW(window, message, wparam, lparam);
}

}  // namespace tvutil2
