// Dialogs: from a template to windows, what they do by themselves, and their end.
#include "tvutil2/platform/window/dialogs/dialogs.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/display/monitors.h"
#include "tvutil2/platform/draw/device_context.h"
#include "tvutil2/platform/draw/shapes.h"
#include "tvutil2/platform/draw/text.h"
#include "tvutil2/platform/draw/theme.h"
#include "tvutil2/platform/resource/resource.h"
#include "tvutil2/platform/window/dialogs/dialog_state.h"
#include "tvutil2/platform/window/dialogs/dialog_template.h"
#include "tvutil2/platform/window/dialogs/disabled_owner.h"
#include "tvutil2/platform/window/dialogs/run_dialog.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/menus/menu.h"
#include "tvutil2/platform/window/menus/menu_loop.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/paint.h"
#include "tvutil2/platform/window/screen.h"
#include "tvutil2/platform/window/show.h"
#include "tvutil2/platform/window/window.h"

#include <algorithm>
#include <utility>

namespace tvutil2 {
namespace {

constexpr WORD kButtonCode = 0x80;

HFONT font_of(const DialogTemplate& dialog, UINT dpi) {
    auto description = interface_font(dpi);
    if (dialog.points > 0 && dialog.points != 0x7FFF) {
        description.lfHeight = -MulDiv(dialog.points, static_cast<int>(dpi), 72);
        description.lfWeight = dialog.weight;
        description.lfItalic = dialog.is_italic ? 1 : 0;
        const auto length = dialog.face.copy(description.lfFaceName, LF_FACESIZE - 1);
        description.lfFaceName[length] = 0;
    }
    return CreateFontIndirectW(&description);
}

// Four units across and eight down are the average width and the height of a character.
SIZE unit_of(HFONT font, UINT dpi) {
    constexpr const char16_t* kLetters = u"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    auto* const screen = GetDC(nullptr);
    auto* const before = SelectObject(screen, font);
    SIZE size{};
    TEXTMETRICW metrics{};
    const bool is_measured = GetTextExtentPoint32W(screen, kLetters, 52, &size) != 0 &&
                             GetTextMetricsW(screen, &metrics) != 0;
    SelectObject(screen, before);
    ReleaseDC(nullptr, screen);
    if (!is_measured)
        return {MulDiv(7, static_cast<int>(dpi), 96), MulDiv(15, static_cast<int>(dpi), 96)};
    return {std::max<LONG>((size.cx / 26 + 1) / 2, 1), std::max<LONG>(metrics.tmHeight, 1)};
}

RECT in_pixels(const SIZE& unit, int x, int y, int width, int height) {
    const auto across = [&](int value) { return MulDiv(value, unit.cx, 4); };
    const auto down = [&](int value) { return MulDiv(value, unit.cy, 8); };
    return {across(x), down(y), across(x) + across(width), down(y) + down(height)};
}

// In the middle of the owner, or of the monitor, or where the template says; all of it where the
// person can see it.
RECT place_on_screen(RECT place, DWORD style, HWND owner, const POINT& wanted) {
    RECT around{};
    const bool has_owner =
        owner != nullptr && IsWindowVisible(owner) && GetWindowRect(owner, &around);
    if (!has_owner) around = monitor_at({0, 0, 1, 1}).work;
    const auto work = monitor_at(around).work;
    const SIZE size{place.right - place.left, place.bottom - place.top};
    POINT corner{around.left + (around.right - around.left - size.cx) / 2,
                 around.top + (around.bottom - around.top - size.cy) / 2};
    if ((style & DS_CENTER) == 0) {
        POINT origin{};
        if (has_owner && (style & DS_ABSALIGN) == 0) ClientToScreen(owner, &origin);
        corner = {origin.x + wanted.x, origin.y + wanted.y};
    }
    corner.x = std::max(work.left, std::min<LONG>(corner.x, work.right - size.cx));
    corner.y = std::max(work.top, std::min<LONG>(corner.y, work.bottom - size.cy));
    return {corner.x, corner.y, corner.x + size.cx, corner.y + size.cy};
}

const char16_t* class_of_code(WORD code) {
    constexpr const char16_t* kNames[] = {u"Button",  u"Edit",      u"Static",
                                          u"ListBox", u"ScrollBar", u"ComboBox"};
    const auto index = static_cast<std::size_t>(code - kButtonCode);
    return code >= kButtonCode && index < std::size(kNames) ? kNames[index] : nullptr;
}

bool make_control(HWND dialog, const DialogState& state, const TemplateItem& item,
                  HINSTANCE instance) {
    const auto* const name =
        item.class_name.id != 0 ? class_of_code(item.class_name.id) : item.class_name.text.c_str();
    const auto place = in_pixels(state.unit, item.x, item.y, item.width, item.height);
    const auto* const title = item.title.id != 0 ? u"" : item.title.text.c_str();
    auto* const control = CreateWindowExW(
        item.ex_style | WS_EX_NOPARENTNOTIFY, name, title, item.style | WS_CHILD, place.left,
        place.top, place.right - place.left, place.bottom - place.top, dialog,
        reinterpret_cast<HMENU>(static_cast<std::uintptr_t>(item.id)), instance,
        item.data.empty() ? nullptr
                          : const_cast<void*>(static_cast<const void*>(item.data.data())));
    if (control == nullptr) return false;
    if (state.font != nullptr) {
        SendMessageW(control, WM_SETFONT, reinterpret_cast<WPARAM>(state.font), FALSE);
    }
    return IsWindow(dialog) != 0;
}

// Ends a dialog that couldn't be made as a whole, on every way out.
class EndUnlessMade {
  public:
    explicit EndUnlessMade(HWND dialog) : m_dialog(dialog) {}
    ~EndUnlessMade() {
        if (m_dialog == nullptr || !IsWindow(m_dialog)) return;
        const auto error = GetLastError();
        DestroyWindow(m_dialog);
        SetLastError(error);
    }
    EndUnlessMade(const EndUnlessMade&) = delete;
    EndUnlessMade& operator=(const EndUnlessMade&) = delete;
    void keep() { m_dialog = nullptr; }

