#include "tvutil2/platform/window/controls/list_box.h"

#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/draw/device_context.h"
#include "tvutil2/platform/draw/look.h"
#include "tvutil2/platform/draw/objects.h"
#include "tvutil2/platform/draw/rect.h"
#include "tvutil2/platform/draw/shapes.h"
#include "tvutil2/platform/draw/text.h"
#include "tvutil2/platform/window/controls/list_state.h"
#include "tvutil2/platform/window/dialogs/dialogs.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/hit_test.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/mouse.h"
#include "tvutil2/platform/window/paint.h"
#include "tvutil2/platform/window/window.h"

#include <algorithm>
#include <utility>

namespace tvutil2 {
namespace {

constexpr int kRowMargin = 3;
constexpr int kItemMargin = 8;
constexpr DWORD kTypingTime = 1000;

void tell(HWND window, const ListState& state, WORD code) {
    if (state.combo == nullptr && (style_of(window) & LBS_NOTIFY) != 0) notify_parent(window, code);
}

void repaint_row(HWND window, const ListState& state, int index) {
    if (!state.items.has(index)) return;
    const auto place = state.rows.place(client_of(window), index);
    InvalidateRect(window, &place, TRUE);
}

void paint_row(HDC context, const ListState& state, HWND window, int index, RECT row) {
    const auto style = style_of(window);
    const auto dpi = GetDpiForWindow(window);
    const auto& palette = theme().palette;
    const bool has_focus = GetFocus() == window || state.combo != nullptr;
    const bool is_disabled = (style & WS_DISABLED) != 0;
    auto ink = is_disabled ? GetSysColor(COLOR_GRAYTEXT) : GetTextColor(context);
    auto band = row;
    InflateRect(&band, -scaled(2, dpi), -scaled(1, dpi));
    if (is_list_item_selected(state, style, index)) {
        draw_round_area(context, band, 3,
                        has_focus ? GetSysColor(COLOR_HIGHLIGHT) : palette.quiet_row);
        if (has_focus) ink = GetSysColor(COLOR_HIGHLIGHTTEXT);
    } else if (state.hot == index && !is_disabled) {
        draw_round_area(context, band, 3, palette.hot_row);
    }
    if (takes_several(style) && has_focus && state.current == index) {
        draw_focus_ring(context, band);
    }
    const auto before = SetTextColor(context, ink);
    InflateRect(&row, -scaled(kItemMargin, dpi), 0);
    const auto& text = state.items.at(index).text;
    DrawTextW(context, text.c_str(), static_cast<int>(text.size()), &row,
              DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX | DT_END_ELLIPSIS | reading_of(window));
    SetTextColor(context, before);
}

void paint(HWND window, const ListState& state) {
    const ControlPaint paint(window, state);
    auto* const brush = ask_colors(window, paint, WM_CTLCOLORLISTBOX);
    FillRect(paint, &paint.client(), brush);
    RECT box{};
    GetClipBox(paint, &box);
    const auto& client = paint.client();
    for (int i = state.rows.top; i < state.items.count(); ++i) {
        const auto row = state.rows.place(client, i);
        if (row.top >= box.bottom) break;
        if (row.bottom > box.top) paint_row(paint, state, window, i, row);
    }
    if (state.combo == nullptr) return;
    auto* const frame = CreateSolidBrush(theme().palette.border);
    FrameRect(paint, &client, frame);
    DeleteObject(frame);
}

void select_only(HWND window, ListState& state, int first, int last) {
    for (int i = 0; i < state.items.count(); ++i) {
        state.items.at(i).is_selected = i >= std::min(first, last) && i <= std::max(first, last);
    }
    repaint(window);
}

// The person goes to an item, by key or pointer.
void choose(HWND window, ListState& state, int index, bool by_pointer) {
    const auto style = style_of(window);
    if (!state.items.has(index)) return;
    const bool with_shift = GetKeyState(VK_SHIFT) < 0;
    const bool with_control = GetKeyState(VK_CONTROL) < 0;
    const bool changes = takes_several(style) || state.current != index;
    go_to_item(window, state, index);
    if ((style & LBS_EXTENDEDSEL) != 0) {
        if (with_shift && state.items.has(state.anchor)) {
            select_only(window, state, state.anchor, index);
        } else if (with_control) {
            state.anchor = index;
            if (!by_pointer) return;
            auto& item = state.items.at(index);
            item.is_selected = !item.is_selected;
        } else {
            state.anchor = index;
            select_only(window, state, index, index);
        }
    } else if ((style & LBS_MULTIPLESEL) != 0) {
        if (!by_pointer) return;
        auto& item = state.items.at(index);
        item.is_selected = !item.is_selected;
    }
    repaint_row(window, state, index);
    if (changes) tell(window, state, LBN_SELCHANGE);
}

void toggle(HWND window, ListState& state) {
    if (!takes_several(style_of(window)) || !state.items.has(state.current)) return;
    auto& item = state.items.at(state.current);
    item.is_selected = !item.is_selected;
    repaint_row(window, state, state.current);
    tell(window, state, LBN_SELCHANGE);
}

// Held beyond its edges a list goes on, a row at each move.
void drag(HWND window, ListState& state, POINT point) {
    const auto client = client_of(window);
    int index = state.rows.at(client, state.items.count(), static_cast<int>(point.y));
    if (point.y < client.top) index = state.rows.top - 1;
    if (point.y >= client.bottom) index = state.rows.top + state.rows.in_view(client);
    index = std::clamp(index, -1, state.items.count() - 1);
    if (index >= 0 && index != state.current) choose(window, state, index, false);
}

void heat(HWND window, ListState& state, int index) {
    if (state.combo != nullptr) {
        if (index >= 0) go_to_item(window, state, index);
        return;
    }
    const auto before = std::exchange(state.hot, index);
    if (before == index) return;
    repaint_row(window, state, before);
    repaint_row(window, state, index);
}

// The open list of a combo box has the pointer wherever that is.
bool press_in_combo(HWND window, ListState& state, POINT point) {
    auto on_screen = point;
    ClientToScreen(window, &on_screen);
    const auto packed = MAKELPARAM(static_cast<WORD>(on_screen.x), static_cast<WORD>(on_screen.y));
    const auto hit = SendMessageW(window, WM_NCHITTEST, 0, packed);
    if (hit == HTVSCROLL) {
        state.is_scrolling = true;
        SendMessageW(window, WM_NCLBUTTONDOWN, HTVSCROLL, packed);
        state.is_scrolling = false;
        if (IsWindow(window)) SetCapture(window);
        return true;
    }
    if (hit == HTCLIENT) return false;
    list_left(state.combo);
    return true;
}

void press(HWND window, ListState& state, POINT point, bool is_double) {
    if (state.combo != nullptr) {
        if (press_in_combo(window, state, point)) return;
        state.is_pressed = true;
        return;
    }
    if (GetFocus() != window) SetFocus(window);
    const auto index = list_item_under(window, state, point);
    if (!IsWindow(window) || index < 0) return;
    if (is_double) {
        tell(window, state, LBN_DBLCLK);
        return;
    }
    state.is_pressed = true;
    SetCapture(window);
    choose(window, state, index, true);
}

void release(HWND window, ListState& state, POINT point) {
    if (state.combo != nullptr) {
        const auto index = list_item_under(window, state, point);
        if (index >= 0) list_chosen(state.combo, index);
        return;
    }
    if (!std::exchange(state.is_pressed, false)) return;
    if (GetCapture() == window) ReleaseCapture();
}

// The person's doings. False for any other.
bool handle_input(HWND window, ListState& state, UINT message, WPARAM wparam, LPARAM lparam) {
    const POINT point{GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam)};
    switch (message) {
        case WM_LBUTTONDOWN:
        case WM_LBUTTONDBLCLK:
            press(window, state, point, message == WM_LBUTTONDBLCLK);
            return true;
        case WM_LBUTTONUP:
            release(window, state, point);
            return true;
        case WM_MOUSEMOVE:
            // One that rests, over rows that the keys are moving in, leaves them alone.
            if (state.combo != nullptr && std::exchange(state.pointer, lparam) == lparam) {
                return true;
            }
            if (state.is_pressed && state.combo == nullptr) {
                drag(window, state, point);
            } else {
                heat(window, state, list_item_under(window, state, point));
            }
            return true;
        case WM_CAPTURECHANGED:
            state.is_pressed = false;
            if (state.combo != nullptr && !state.is_scrolling) list_left(state.combo);
            return true;
        case WM_KEYDOWN: {
            if (wparam == VK_SPACE) toggle(window, state);
            const auto to = row_after_key(state.rows, client_of(window), state.items.count(),
                                          state.current, wparam);
            if (to != state.current) choose(window, state, to, false);
            return true;
        }
        case WM_CHAR: {
            if (wparam == VK_SPACE && takes_several(style_of(window))) return true;
            const auto found = find_typed(state, static_cast<char16_t>(wparam), GetTickCount());
            if (found >= 0 && found != state.current) choose(window, state, found, false);
            return true;
        }
        default:
            return scroll_rows(window, state.rows, state.items.count(), message, wparam);
    }
}

void create(HWND window, ListState& state) {
    const auto style = style_of(window);
    state.rows.has_bar = (style & WS_VSCROLL) != 0;
    state.rows.keeps_bar = (style & LBS_DISABLENOSCROLL) != 0;
    state.field.color_message = WM_CTLCOLORLISTBOX;
    arrange_list(window, state);
}

}  // namespace

