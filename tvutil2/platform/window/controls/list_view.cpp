#include "tvutil2/platform/window/controls/list_view.h"

#include "tvutil2/platform/window/controls/list_view_input.h"
#include "tvutil2/platform/window/controls/notify.h"
#include "tvutil2/platform/window/dialogs/dialogs.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/mouse.h"
#include "tvutil2/platform/window/scrolling.h"
#include "tvutil2/platform/window/window.h"

#include <algorithm>
#include <utility>

namespace tvutil2 {
namespace {

void change_column(ListColumn& column, const LVCOLUMNW& given) {
    if ((given.mask & LVCF_TEXT) != 0 && given.pszText != nullptr) column.title = given.pszText;
    if ((given.mask & LVCF_WIDTH) != 0) column.width = std::max(given.cx, 0);
    if ((given.mask & LVCF_FMT) != 0) column.format = given.fmt & 0x3;
}

LRESULT insert_column(HWND window, ListViewState& state, int index, const LVCOLUMNW& given) {
    if (index < 0 || state.columns.size() >= kMostColumns) return -1;
    ListColumn column;
    change_column(column, given);
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
        case LVM_SETCOLUMNW:
            result = has_column ? TRUE : FALSE;
            if (has_column) {
                change_column(state.columns[static_cast<std::size_t>(index)],
                              *reinterpret_cast<const LVCOLUMNW*>(lparam));
            }
            view.arrange();
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

void scroll_across(HWND window, ListViewState& state, WORD code) {
    ListViewView view(window, state);
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
            return press_list_key(window, state, wparam);
        case WM_LBUTTONDOWN:
        case WM_LBUTTONDBLCLK:
            press_list_view(window, state, point, message == WM_LBUTTONDBLCLK);
            return true;
        case WM_MOUSEMOVE:
            move_over_list_view(window, state, point);
            return true;
        case WM_LBUTTONUP:
            release_list_view(window, state, point);
            return true;
        case WM_CAPTURECHANGED:
            state.sized_column = state.pressed_column = -1;
            return true;
        case WM_SETCURSOR:
            result = set_list_cursor(window, state) ? TRUE : FALSE;
            return result != 0;
        case WM_MOUSEWHEEL:
        case WM_VSCROLL: {
            const auto rows = ListViewView(window, state).row_count();
            const bool is_taken = scroll_rows(window, state.rows, rows, message, wparam);
            place_list_label(window, state);
            return is_taken;
        }
        case WM_HSCROLL:
            scroll_across(window, state, LOWORD(wparam));
            place_list_label(window, state);
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
        if (message == WM_MOUSELEAVE) move_over_list_view(window, *state, {-1, -1});
        return result;
    }
    if (handle_list_label(window, *state, message, wparam, result) ||
        handle_list_view_items(window, *state, message, wparam, lparam, result) ||
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
