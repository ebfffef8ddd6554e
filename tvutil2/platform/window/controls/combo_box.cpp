#include "tvutil2/platform/window/controls/combo_box.h"

#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/draw/device_context.h"
#include "tvutil2/platform/draw/look.h"
#include "tvutil2/platform/draw/objects.h"
#include "tvutil2/platform/draw/rect.h"
#include "tvutil2/platform/draw/shapes.h"
#include "tvutil2/platform/draw/text.h"
#include "tvutil2/platform/window/controls/edit.h"
#include "tvutil2/platform/window/controls/list_box.h"
#include "tvutil2/platform/window/controls/list_state.h"
#include "tvutil2/platform/window/dialogs/dialogs.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/mouse.h"
#include "tvutil2/platform/window/paint.h"
#include "tvutil2/platform/window/show.h"
#include "tvutil2/platform/window/window.h"

#include <algorithm>
#include <utility>

namespace tvutil2 {
namespace {

constexpr int kMostRows = 30;
constexpr int kArrowWidth = 24;
constexpr int kSideMargin = 8;
constexpr int kEditId = 1001;

struct ComboState : ControlState {
    HWND list = nullptr;
    HWND edit = nullptr;
    WNDPROC edit_procedure = nullptr;
    bool is_open = false;
    bool is_hot = false;
    bool has_focus = false;
    bool is_filling = false;   ///< the edit, which nobody has to hear of
    int selected_before = -1;  ///< the list opened
    int dropped_width = 0;
};

std::shared_ptr<ListState> list_of(const ComboState& state) {
    return state.list != nullptr ? state_of<ListState>(state.list) : nullptr;
}

bool has_edit(HWND window) {
    return (style_of(window) & 0x3) != CBS_DROPDOWNLIST;
}

// As high as the other fields of a dialog are, which have 14 units.
int field_height(HWND window, const ComboState& state) {
    return line_height(window, state) * 14 / 8;
}

RECT client_of(HWND window) {
    RECT client{};
    GetClientRect(window, &client);
    return client;
}

void arrange(HWND window, const ComboState& state) {
    const auto client = client_of(window);
    if (state.edit == nullptr) return;
    const auto dpi = GetDpiForWindow(window);
    const auto line = scaled(2, dpi);
    MoveWindow(state.edit, client.left + line + scaled(2, dpi), client.top + line,
               std::max<LONG>(client.right - scaled(kArrowWidth + 4, dpi), 0),
               std::max<LONG>(client.bottom - 2 * line, 0), TRUE);
}

void take_field_height(HWND window, const ComboState& state) {
    RECT place{};
    GetWindowRect(window, &place);
    SetWindowPos(window, nullptr, 0, 0, place.right - place.left, field_height(window, state),
                 SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
}

// The chosen text into the edit.
void fill_edit(ComboState& state, int index) {
    const auto list = list_of(state);
    if (state.edit == nullptr || !list) return;
    state.is_filling = true;
    SetWindowTextW(state.edit, list->items.has(index) ? list->items.at(index).text.c_str() : u"");
    SendMessageW(state.edit, EM_SETSEL, 0, -1);
    state.is_filling = false;
}

void go_to(HWND window, ComboState& state, int index) {
    const auto list = list_of(state);
    if (!list) return;
    go_to_item(state.list, *list, index);
    fill_edit(state, index);
    repaint(window);
}

// Below the field, above it where there is no room; beyond the window if need be.
RECT list_place(HWND window, const ComboState& state, const ListState& list) {
    RECT field{};
    GetWindowRect(window, &field);
    const auto work = monitor_at(field).work;
    const int rows = std::clamp(list.items.count(), 1, kMostRows);
    const int edge = 2;
    auto height = static_cast<LONG>(rows * list.rows.height + edge);
    const auto below = work.bottom - field.bottom;
    const auto above = field.top - work.top;
    const bool is_below = height <= below || below >= above;
    height = std::min(height, std::max(is_below ? below : above, LONG{1} * list.rows.height));
    const auto width = std::max<LONG>(field.right - field.left, state.dropped_width);
    const auto top = is_below ? field.bottom : field.top - height;
    return {field.left, top, field.left + width, top + height};
}

void open(HWND window, ComboState& state) {
    if (state.is_open) return;
    notify_parent(window, CBN_DROPDOWN);
    const auto list = IsWindow(window) ? list_of(state) : nullptr;
    if (!list) return;
    state.selected_before = list->current;
    const auto place = list_place(window, state, *list);
    state.is_open = true;
    SetWindowPos(state.list, HWND_TOPMOST, place.left, place.top, place.right - place.left,
                 place.bottom - place.top, SWP_NOACTIVATE | SWP_SHOWWINDOW);
    arrange_list(state.list, *list);
    if (list->current >= 0) go_to_item(state.list, *list, list->current);
    SetCapture(state.list);
    repaint(window);
}

// Hides the list: SELENDOK or SELENDCANCEL, then CLOSEUP.
void close(HWND window, ComboState& state, bool takes) {
    if (!std::exchange(state.is_open, false)) return;
    if (GetCapture() == state.list) ReleaseCapture();
    if (!takes) go_to(window, state, state.selected_before);
    ShowWindow(state.list, SW_HIDE);
    repaint(window);
    notify_parent(window, takes ? CBN_SELENDOK : CBN_SELENDCANCEL);
    if (IsWindow(window)) notify_parent(window, CBN_CLOSEUP);
}

// A key has gone to an item.
void follow_key(HWND window, ComboState& state, int index) {
    const auto list = list_of(state);
    if (!list || index == list->current || !list->items.has(index)) return;
    if (!state.is_open) notify_parent(window, CBN_SELENDOK);
    if (!IsWindow(window)) return;
    go_to(window, state, index);
    notify_parent(window, CBN_SELCHANGE);
}

bool press_key(HWND window, ComboState& state, WPARAM key, bool with_alt) {
    const auto list = list_of(state);
    if (!list) return false;
    const bool toggles = key == VK_F4 || (with_alt && (key == VK_DOWN || key == VK_UP));
    if (toggles) {
        if (state.is_open) {
            close(window, state, true);
        } else {
            open(window, state);
        }
        return true;
    }
    if (state.is_open && (key == VK_RETURN || key == VK_ESCAPE)) {
        close(window, state, key == VK_RETURN);
        return true;
    }
    const bool is_edit_key = state.edit != nullptr && (key == VK_HOME || key == VK_END);
    if (is_edit_key) return false;
    const auto to =
        row_after_key(list->rows, client_of(state.list), list->items.count(), list->current, key);
    if (to == list->current) return key == VK_UP || key == VK_DOWN;
    follow_key(window, state, to);
    return true;
}

// Keys that the box wants of its edit.
LRESULT combo_edit_procedure(HWND edit, UINT message, WPARAM wparam, LPARAM lparam) {
    auto* const window = GetParent(edit);
    const auto state = state_of<ComboState>(window);
    if (!state || state->edit_procedure == nullptr) {
        return DefWindowProcW(edit, message, wparam, lparam);
    }
    const bool is_key = message == WM_KEYDOWN || message == WM_SYSKEYDOWN;
    if (is_key && press_key(window, *state, wparam, message == WM_SYSKEYDOWN)) return 0;
    if (message == WM_MOUSEWHEEL) return SendMessageW(window, message, wparam, lparam);
    if (message == WM_GETDLGCODE && lparam != 0 && state->is_open) {
        const auto key = reinterpret_cast<const MSG*>(lparam)->wParam;
        if (key == VK_RETURN || key == VK_ESCAPE) return DLGC_WANTMESSAGE;
    }
    return CallWindowProcW(state->edit_procedure, edit, message, wparam, lparam);
}

void create(HWND window, ComboState& state) {
    const auto style = style_of(window);
    const DWORD list_style = WS_POPUP | LBS_HASSTRINGS | WS_VSCROLL |
                             ((style & CBS_SORT) != 0 ? LBS_SORT : 0) |
                             ((style & CBS_DISABLENOSCROLL) != 0 ? LBS_DISABLENOSCROLL : 0);
    state.list = CreateWindowExW(WS_EX_TOPMOST | WS_EX_TOOLWINDOW | WS_EX_NOACTIVATE, u"ComboLBox",
                                 u"", list_style, 0, 0, 1, 1, GetAncestor(window, GA_ROOT), nullptr,
                                 nullptr, nullptr);
    if (const auto list = list_of(state)) list->combo = window;
    if (has_edit(window)) {
        state.edit = CreateWindowExW(
            WS_EX_NOPARENTNOTIFY, u"Edit", u"",
            WS_CHILD | WS_VISIBLE | ES_AUTOHSCROLL | (style & WS_DISABLED), 0, 0, 1, 1, window,
            reinterpret_cast<HMENU>(std::intptr_t{kEditId}), nullptr, nullptr);
        if (state.edit != nullptr) {
            state.edit_procedure = reinterpret_cast<WNDPROC>(SetWindowLongPtrW(
                state.edit, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(combo_edit_procedure)));
        }
    }
    take_field_height(window, state);
    arrange(window, state);
}

void paint(HWND window, const ComboState& state) {
    const ControlPaint paint(window, state);
    const auto dpi = paint.dpi();
    const bool is_disabled = (style_of(window) & WS_DISABLED) != 0;
    ControlLook look;
    look.is_hot = state.is_hot;
    look.is_pressed = state.is_open && state.edit == nullptr;
    look.is_disabled = is_disabled;
    auto area = paint.client();
    // What the corners leave free.
    FillRect(paint, &area, ask_colors(window, paint, WM_CTLCOLORSTATIC));
    RECT arrow = area;
    arrow.left = std::max<LONG>(area.left, area.right - scaled(kArrowWidth, dpi));
    const auto ink = GetSysColor(is_disabled ? COLOR_GRAYTEXT : COLOR_BTNTEXT);
    if (state.edit != nullptr) {
        look.is_default = state.has_focus;
        draw_field(paint, area, look, GetSysColor(is_disabled ? COLOR_3DFACE : COLOR_WINDOW));
        draw_glyph(paint, arrow, Glyph::down, scaled(10, dpi), ink);
        return;
    }
    draw_push_button(paint, area, look);
    draw_glyph(paint, arrow, Glyph::down, scaled(10, dpi), ink);
    const auto list = list_of(state);
    if (list && list->items.has(list->current)) {
        SetTextColor(paint, ink);
        RECT row{area.left + scaled(kSideMargin, dpi), area.top, arrow.left, area.bottom};
        const auto& text = list->items.at(list->current).text;
        DrawTextW(paint, text.c_str(), static_cast<int>(text.size()), &row,
                  DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX | DT_END_ELLIPSIS);
    }
    if (state.has_focus) draw_focus_ring(paint, area);
}

// Between the box and its edit the focus is the box's.
void change_focus(HWND window, ComboState& state, bool has_focus, HWND other) {
    if (other != nullptr && (other == window || other == state.edit)) return;
    if (state.has_focus == has_focus) return;
    state.has_focus = has_focus;
    repaint(window);
    if (has_focus) {
        notify_parent(window, CBN_SETFOCUS);
        return;
    }
    if (state.is_open) {
        close(window, state, false);
    } else {
        notify_parent(window, CBN_SELENDCANCEL);
    }
    if (IsWindow(window)) notify_parent(window, CBN_KILLFOCUS);
}

void hear_edit(HWND window, ComboState& state, WORD code) {
    switch (code) {
        case EN_SETFOCUS:
            return change_focus(window, state, true, nullptr);
        case EN_KILLFOCUS:
            return change_focus(window, state, false, GetFocus());
        case EN_UPDATE:
            if (!state.is_filling) notify_parent(window, CBN_EDITUPDATE);
            return;
        case EN_CHANGE: {
            if (state.is_filling) return;
            // What is typed isn't what was chosen.
            const auto list = list_of(state);
            if (list) go_to_item(state.list, *list, -1);
            notify_parent(window, CBN_EDITCHANGE);
            return;
        }
        default:
            return;
    }
}

void press(HWND window, ComboState& state) {
    auto* const taker = state.edit != nullptr ? state.edit : window;
    if (GetFocus() != taker) SetFocus(taker);
    if (!IsWindow(window)) return;
    open(window, state);
}

void turn_wheel(HWND window, ComboState& state, int delta) {
    const auto list = list_of(state);
    if (!list || list->items.count() == 0) return;
    if (state.is_open) {
        SendMessageW(state.list, WM_MOUSEWHEEL,
                     MAKEWPARAM(0, static_cast<WORD>(static_cast<std::int16_t>(delta))), 0);
    } else if (state.has_focus) {
        follow_key(window, state,
                   std::clamp(list->current + (delta > 0 ? -1 : 1), 0, list->items.count() - 1));
    }
}

LRESULT set_current(HWND window, ComboState& state, int index) {
    const auto list = list_of(state);
    if (!list || (index != -1 && !list->items.has(index))) {
        go_to(window, state, -1);
        return CB_ERR;
    }
    go_to(window, state, index);
    return index;
}

// The message that the list knows it by; 0 for none.
UINT list_message(UINT message) {
    constexpr std::pair<UINT, UINT> kMessages[] = {
        {CB_ADDSTRING, LB_ADDSTRING},       {CB_DELETESTRING, LB_DELETESTRING},
        {CB_GETCOUNT, LB_GETCOUNT},         {CB_GETCURSEL, LB_GETCURSEL},
        {CB_GETLBTEXT, LB_GETTEXT},         {CB_GETLBTEXTLEN, LB_GETTEXTLEN},
        {CB_INSERTSTRING, LB_INSERTSTRING}, {CB_RESETCONTENT, LB_RESETCONTENT},
        {CB_FINDSTRING, LB_FINDSTRING},     {CB_FINDSTRINGEXACT, LB_FINDSTRINGEXACT},
        {CB_GETITEMDATA, LB_GETITEMDATA},   {CB_SETITEMDATA, LB_SETITEMDATA}};
    for (const auto& [ours, theirs] : kMessages) {
        if (ours == message) return theirs;
    }
    return 0;
}

LRESULT shown_text(const ComboState& state, UINT message, WPARAM wparam, LPARAM lparam) {
    if (state.edit != nullptr) return SendMessageW(state.edit, message, wparam, lparam);
    const auto list = list_of(state);
    const bool has_text = list && list->items.has(list->current);
    const std::u16string text = has_text ? list->items.at(list->current).text : u"";
    if (message == WM_GETTEXTLENGTH) return static_cast<LRESULT>(text.size());
    auto* const to = reinterpret_cast<char16_t*>(lparam);
    if (wparam == 0 || to == nullptr) return 0;
    const auto size = text.copy(to, wparam - 1);
    to[size] = 0;
    return static_cast<LRESULT>(size);
}

// What programs ask of the box. False for any other message.
bool handle_list(HWND window, ComboState& state, UINT message, WPARAM wparam, LPARAM lparam,
                 LRESULT& result) {
    if (const auto theirs = list_message(message)) {
        result = SendMessageW(state.list, theirs, wparam, lparam);
        if (message == CB_RESETCONTENT) fill_edit(state, -1);
        if (message == CB_DELETESTRING || message == CB_RESETCONTENT) repaint(window);
        return true;
    }
    switch (message) {
        case CB_SETCURSEL:
            result = set_current(window, state, static_cast<int>(wparam));
            return true;
        case CB_SELECTSTRING: {
            const auto found =
                static_cast<int>(SendMessageW(state.list, LB_FINDSTRING, wparam, lparam));
            result = found >= 0 ? set_current(window, state, found) : CB_ERR;
            return true;
        }
        case CB_SHOWDROPDOWN:
            if (wparam != 0) {
                open(window, state);
            } else {
                close(window, state, false);
            }
            result = TRUE;
            return true;
        case CB_GETDROPPEDSTATE:
            result = state.is_open ? TRUE : FALSE;
            return true;
        case CB_SETDROPPEDWIDTH:
            state.dropped_width = static_cast<int>(wparam);
            result = state.dropped_width;
            return true;
        case CB_LIMITTEXT:
            if (state.edit != nullptr) SendMessageW(state.edit, EM_LIMITTEXT, wparam, 0);
            result = TRUE;
            return true;
        case CB_GETEDITSEL:
            result =
                state.edit != nullptr ? SendMessageW(state.edit, EM_GETSEL, wparam, lparam) : 0;
            return true;
        case CB_SETEDITSEL: {
            const auto range = static_cast<WPARAM>(lparam);
            const auto end = static_cast<std::int16_t>(HIWORD(range));
            if (state.edit != nullptr) SendMessageW(state.edit, EM_SETSEL, LOWORD(range), end);
            result = state.edit != nullptr ? TRUE : CB_ERR;
            return true;
        }
        case WM_GETTEXT:
        case WM_GETTEXTLENGTH:
            result = shown_text(state, message, wparam, lparam);
            return true;
        case WM_SETTEXT:
            if (state.edit == nullptr) {
                result = CB_ERR;
                return true;
            }
            state.is_filling = true;
            result = SendMessageW(state.edit, message, wparam, lparam);
            state.is_filling = false;
            return true;
        default:
            return false;
    }
}

LRESULT dialog_code(const ComboState& state, const MSG* message) {
    LRESULT code = DLGC_WANTARROWS | DLGC_WANTCHARS;
    if (state.is_open && message != nullptr && message->message == WM_KEYDOWN &&
        (message->wParam == VK_RETURN || message->wParam == VK_ESCAPE)) {
        code |= DLGC_WANTMESSAGE;
    }
    return code;
}

void heat(HWND window, ComboState& state) {
    if (std::exchange(state.is_hot, true)) return;
    TRACKMOUSEEVENT track{sizeof track, TME_LEAVE, window, 0};
    TrackMouseEvent(&track);
    repaint(window);
}

void type(HWND window, ComboState& state, char16_t character) {
    const auto list = list_of(state);
    if (!list || state.edit != nullptr) return;
    const auto found = find_typed(*list, character, GetTickCount());
    if (found >= 0) follow_key(window, state, found);
}

void take_enabled(ComboState& state, bool is_enabled) {
    if (state.edit != nullptr) EnableWindow(state.edit, is_enabled ? TRUE : FALSE);
}

// The person's doings. False for any other.
bool handle_input(HWND window, ComboState& state, UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
        case WM_LBUTTONDOWN:
        case WM_LBUTTONDBLCLK:
            press(window, state);
            return true;
        case WM_MOUSEMOVE:
            heat(window, state);
            return true;
        case WM_MOUSELEAVE:
            state.is_hot = false;
            repaint(window);
            return true;
        case WM_MOUSEWHEEL:
            turn_wheel(window, state, GET_WHEEL_DELTA_WPARAM(wparam));
            return true;
        case WM_KEYDOWN:
            return press_key(window, state, wparam, false);
        case WM_SYSKEYDOWN:
            return press_key(window, state, wparam, true);
        case WM_CHAR:
            type(window, state, static_cast<char16_t>(wparam));
            return true;
        case WM_SETFOCUS:
            change_focus(window, state, true, reinterpret_cast<HWND>(wparam));
            if (state.edit != nullptr && IsWindow(window)) {
                SetFocus(state.edit);
                SendMessageW(state.edit, EM_SETSEL, 0, -1);
            }
            return true;
        case WM_KILLFOCUS:
            change_focus(window, state, false, reinterpret_cast<HWND>(wparam));
            return true;
        case WM_COMMAND:
            if (lparam == 0 || reinterpret_cast<HWND>(lparam) != state.edit) return false;
            hear_edit(window, state, HIWORD(wparam));
            return true;
        default:
            return false;
    }
}

}  // namespace

// The pointer has chosen. What changes is told first, as by keys.
void list_chosen(HWND combo, int index) {
    const auto state = state_of<ComboState>(combo);
    if (!state || !state->is_open) return;
    go_to(combo, *state, index);
    if (index != state->selected_before) notify_parent(combo, CBN_SELCHANGE);
    if (IsWindow(combo)) close(combo, *state, true);
}

void list_left(HWND combo) {
    const auto state = state_of<ComboState>(combo);
    if (state) close(combo, *state, false);
}

LRESULT combo_box_procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    const auto state = state_of<ComboState>(window);
    if (!state || message == WM_NCCREATE) return DefWindowProcW(window, message, wparam, lparam);
    LRESULT result = 0;
    if (handle_list(window, *state, message, wparam, lparam, result)) return result;
    switch (message) {
        case WM_CREATE:
            create(window, *state);
            return 0;
        case WM_DESTROY:
            state->is_open = false;
            if (state->list != nullptr) DestroyWindow(std::exchange(state->list, nullptr));
            break;
        case WM_PAINT:
            paint(window, *state);
            return 0;
        case WM_ERASEBKGND:
            return TRUE;
        // A style of scroll bars is meant for the list.
        case WM_NCCALCSIZE:
        case WM_NCPAINT:
            return 0;
        case WM_WINDOWPOSCHANGING: {
            auto& wanted = *reinterpret_cast<WINDOWPOS*>(lparam);
            if ((wanted.flags & SWP_NOSIZE) == 0 && state->list != nullptr) {
                wanted.cy = field_height(window, *state);
            }
            return 0;
        }
        case WM_SIZE:
            arrange(window, *state);
            repaint(window);
            return 0;
        case WM_GETDLGCODE:
            return dialog_code(*state, reinterpret_cast<const MSG*>(lparam));
        case WM_ENABLE:
            take_enabled(*state, wparam != 0);
            break;
        case WM_SETFONT:
            for (auto* const each : {state->list, state->edit}) {
                if (each != nullptr) SendMessageW(each, message, wparam, lparam);
            }
            handle_control_message(window, *state, message, wparam, lparam, result);
            take_field_height(window, *state);
            arrange(window, *state);
            return 0;
        default:
            break;
    }
    if (handle_input(window, *state, message, wparam, lparam)) return 0;
    if (handle_control_message(window, *state, message, wparam, lparam, result)) return result;
    return DefWindowProcW(window, message, wparam, lparam);
}

}  // namespace tvutil2