  private:
    HWND m_dialog;
};

// The menu bar that a template names, which goes with the window; null where there is none.
HMENU template_menu(const DialogTemplate& dialog, HINSTANCE instance) {
    const bool has_menu = dialog.menu.id != 0 || !dialog.menu.text.empty();
    if (!has_menu || (dialog.style & WS_CHILD) != 0) return nullptr;
    return LoadMenuW(instance, dialog.menu.pointer());
}

HWND make_frame(const DialogTemplate& dialog, HINSTANCE instance, HWND parent, HFONT font,
                UINT dpi) {
    const auto unit = unit_of(font, dpi);
    auto style = dialog.style & ~WS_VISIBLE;
    auto ex_style = dialog.ex_style;
    if ((style & DS_MODALFRAME) != 0) ex_style |= WS_EX_DLGMODALFRAME;
    if ((style & DS_CONTROL) != 0) {
        style &= ~(WS_CAPTION | WS_SYSMENU);
        ex_style |= WS_EX_CONTROLPARENT;
    }
    auto place = in_pixels(unit, dialog.x, dialog.y, dialog.width, dialog.height);
    const POINT wanted{place.left, place.top};
    auto* const menu = template_menu(dialog, instance);
    AdjustWindowRectExForDpi(&place, style, menu != nullptr ? TRUE : FALSE, ex_style, dpi);
    if ((style & WS_CHILD) == 0) place = place_on_screen(place, style, parent, wanted);
    const bool has_class = dialog.class_name.id != 0 || !dialog.class_name.text.empty();
    auto* const window = CreateWindowExW(
        ex_style, has_class ? dialog.class_name.pointer() : WC_DIALOG, dialog.title.text.c_str(),
        style, place.left, place.top, place.right - place.left, place.bottom - place.top, parent,
        menu, instance, nullptr);
    const auto state = window != nullptr ? state_of<DialogState>(window) : nullptr;
    if (!state) {
        DeleteObject(font);
        if (IsMenu(menu)) DestroyMenu(menu);
        return nullptr;
    }
    state->font = state->set_font = font;
    state->unit = unit;
    return window;
}

void keep_focus(HWND dialog, DialogState& state) {
    auto* const focus = GetFocus();
    if (focus != nullptr && IsChild(dialog, focus) != 0) state.last_focus = focus;
}

// The first button that calls itself the default one.
void find_default_button(HWND dialog, DialogState& state) {
    auto* each = GetWindow(dialog, GW_CHILD);
    for (; each != nullptr; each = GetWindow(each, GW_HWNDNEXT)) {
        if ((SendMessageW(each, WM_GETDLGCODE, 0, 0) & DLGC_DEFPUSHBUTTON) == 0) continue;
        state.default_id = static_cast<WORD>(GetDlgCtrlID(each));
        state.default_shown = each;
        return;
    }
}

HWND make_dialog(HINSTANCE instance, const DialogTemplate& dialog, HWND parent, DLGPROC procedure,
                 LPARAM parameter) {
    if (display() == nullptr) {
        SetLastError(ERROR_REQUIRES_INTERACTIVE_WINDOWSTATION);
        return nullptr;
    }
    const auto dpi = parent != nullptr ? GetDpiForWindow(parent) : monitors().front().dpi;
    if (dpi == 0) return nullptr;
    auto* const window = make_frame(dialog, instance, parent, font_of(dialog, dpi), dpi);
    if (window == nullptr) return nullptr;
    EndUnlessMade end(window);
    SetWindowLongPtrW(window, DWLP_DLGPROC, reinterpret_cast<LONG_PTR>(procedure));
    const auto state = state_of<DialogState>(window);
    SendMessageW(window, WM_SETFONT, reinterpret_cast<WPARAM>(state->font), FALSE);
    for (const auto& item : dialog.items) {
        if (make_control(window, *state, item, instance)) continue;
        if ((dialog.style & DS_NOFAILCREATE) == 0 || !IsWindow(window)) return nullptr;
    }
    find_default_button(window, *state);
    auto* const first = GetNextDlgTabItem(window, nullptr, FALSE);
    if (SendMessageW(window, WM_INITDIALOG, reinterpret_cast<WPARAM>(first), parameter) != 0 &&
        IsWindow(window)) {
        // The procedure may have shown, hidden and disabled controls.
        auto* const now = GetNextDlgTabItem(window, nullptr, FALSE);
        state->last_focus = now;
        if ((dialog.style & WS_CHILD) == 0 && now != nullptr) focus_control(now);
    } else if (IsWindow(window)) {
        keep_focus(window, *state);  // which the procedure has given
    }
    if (!IsWindow(window)) return nullptr;
    show_default_button(window);
    if ((dialog.style & WS_VISIBLE) != 0 && !state->has_ended) ShowWindow(window, SW_SHOWNORMAL);
    end.keep();
    return IsWindow(window) ? window : nullptr;
}

std::optional<DialogTemplate> read_at(const void* address) {
    if (address != nullptr) {
        constexpr std::size_t kMost = 0x10000;
        const auto known = bytes_in_resource(address);
        auto dialog = read_dialog_template(
            {static_cast<const std::byte*>(address), known != 0 ? known : kMost});
        if (dialog) return dialog;
    }
    SetLastError(address != nullptr ? ERROR_INVALID_DATA : ERROR_INVALID_PARAMETER);
    return std::nullopt;
}

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
    auto dialog = read_at(given.procedure != nullptr ? given.dialog_template : nullptr);
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
    const auto result = run(window, *state, [&] { return pump(window); });
    release_owner(window, *state);
    if (owner != nullptr && IsWindow(owner) && GetActiveWindow() == window) SetActiveWindow(owner);
    return result;
}

HWND make_child_dialog(const DialogRun& given) {
    auto dialog = read_at(given.dialog_template);
    if (!dialog) return nullptr;
    dialog->style &= ~(WS_POPUP | WS_CAPTION | WS_SYSMENU | WS_THICKFRAME | WS_DISABLED);
    dialog->style |= WS_CHILD | WS_VISIBLE | WS_CLIPSIBLINGS | DS_CONTROL;
    dialog->ex_style = 0;
    dialog->menu = dialog->class_name = {};
    return make_dialog(given.instance, *dialog, given.parent, given.procedure, given.parameter);
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

void centre_dialog(HWND dialog) {
    RECT place{};
    if (!GetWindowRect(dialog, &place)) return;
    const auto corner = place_on_screen(place, DS_CENTER, GetParent(dialog), {});
    SetWindowPos(dialog, nullptr, corner.left, corner.top, 0, 0,
                 SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

bool is_dialog(HWND window) {
    return has_state<DialogState>(window);
}

}  // namespace tvutil2

using tvutil2::DialogState;
using tvutil2::state_of;

HWND CreateDialogIndirectParamW(HINSTANCE instance, const void* dialog_template, HWND parent,
                                DLGPROC procedure, LPARAM parameter) {
    const auto dialog = tvutil2::read_at(dialog_template);
    if (!dialog) return nullptr;
    return tvutil2::make_dialog(instance, *dialog, parent, procedure, parameter);
}

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
