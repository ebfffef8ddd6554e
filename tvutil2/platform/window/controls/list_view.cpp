#include "tvutil2/platform/window/controls/list_view.h"

#include "tvutil2/platform/draw/rect.h"
#include "tvutil2/platform/window/controls/list_view_state.h"
#include "tvutil2/platform/window/dialogs/dialogs.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/mouse.h"
#include "tvutil2/platform/window/paint.h"
#include "tvutil2/platform/window/scrolling.h"
#include "tvutil2/platform/window/window.h"

#include <algorithm>
#include <utility>

namespace tvutil2 {
namespace {

constexpr int kMostItems = 100000000;
constexpr int kWheelRows = 3;
constexpr int kNarrowestColumn = 10;

UINT state_bits(const ListViewState& state, int index) {
    return (state.focused == index ? LVIS_FOCUSED : 0) |
           (state.selected[static_cast<std::size_t>(index)] ? LVIS_SELECTED : 0);
}

void tell_item(HWND window, UINT code, int index, UINT old_bits, UINT new_bits) {
    NMLISTVIEW told{};
    told.iItem = index;
    told.uOldState = old_bits;
    told.uNewState = new_bits;
    told.uChanged = LVIF_STATE;
    notify_parent_of(window, told.hdr, code);
}

// Selects or not, and moves the focus: what changes is told item by item.
void change_item(HWND window, ListViewState& state, int index, UINT bits, UINT mask) {
    if (!state.has(index)) return;
    const auto before = state_bits(state, index);
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
    const auto after = state_bits(state, index);
    if (before == after) return;
    ListViewView(window, state).repaint_item(index);
    tell_item(window, LVN_ITEMCHANGED, index, before, after);
}

void unselect_others(HWND window, ListViewState& state, int first, int last) {
    if (state.selected_count == 0) return;
    for (int i = 0; i < state.count() && IsWindow(window); ++i) {
        const bool stays = i >= first && i <= last;
        if (!stays && state.selected[static_cast<std::size_t>(i)]) {
            change_item(window, state, i, 0, LVIS_SELECTED);
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
            change_item(window, state, i, LVIS_SELECTED, LVIS_SELECTED);
        }
        change_item(window, state, index, LVIS_FOCUSED, LVIS_FOCUSED);
    } else if (with_control) {
        const bool is_selected = state.selected[static_cast<std::size_t>(index)];
        const UINT bits = by_pointer && !is_selected ? LVIS_SELECTED : 0;
        const UINT mask = by_pointer ? LVIS_SELECTED : 0;
        change_item(window, state, index, bits | LVIS_FOCUSED, mask | LVIS_FOCUSED);
        state.anchor = index;
    } else {
        unselect_others(window, state, index, index);
        change_item(window, state, index, LVIS_SELECTED | LVIS_FOCUSED,
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

bool press_key(HWND window, ListViewState& state, WPARAM key) {
    ListViewView view(window, state);
    switch (key) {
        case VK_SPACE:
            if (state.has(state.focused)) {
                const bool is_on = state.selected[static_cast<std::size_t>(state.focused)];
                const bool turns_off = is_on && GetKeyState(VK_CONTROL) < 0;
                change_item(window, state, state.focused, turns_off ? 0 : LVIS_SELECTED,
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

void press(HWND window, ListViewState& state, POINT point, bool is_double) {
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

void move_pointer_over(HWND window, ListViewState& state, POINT point) {
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

void release(HWND window, ListViewState& state, POINT point) {
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

bool set_cursor(HWND window, ListViewState& state) {
    POINT point{};
    GetCursorPos(&point);
    ScreenToClient(window, &point);
    bool is_edge = false;
    const auto column = ListViewView(window, state).column_at(point, is_edge);
    if (column >= 0 && is_edge) SetCursor(LoadCursorW(nullptr, IDC_SIZEWE));
    return column >= 0 && is_edge;
}

void take_over(ListViewItem& item, const LVITEMW& given) {
    if ((given.mask & LVIF_TEXT) != 0) {
        const auto column = static_cast<std::size_t>(given.iSubItem);
        if (item.texts.size() <= column) item.texts.resize(column + 1);
        item.texts[column] = given.pszText != nullptr ? given.pszText : u"";
    }
    if ((given.mask & LVIF_IMAGE) != 0) item.image = given.iImage;
    if ((given.mask & LVIF_PARAM) != 0) item.data = given.lParam;
}

constexpr int kMostColumns = 1000;

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
        change_item(window, state, index, given.state, given.stateMask);
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
        asked.state = state_bits(state, asked.iItem) & asked.stateMask;
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
        change_item(window, state, given.iItem, given.state, given.stateMask);
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
            change_item(window, state, i, given.state, given.stateMask);
        }
    } else {
        change_item(window, state, index, given.state, given.stateMask);
    }
    return TRUE;
}

// False for any other message.
bool handle_items(HWND window, ListViewState& state, UINT message, WPARAM wparam, LPARAM lparam,
                  LRESULT& result) {
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
            result = state.has(index) ? state_bits(state, index) & static_cast<UINT>(lparam) : 0;
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

LRESULT insert_column(HWND window, ListViewState& state, int index, const LVCOLUMNW& given) {
    if (index < 0 || state.columns.size() >= kMostColumns) return -1;
    ListColumn column;
    if ((given.mask & LVCF_TEXT) != 0 && given.pszText != nullptr) column.title = given.pszText;
    if ((given.mask & LVCF_WIDTH) != 0) column.width = std::max(given.cx, 0);
    if ((given.mask & LVCF_FMT) != 0) column.format = given.fmt & 0x3;
    const auto place = std::min(static_cast<std::size_t>(index), state.columns.size());
    state.columns.insert(state.columns.begin() + static_cast<std::ptrdiff_t>(place), column);
    ListViewView(window, state).arrange();
    return static_cast<LRESULT>(place);
}

// False for any other message.
bool handle_view(HWND window, ListViewState& state, UINT message, WPARAM wparam, LPARAM lparam,
                 LRESULT& result) {
    ListViewView view(window, state);
    const auto index = static_cast<int>(wparam);
    const bool has_column = index >= 0 && static_cast<std::size_t>(index) < state.columns.size();
    switch (message) {
        case LVM_INSERTCOLUMNW:
            result =
                insert_column(window, state, index, *reinterpret_cast<const LVCOLUMNW*>(lparam));
            return true;
        case LVM_DELETECOLUMN:
            result = has_column ? TRUE : FALSE;
            if (has_column) state.columns.erase(state.columns.begin() + index);
            view.arrange();
            return true;
        case LVM_GETCOLUMNWIDTH:
            result = has_column ? state.columns[static_cast<std::size_t>(index)].width : 0;
            return true;
        case LVM_SETCOLUMNWIDTH:
            result = has_column ? TRUE : FALSE;
            if (has_column) {
                const auto width = static_cast<int>(lparam);
                state.columns[static_cast<std::size_t>(index)].width =
                    width < 0 ? view.width_for(index) : width;
                view.arrange();
            }
            return true;
        case LVM_SETIMAGELIST: {
            auto& list = index == LVSIL_NORMAL ? state.large : state.small;
            result = reinterpret_cast<LRESULT>(
                std::exchange(list, reinterpret_cast<HIMAGELIST>(lparam)));
            view.arrange();
            return true;
        }
        case LVM_ENSUREVISIBLE:
            view.show(index);
            result = state.has(index) ? TRUE : FALSE;
            return true;
        case LVM_GETTOPINDEX:
            result = view.shows_icons() ? 0 : state.rows.top;
            return true;
        case LVM_GETCOUNTPERPAGE:
            result = LRESULT{state.rows.in_view(view.client())} * state.per_row;
            return true;
        case LVM_GETITEMRECT:
            result = state.has(index) ? TRUE : FALSE;
            if (result != 0) *reinterpret_cast<RECT*>(lparam) = view.place_of(index);
            return true;
        case LVM_HITTEST: {
            auto& asked = *reinterpret_cast<LVHITTESTINFO*>(lparam);
            asked.iItem = view.item_at(asked.pt);
            result = asked.iItem;
            return true;
        }
        default:
            return false;
    }
}

void scroll(HWND window, ListViewState& state, UINT message, WORD code) {
    ListViewView view(window, state);
    const auto count = view.row_count();
    if (message == WM_VSCROLL) {
        show_rows_from(window, state.rows, count,
                       top_after_scroll(window, state.rows, count, code));
        return;
    }
    SCROLLINFO info{};
    info.cbSize = sizeof info;
    info.fMask = SIF_TRACKPOS | SIF_PAGE;
    GetScrollInfo(window, SB_HORZ, &info);
    const int page = static_cast<int>(info.nPage);
    const int ways[] = {-20, 20, -page, page};
    if (code <= SB_PAGERIGHT) view.scroll_to_x(state.scroll_x + ways[code]);
    if (code == SB_THUMBTRACK || code == SB_THUMBPOSITION) view.scroll_to_x(info.nTrackPos);
}

// The person's doings and the window's. False for any other message.
bool handle_window(HWND window, ListViewState& state, UINT message, WPARAM wparam, LPARAM lparam,
                   LRESULT& result) {
    const POINT point{GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam)};
    switch (message) {
        case WM_CREATE:
            state.field.color_message = WM_CTLCOLORLISTBOX;
            ListViewView(window, state).arrange();
            return true;
        case WM_SIZE:
            ListViewView(window, state).arrange();
            return true;
        case WM_PAINT:
            ListViewView(window, state).paint();
            return true;
        case WM_ERASEBKGND:
            result = TRUE;
            return true;
        case WM_GETDLGCODE:
            result = DLGC_WANTARROWS | DLGC_WANTCHARS;
            return true;
        case WM_SETFOCUS:
        case WM_KILLFOCUS: {
            repaint(window);
            NMHDR header{};
            notify_parent_of(window, header, message == WM_SETFOCUS ? NM_SETFOCUS : NM_KILLFOCUS);
            return true;
        }
        case WM_KEYDOWN:
            return press_key(window, state, wparam);
        case WM_LBUTTONDOWN:
        case WM_LBUTTONDBLCLK:
            press(window, state, point, message == WM_LBUTTONDBLCLK);
            return true;
        case WM_MOUSEMOVE:
            move_pointer_over(window, state, point);
            return true;
        case WM_LBUTTONUP:
            release(window, state, point);
            return true;
        case WM_CAPTURECHANGED:
            state.sized_column = state.pressed_column = -1;
            return true;
        case WM_SETCURSOR:
            result = set_cursor(window, state) ? TRUE : FALSE;
            return result != 0;
        case WM_MOUSEWHEEL:
            show_rows_from(
                window, state.rows, ListViewView(window, state).row_count(),
                state.rows.top - GET_WHEEL_DELTA_WPARAM(wparam) * kWheelRows / WHEEL_DELTA);
            return true;
        case WM_VSCROLL:
        case WM_HSCROLL:
            scroll(window, state, message, LOWORD(wparam));
            return true;
        default:
            return false;
    }
}

}  // namespace

LRESULT list_view_procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    const auto state = state_of<ListViewState>(window);
    if (!state || message == WM_NCCREATE) return DefWindowProcW(window, message, wparam, lparam);
    LRESULT result = 0;
    if (handle_field_message(window, state->field, message, wparam, lparam, result)) {
        if (message == WM_MOUSELEAVE) move_pointer_over(window, *state, {-1, -1});
        return result;
    }
    if (handle_items(window, *state, message, wparam, lparam, result) ||
        handle_view(window, *state, message, wparam, lparam, result) ||
        handle_window(window, *state, message, wparam, lparam, result)) {
        return result;
    }
    if (handle_control_message(window, *state, message, wparam, lparam, result)) {
        if (message == WM_SETFONT) ListViewView(window, *state).arrange();
        return result;
    }
    return DefWindowProcW(window, message, wparam, lparam);
}

}  // namespace tvutil2