bool takes_several(DWORD style) {
    return (style & (LBS_MULTIPLESEL | LBS_EXTENDEDSEL)) != 0;
}

bool is_list_item_selected(const ListState& state, DWORD style, int index) {
    if ((style & LBS_NOSEL) != 0) return false;
    return takes_several(style) ? state.items.at(index).is_selected : state.current == index;
}

int list_item_under(HWND window, const ListState& state, POINT point) {
    const auto client = client_of(window);
    if (PtInRect(&client, point) == 0) return -1;
    return state.rows.at(client, state.items.count(), static_cast<int>(point.y));
}

int find_typed(ListState& state, char16_t character, DWORD now) {
    if (character < u' ') return -1;
    if (now - state.typed_at > kTypingTime) state.typed.clear();
    state.typed_at = now;
    // The same character again goes on to the next item.
    if (state.typed.size() != 1 || state.typed[0] != character) state.typed += character;
    const bool is_first = state.typed.size() == 1;
    return state.items.find(is_first ? state.current : state.current - 1, state.typed, false);
}

void go_to_item(HWND window, ListState& state, int index) {
    const auto before = std::exchange(state.current, index);
    if (state.items.has(index)) {
        show_rows_from(window, state.rows, state.items.count(),
                       state.rows.top_for(client_of(window), index));
    }
    if (before == index) return;
    repaint_row(window, state, before);
    repaint_row(window, state, index);
}

