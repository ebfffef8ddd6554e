// Dialogs: what they do by themselves, how they are run, and their end.
#include "tvutil2/platform/window/dialogs/dialogs.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/draw/shapes.h"
#include "tvutil2/platform/window/dialogs/dialog_making.h"
#include "tvutil2/platform/window/dialogs/dialog_state.h"
#include "tvutil2/platform/window/dialogs/disabled_owner.h"
#include "tvutil2/platform/window/dialogs/run_dialog.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/menus/menu_loop.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/paint.h"
#include "tvutil2/platform/window/show.h"
#include "tvutil2/platform/window/window.h"

#include <utility>

namespace tvutil2 {
namespace {

// The rest of what the dialog's procedure leaves.

bool answers_itself(UINT message) {
    return (message >= WM_CTLCOLORMSGBOX && message <= WM_CTLCOLORSTATIC) ||
           message == WM_COMPAREITEM || message == WM_INITDIALOG;
}

LRESULT erase(HWND dialog, HDC context) {
    auto* const brush = reinterpret_cast<HBRUSH>(SendMessageW(dialog, WM_CTLCOLORDLG,
                                                              reinterpret_cast<WPARAM>(context),
                                                              reinterpret_cast<LPARAM>(dialog)));
    RECT client{};
    GetClientRect(dialog, &client);
    if (brush != nullptr) FillRect(context, &client, brush);
    return brush != nullptr ? TRUE : FALSE;
}

void restore_focus(HWND dialog, const DialogState& state) {
    auto* const last = state.last_focus;
    if (last != nullptr && IsChild(dialog, last) != 0 && IsWindowVisible(last)) {
        SetFocus(last);
    } else if (auto* const first = GetNextDlgTabItem(dialog, nullptr, FALSE)) {
        focus_control(first);
    } else if (GetFocus() != dialog) {
        SetFocus(dialog);
    }
    show_default_button(dialog);
}

void ask_to_cancel(HWND dialog) {
    auto* const button = GetDlgItem(dialog, IDCANCEL);
    if (button != nullptr && !IsWindowEnabled(button)) return;
    PostMessageW(dialog, WM_COMMAND, MAKEWPARAM(IDCANCEL, 0), reinterpret_cast<LPARAM>(button));
}

LRESULT handle(HWND dialog, DialogState& state, UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
        case WM_ERASEBKGND:
            return erase(dialog, reinterpret_cast<HDC>(wparam));
        case WM_SETFONT:
            state.set_font = reinterpret_cast<HFONT>(wparam);
            return 0;
        case WM_GETFONT:
            return reinterpret_cast<LRESULT>(state.set_font);
        case WM_ACTIVATE:
            if (LOWORD(wparam) == WA_INACTIVE) {
                keep_focus(dialog, state);
            } else {
                restore_focus(dialog, state);
            }
            return 0;
        case WM_SETFOCUS:
            restore_focus(dialog, state);
            return 0;
        case WM_NEXTDLGCTL: {
            auto* const next = LOWORD(static_cast<WPARAM>(lparam)) != 0
                                   ? reinterpret_cast<HWND>(wparam)
                                   : GetNextDlgTabItem(dialog, GetFocus(), wparam != 0);
            if (next != nullptr) focus_control(next);
            show_default_button(dialog);
            return 0;
        }
        case DM_GETDEFID:
            return state.default_id != 0
                       ? static_cast<LRESULT>(MAKELONG(state.default_id, DC_HASDEFID))
                       : 0;
        case DM_SETDEFID:
            state.default_id = LOWORD(wparam);
            show_default_button(dialog);
            return TRUE;
        case WM_CLOSE:
            ask_to_cancel(dialog);
            return 0;
        default:
            return DefWindowProcW(dialog, message, wparam, lparam);
    }
}

// The owner can be used again, and the dialog can't be seen any more.
void release_owner(HWND dialog, DialogState& state) {
    if (auto* const owner = std::exchange(state.disabled_owner, nullptr)) {
        EnableWindow(owner, TRUE);
    }
    const auto flags = SWP_HIDEWINDOW | SWP_NOSIZE | SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE;
    SetWindowPos(dialog, nullptr, 0, 0, 0, 0, flags);
}

// The same when a handler has raised something in the dialog's loop.
struct ReleasedOwner {
    HWND dialog;
    DialogState& state;
    ~ReleasedOwner() {
        if (state.disabled_owner == nullptr) return;
        quietly([this] { release_owner(dialog, state); });
    }
};

// Runs it until it has ended, or its window has gone.
INT_PTR run(HWND dialog, const DialogState& state, const std::function<bool()>& pump) {
    if (!state.has_ended) ShowWindow(dialog, SW_SHOWNORMAL);
    while (!state.has_ended && IsWindow(dialog)) {
        if (!pump()) break;
    }
    return state.has_ended ? state.result : -1;
}

}  // namespace

