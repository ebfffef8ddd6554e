#include "tvutil2/platform/window/dialogs/dialog_making.h"

#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/display/monitors.h"
#include "tvutil2/platform/draw/device_context.h"
#include "tvutil2/platform/draw/text.h"
#include "tvutil2/platform/draw/theme.h"
#include "tvutil2/platform/resource/resource.h"
#include "tvutil2/platform/window/dialogs/dialog_state.h"
#include "tvutil2/platform/window/dialogs/dialogs.h"
#include "tvutil2/platform/window/dialogs/run_dialog.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/menus/menu.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/paint.h"
#include "tvutil2/platform/window/screen.h"
#include "tvutil2/platform/window/show.h"

#include <algorithm>
#include <iterator>

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

}  // namespace

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

std::optional<DialogTemplate> template_at(const void* address) {
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

HWND make_child_dialog(const DialogRun& given) {
    auto dialog = template_at(given.dialog_template);
    if (!dialog) return nullptr;
    dialog->style &= ~(WS_POPUP | WS_CAPTION | WS_SYSMENU | WS_THICKFRAME | WS_DISABLED);
    dialog->style |= WS_CHILD | WS_VISIBLE | WS_CLIPSIBLINGS | DS_CONTROL;
    dialog->ex_style = 0;
    dialog->menu = dialog->class_name = {};
    return make_dialog(given.instance, *dialog, given.parent, given.procedure, given.parameter);
}

void centre_dialog(HWND dialog) {
    RECT place{};
    if (!GetWindowRect(dialog, &place)) return;
    const auto corner = place_on_screen(place, DS_CENTER, GetParent(dialog), {});
    SetWindowPos(dialog, nullptr, corner.left, corner.top, 0, 0,
                 SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

}  // namespace tvutil2

HWND CreateDialogIndirectParamW(HINSTANCE instance, const void* dialog_template, HWND parent,
                                DLGPROC procedure, LPARAM parameter) {
    const auto dialog = tvutil2::template_at(dialog_template);
    if (!dialog) return nullptr;
    return tvutil2::make_dialog(instance, *dialog, parent, procedure, parameter);
}