void arrange_list(HWND window, ListState& state) {
    state.rows.height =
        line_height(window, state) + 2 * scaled(kRowMargin, GetDpiForWindow(window));
    show_rows_from(window, state.rows, state.items.count(), state.rows.top);
    repaint(window);
}

LRESULT list_box_procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    const auto state = state_of<ListState>(window);
    if (!state || message == WM_NCCREATE) return DefWindowProcW(window, message, wparam, lparam);
    LRESULT result = 0;
    if (handle_field_message(window, state->field, message, wparam, lparam, result) ||
        handle_list_items(window, *state, message, wparam, lparam, result) ||
        handle_list_selection(window, *state, message, wparam, lparam, result)) {
        if (message == WM_MOUSELEAVE) heat(window, *state, -1);
        return result;
    }
    switch (message) {
        case WM_CREATE:
            create(window, *state);
            return 0;
        case WM_PAINT:
            paint(window, *state);
            return 0;
        case WM_ERASEBKGND:
            return TRUE;
        case WM_SIZE:
            arrange_list(window, *state);
            return 0;
        case WM_GETDLGCODE:
            return DLGC_WANTARROWS | DLGC_WANTCHARS;
        case WM_MOUSEACTIVATE:
            if (state->combo != nullptr) return MA_NOACTIVATE;
            break;
        case WM_SETFOCUS:
        case WM_KILLFOCUS:
            repaint(window);
            tell(window, *state, message == WM_SETFOCUS ? LBN_SETFOCUS : LBN_KILLFOCUS);
            return 0;
        default:
            break;
    }
    if (handle_input(window, *state, message, wparam, lparam)) return 0;
    if (handle_control_message(window, *state, message, wparam, lparam, result)) {
        if (message == WM_SETFONT) arrange_list(window, *state);
        return result;
    }
    return DefWindowProcW(window, message, wparam, lparam);
}

}  // namespace tvutil2