INT_PTR run_dialog(const DialogRun& given, const std::function<bool(HWND)>& pump) {
    auto dialog = template_at(given.procedure != nullptr ? given.dialog_template : nullptr);
    if (!dialog) return -1;
    dialog->style &= ~(WS_VISIBLE | WS_CHILD);
    dialog->style |= WS_POPUP;
    auto* const owner = given.parent != nullptr ? GetAncestor(given.parent, GA_ROOT) : nullptr;
    if (given.parent != nullptr && owner == nullptr) return -1;
    DisabledOwner disabled(owner);
    auto* const window =
        make_dialog(given.instance, *dialog, owner, given.procedure, given.parameter);
    if (window == nullptr) return -1;
    EndUnlessMade end(window);
    const auto state = state_of<DialogState>(window);
    state->disabled_owner = std::exchange(disabled.window, nullptr);
    const ReleasedOwner released{window, *state};
    const auto result = run(window, *state, [&] { return pump(window); });
    release_owner(window, *state);
    if (owner != nullptr && IsWindow(owner) && GetActiveWindow() == window) SetActiveWindow(owner);
    return result;
}

bool pump_dialog(HWND dialog, const std::function<bool(const MSG&)>& takes) {
    MSG message;
    if (GetMessageW(&message, nullptr, 0, 0) <= 0) {
        PostQuitMessage(static_cast<int>(message.wParam));
        return false;
    }
    if (takes && takes(message)) return true;
    if (!IsDialogMessageW(dialog, &message)) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    return true;
}

void keep_focus(HWND dialog, DialogState& state) {
    auto* const focus = GetFocus();
    if (focus != nullptr && IsChild(dialog, focus) != 0) state.last_focus = focus;
}

bool is_dialog(HWND window) {
    return has_state<DialogState>(window);
}

}  // namespace tvutil2

using tvutil2::DialogState;
using tvutil2::state_of;

INT_PTR DialogBoxIndirectParamW(HINSTANCE instance, const void* dialog_template, HWND parent,
                                DLGPROC procedure, LPARAM parameter) {
    return tvutil2::run_dialog({instance, dialog_template, parent, procedure, parameter},
                               [](HWND window) { return tvutil2::pump_dialog(window); });
}

BOOL EndDialog(HWND dialog, INT_PTR result) {
    if (!tvutil2::is_dialog(dialog)) {
        return tvutil2::fail_with(ERROR_INVALID_WINDOW_HANDLE);
    }
    const auto state = state_of<DialogState>(dialog);
    if (std::exchange(state->has_ended, true)) return TRUE;
    state->result = result;
    tvutil2::release_owner(dialog, *state);
    // Keys reach nothing any more that could close a menu that is open.
    tvutil2::leave_menus();
    // A loop that sleeps looks again.
    PostMessageW(dialog, WM_NULL, 0, 0);
    return TRUE;
}

LRESULT DefDlgProcW(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam) {
    SetWindowLongPtrW(dialog, DWLP_MSGRESULT, 0);
    const auto procedure = reinterpret_cast<DLGPROC>(GetWindowLongPtrW(dialog, DWLP_DLGPROC));
    if (procedure != nullptr) {
        const auto handled = procedure(dialog, message, wparam, lparam);
        if (tvutil2::answers_itself(message)) {
            if (handled != 0) return handled;
        } else if (handled != 0) {
            return GetWindowLongPtrW(dialog, DWLP_MSGRESULT);
        }
    }
    const auto state = state_of<DialogState>(dialog);
    if (!state) return DefWindowProcW(dialog, message, wparam, lparam);
    return tvutil2::handle(dialog, *state, message, wparam, lparam);
}

BOOL MapDialogRect(HWND dialog, RECT* rect) {
    if (!tvutil2::is_dialog(dialog)) return tvutil2::fail_with(ERROR_INVALID_WINDOW_HANDLE);
    const auto unit = state_of<DialogState>(dialog)->unit;
    *rect = {MulDiv(rect->left, unit.cx, 4), MulDiv(rect->top, unit.cy, 8),
             MulDiv(rect->right, unit.cx, 4), MulDiv(rect->bottom, unit.cy, 8)};
    return TRUE;
}
