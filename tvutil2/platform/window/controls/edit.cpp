#include "tvutil2/platform/window/controls/edit.h"

#include "tvutil2/platform/window/controls/edit_input.h"
#include "tvutil2/platform/window/controls/edit_menu.h"
#include "tvutil2/platform/window/controls/edit_rows.h"
#include "tvutil2/platform/window/dialogs/dialogs.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/mouse.h"
#include "tvutil2/platform/window/paint.h"
#include "tvutil2/platform/window/window.h"

#include <algorithm>

namespace tvutil2 {
namespace {

constexpr char16_t kBullet = u'\u25CF';
constexpr std::size_t kNoLimit = 0x7FFFFFFE;

const char16_t* text_at(LPARAM lparam) {
    return lparam != 0 ? reinterpret_cast<const char16_t*>(lparam) : u"";
}

void select(EditInput& edit, int start, int end) {
    const auto& text = edit.state().text;
    const auto size = text.size();
    if (start < 0) return edit.select(text.selection().end, text.selection().end, false);
    const auto from = std::min(static_cast<std::size_t>(start), size);
    const auto to = end < 0 ? size : std::min(static_cast<std::size_t>(end), size);
    edit.select(std::min(from, to), std::max(from, to), false);
}

LRESULT selection_of(const EditText& text, WPARAM start, LPARAM end) {
    const auto range = text.selection();
    if (start != 0) *reinterpret_cast<DWORD*>(start) = static_cast<DWORD>(range.start);
    if (end != 0) *reinterpret_cast<DWORD*>(end) = static_cast<DWORD>(range.end);
    if (range.end > 0xFFFF) return -1;
    return MAKELPARAM(static_cast<WORD>(range.start), static_cast<WORD>(range.end));
}

LRESULT copy_text(std::u16string_view text, std::size_t room, char16_t* to) {
    if (to == nullptr || room == 0) return 0;
    const auto size = text.copy(to, room - 1);
    to[size] = 0;
    return as_result(size);
}

void set_password(EditInput& edit, HWND window, char16_t password) {
    edit.state().password = password;
    edit.state().is_laid_out = false;
    repaint(window);
}

void set_read_only(HWND window, bool is_read_only) {
    const auto style = style_of(window);
    const auto fresh = is_read_only ? style | ES_READONLY : style & ~ES_READONLY;
    SetWindowLongW(window, GWL_STYLE, static_cast<LONG>(fresh));
    repaint(window);
}

// Which keys a dialog leaves to it.
LRESULT dialog_code(const EditInput& edit, const MSG* message) {
    LRESULT code = DLGC_HASSETSEL | DLGC_WANTCHARS | DLGC_WANTARROWS;
    if (!edit.is_multiline()) return code;
    if (message == nullptr) return code | DLGC_WANTALLKEYS;
    const bool wants_return = edit.has_style(ES_WANTRETURN) || GetKeyState(VK_CONTROL) < 0;
    const bool is_return = message->message == WM_KEYDOWN && message->wParam == VK_RETURN;
    if (is_return && wants_return) code |= DLGC_WANTMESSAGE;
    return code;
}

// The messages that ask for and change the text. False for any other.
bool handle_text(EditInput& edit, HWND window, UINT message, WPARAM wparam, LPARAM lparam,
                 LRESULT& result) {
    auto& state = edit.state();
    switch (message) {
        case WM_GETTEXT:
            result = copy_text(state.text.text(), wparam, reinterpret_cast<char16_t*>(lparam));
            return true;
        case WM_GETTEXTLENGTH:
            result = as_result(state.text.size());
            return true;
        case WM_SETTEXT:
            edit.set_text(text_at(lparam), true);
            result = TRUE;
            return true;
        case EM_REPLACESEL:
            edit.put(text_at(lparam), EditText::Kind::other);
            if (wparam == 0) state.text.forget_steps();
            return true;
        case EM_GETSEL:
            result = selection_of(state.text, wparam, lparam);
            return true;
        case EM_SETSEL:
            edit.ready();
            select(edit, static_cast<int>(wparam), static_cast<int>(lparam));
            result = 1;
            return true;
        case EM_LIMITTEXT:
            state.limit = wparam == 0 ? kNoLimit : std::min<std::size_t>(wparam, kNoLimit);
            return true;
        case EM_GETLIMITTEXT:
            result = as_result(state.limit);
            return true;
        case EM_GETMODIFY:
            result = state.is_modified ? 1 : 0;
            return true;
        case EM_SETMODIFY:
            state.is_modified = wparam != 0;
            return true;
        case EM_CANUNDO:
            result = state.text.can_undo() ? 1 : 0;
            return true;
        case EM_UNDO:
        case WM_UNDO:
            edit.undo(false);
            result = 1;
            return true;
        case EM_EMPTYUNDOBUFFER:
            state.text.forget_steps();
            return true;
        case WM_COPY:
            edit.copy();
            return true;
        case WM_CUT:
            edit.cut();
            return true;
        case WM_PASTE:
            edit.paste();
            return true;
        case WM_CLEAR:
            edit.erase_selection();
            return true;
        case EM_SETREADONLY:
            set_read_only(window, wparam != 0);
            result = 1;
            return true;
        case EM_SETPASSWORDCHAR:
            set_password(edit, window, static_cast<char16_t>(wparam));
            return true;
        case EM_GETPASSWORDCHAR:
            result = state.password;
            return true;
        case EM_SETCUEBANNER:
            state.cue = text_at(lparam);
            state.cue_stays = wparam != 0;
            repaint(window);
            result = edit.is_multiline() ? FALSE : TRUE;
            return true;
        case EM_GETCUEBANNER:
            copy_text(state.cue, static_cast<std::size_t>(std::max<LPARAM>(lparam, 0)),
                      reinterpret_cast<char16_t*>(wparam));
            result = TRUE;
            return true;
        default:
            return false;
    }
}

void create(EditInput& edit, const CREATESTRUCTW& given) {
    auto& state = edit.state();
    state.field.color_message = WM_CTLCOLOREDIT;
    if (edit.has_style(ES_PASSWORD) && !edit.is_multiline()) state.password = kBullet;
    edit.reset_format();
    edit.set_text(given.lpszName, false);
}

void change_focus(EditInput& edit, HWND window, bool has_focus) {
    auto& state = edit.state();
    edit.ready();
    state.text.end_step();
    edit.show_caret(has_focus);
    if (!has_focus) edit.end_drag();
    repaint(window);
    notify_parent(window, has_focus ? EN_SETFOCUS : EN_KILLFOCUS);
}

void resize(EditInput& edit, HWND window) {
    edit.reset_format();
    auto& state = edit.state();
    if (edit.wraps()) state.is_laid_out = false;
    if (state.is_laid_out) {
        edit.scroll_to_row(static_cast<std::ptrdiff_t>(state.first_row));
        edit.tell_scroll_bars();
    }
    repaint(window);
}

// The person's doings and the window's. False for any other.
bool handle_window(EditInput& edit, HWND window, UINT message, WPARAM wparam, LPARAM lparam,
                   LRESULT& result) {
    const POINT point{GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam)};
    switch (message) {
        case WM_CREATE:
            create(edit, *reinterpret_cast<const CREATESTRUCTW*>(lparam));
            return true;
        case WM_PAINT:
            // What a procedure in front of this one has painted stays: laying out repaints.
            if (!GetUpdateRect(window, nullptr, FALSE)) return true;
            edit.ready();
            edit.paint();
            return true;
        case WM_ERASEBKGND:
            result = TRUE;
            return true;
        case WM_SIZE:
            resize(edit, window);
            return true;
        case WM_SETFOCUS:
        case WM_KILLFOCUS:
            change_focus(edit, window, message == WM_SETFOCUS);
            return true;
        case WM_GETDLGCODE:
            result = dialog_code(edit, reinterpret_cast<const MSG*>(lparam));
            return true;
        case WM_KEYDOWN:
            edit.ready();
            return edit.press(wparam);
        case WM_CHAR:
            edit.ready();
            edit.type(static_cast<char16_t>(wparam));
            return true;
        case WM_LBUTTONDOWN:
        case WM_LBUTTONDBLCLK:
            edit.ready();
            edit.press_button(point, message == WM_LBUTTONDBLCLK, (wparam & MK_SHIFT) != 0);
            return true;
        case WM_MOUSEMOVE:
            edit.drag(point);
            return true;
        case WM_LBUTTONUP:
        case WM_CAPTURECHANGED:
            edit.end_drag();
            return true;
        case WM_CONTEXTMENU:
            edit.end_drag();
            show_edit_menu(edit, window, lparam);
            return true;
        case WM_TIMER:
            return edit.tick(wparam);
        case WM_VSCROLL:
        case WM_HSCROLL:
            edit.ready();
            edit.scroll(LOWORD(wparam), message == WM_VSCROLL);
            return true;
        case WM_MOUSEWHEEL:
            edit.ready();
            return edit.turn_wheel(GET_WHEEL_DELTA_WPARAM(wparam));
        default:
            return false;
    }
}

}  // namespace

LRESULT edit_procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    const auto state = state_of<EditState>(window);
    if (!state || message == WM_NCCREATE) return DefWindowProcW(window, message, wparam, lparam);
    LRESULT result = 0;
    EditInput edit(window, *state);
    const bool is_plain = edit.is_read_only() || edit.has_style(WS_DISABLED);
    state->field.color_message = is_plain ? WM_CTLCOLORSTATIC : WM_CTLCOLOREDIT;
    if (handle_field_message(window, state->field, message, wparam, lparam, result) ||
        handle_text(edit, window, message, wparam, lparam, result) ||
        handle_edit_rows(edit, window, message, wparam, lparam, result) ||
        handle_window(edit, window, message, wparam, lparam, result)) {
        return result;
    }
    if (message == WM_SETFONT) {
        state->is_laid_out = false;
        edit.reset_format();
    }
    if (handle_control_message(window, *state, message, wparam, lparam, result)) return result;
    return DefWindowProcW(window, message, wparam, lparam);
}

}  // namespace tvutil2
