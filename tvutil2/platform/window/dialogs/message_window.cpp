#include "tvutil2/platform/window/dialogs/message_window.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/locale.h"
#include "tvutil2/platform/display/monitors.h"
#include "tvutil2/platform/draw/device_context.h"
#include "tvutil2/platform/draw/objects.h"
#include "tvutil2/platform/draw/rect.h"
#include "tvutil2/platform/draw/shapes.h"
#include "tvutil2/platform/draw/text.h"
#include "tvutil2/platform/draw/theme.h"
#include "tvutil2/platform/picture/icons.h"
#include "tvutil2/platform/process/message_box.h"
#include "tvutil2/platform/window/controls/button.h"
#include "tvutil2/platform/window/controls/clipboard_text.h"
#include "tvutil2/platform/window/controls/static.h"
#include "tvutil2/platform/window/dialogs/built_dialog.h"
#include "tvutil2/platform/window/dialogs/dialog_state.h"
#include "tvutil2/platform/window/dialogs/dialogs.h"
#include "tvutil2/platform/window/dialogs/message_words.h"
#include "tvutil2/platform/window/dialogs/run_dialog.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/paint.h"
#include "tvutil2/platform/window/screen.h"
#include "tvutil2/platform/window/window.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace tvutil2 {
namespace {

constexpr int kIconId = 20;
constexpr int kTextId = 0xFFFF;
constexpr UINT kTextFormat = DT_WORDBREAK | DT_EDITCONTROL | DT_EXPANDTABS | DT_NOPREFIX;

// As much as a screen can show, and more: laying out a million lines would take as long as reading
// them.
std::u16string readable(const char16_t* text) {
    constexpr std::size_t kMostUnits = 16384, kMostLines = 1000;
    std::u16string shown;
    std::size_t lines = 0;
    for (; *text != 0 && shown.size() < kMostUnits && lines < kMostLines; ++text) {
        shown += *text;
        if (*text == u'\n' || *text == u'\r') ++lines;
    }
    const bool is_cut_in_two = *text != 0 && (shown.back() & 0xFC00) == 0xD800;
    if (is_cut_in_two) shown.pop_back();
    return shown;
}

struct Layout {
    SIZE client{};
    RECT icon{}, text{};
    SIZE button{};
    LONG strip = 0;  // where the buttons' part begins
};

struct Box {
    const WindowMessage* message = nullptr;
    LONG strip = 0;
    int answer = 0;
    bool is_built = false;

    [[nodiscard]] bool has(int button) const {
        return std::find(message->buttons.begin(), message->buttons.end(), button) !=
               message->buttons.end();
    }
    [[nodiscard]] bool is_only(int button) const {
        return message->buttons.size() == 1 && message->buttons[0] == button;
    }
};

const char16_t* icon_name(UINT icon) {
    switch (icon) {
        case MB_ICONERROR:
            return IDI_ERROR;
        case MB_ICONQUESTION:
            return IDI_QUESTION;
        case MB_ICONWARNING:
            return IDI_WARNING;
        case MB_ICONINFORMATION:
            return IDI_INFORMATION;
        default:
            return nullptr;
    }
}

const char16_t* word_of(int button) {
    return message_word(button, LANGIDFROMLCID(GetThreadLocale()));
}

// As narrow as reads well; wider for a text that would be higher than the screen.
SIZE text_size(HDC context, const char16_t* text, const SIZE& most, UINT dpi) {
    SIZE size{};
    for (LONG width = scaled(400, dpi);; width = width * 3 / 2) {
        width = std::min(width, most.cx);
        size = text_extent(context, text, width, kTextFormat);
        if (size.cy <= most.cy / 2 || width == most.cx) break;
    }
    return {std::min(size.cx, most.cx), std::min(size.cy, most.cy)};
}

SIZE button_size(HDC context, const WindowMessage& message, UINT dpi) {
    TEXTMETRICW metrics{};
    GetTextMetricsW(context, &metrics);
    LONG width = scaled(80, dpi);
    for (const int button : message.buttons) {
        const auto word = text_extent(context, word_of(button), 0, DT_SINGLELINE);
        width = std::max<LONG>(width, word.cx + scaled(28, dpi));
    }
    return {width, std::max<LONG>(metrics.tmHeight + scaled(9, dpi), scaled(25, dpi))};
}

LONG caption_width(HDC context, const std::u16string& caption, UINT dpi) {
    return text_extent(context, caption.c_str(), 0, DT_SINGLELINE | DT_NOPREFIX).cx +
           scaled(72, dpi);
}

Layout lay_out(HDC context, const WindowMessage& message, const std::u16string& caption,
               const SIZE& most, UINT dpi) {
    Layout layout;
    const auto margin = scaled(20, dpi);
    const auto gap = scaled(8, dpi);
    const auto strip = scaled(12, dpi);
    layout.button = button_size(context, message, dpi);
    const bool has_icon = icon_name(message.icon) != nullptr;
    const auto icon = has_icon ? scaled(32, dpi) : 0;
    const auto text_left = margin + (has_icon ? icon + scaled(14, dpi) : 0);
    const auto strip_height = layout.button.cy + 2 * strip;
    const SIZE room{std::max<LONG>(most.cx - text_left - margin, 1),
                    std::max<LONG>(most.cy - 2 * margin - strip_height, 1)};
    const auto text = text_size(context, message.text, room, dpi);
    const auto height = std::max<LONG>(text.cy, icon);
    // A short text stands beside the middle of the icon.
    const auto top = margin + (height - text.cy) / 2;
    layout.text = {text_left, top, text_left + text.cx, top + text.cy};
    layout.icon = {margin, margin, margin + icon, margin + icon};
    layout.strip = height + 2 * margin;
    const auto count = static_cast<LONG>(message.buttons.size());
    const auto row = count * layout.button.cx + (count - 1) * gap + 2 * strip;
    const auto width = std::max<LONG>(layout.text.right + margin + scaled(8, dpi), row);
    layout.client = {std::max(width, std::min(caption_width(context, caption, dpi), most.cx)),
                     layout.strip + strip_height};
    return layout;
}

void add_icon(HWND dialog, const WindowMessage& message, const RECT& place) {
    const auto* const name = icon_name(message.icon);
    if (name == nullptr) return;
    auto* const icon = LoadImageW(nullptr, name, IMAGE_ICON, place.right - place.left,
                                  place.bottom - place.top, LR_SHARED);
    auto* const sign =
        add_control(dialog, u"Static", u"", SS_ICON | SS_REALSIZEIMAGE, place, kIconId);
    if (sign != nullptr) {
        SendMessageW(sign, STM_SETIMAGE, IMAGE_ICON, reinterpret_cast<LPARAM>(icon));
    }
}

void add_buttons(HWND dialog, const WindowMessage& message, const Layout& layout, UINT dpi) {
    const auto gap = scaled(8, dpi);
    const auto strip = scaled(12, dpi);
    const auto count = static_cast<LONG>(message.buttons.size());
    auto left = layout.client.cx - strip - count * layout.button.cx - (count - 1) * gap;
    const auto top = layout.strip + strip;
    for (std::size_t i = 0; i < message.buttons.size(); ++i) {
        const bool is_default = i == message.default_button;
        const RECT place{left, top, left + layout.button.cx, top + layout.button.cy};
        auto* const button = add_control(
            dialog, u"Button", word_of(message.buttons[i]),
            WS_TABSTOP | (i == 0 ? WS_GROUP : 0) | (is_default ? BS_DEFPUSHBUTTON : BS_PUSHBUTTON),
            place, message.buttons[i]);
        if (is_default && button != nullptr) {
            SendMessageW(dialog, DM_SETDEFID, static_cast<WPARAM>(message.buttons[i]), 0);
            SetFocus(button);
        }
        left += layout.button.cx + gap;
    }
}

void build(HWND dialog, Box& box) {
    const auto& message = *box.message;
    const auto dpi = GetDpiForWindow(dialog);
    const std::u16string caption = message.caption != nullptr ? message.caption : u"Error";
    MONITORINFO monitor{};
    monitor.cbSize = sizeof monitor;
    auto* const near = message.owner != nullptr ? message.owner : dialog;
    GetMonitorInfoW(MonitorFromWindow(near, MONITOR_DEFAULTTOPRIMARY), &monitor);
    const auto style = static_cast<DWORD>(GetWindowLongW(dialog, GWL_STYLE));
    const auto ex_style = static_cast<DWORD>(GetWindowLongW(dialog, GWL_EXSTYLE));
    RECT frame{};
    AdjustWindowRectExForDpi(&frame, style, FALSE, ex_style, dpi);
    const auto& work = monitor.rcWork;
    const SIZE most{(work.right - work.left) * 7 / 8 - (frame.right - frame.left),
                    (work.bottom - work.top) * 7 / 8 - (frame.bottom - frame.top)};

    auto* const context = GetDC(dialog);
    auto* const before =
        SelectObject(context, reinterpret_cast<HFONT>(SendMessageW(dialog, WM_GETFONT, 0, 0)));
    const auto layout = lay_out(context, message, caption, most, dpi);
    SelectObject(context, before);
    ReleaseDC(dialog, context);

    box.strip = layout.strip;
    box.is_built = true;
    SetWindowTextW(dialog, caption.c_str());
    SetWindowPos(dialog, nullptr, 0, 0, layout.client.cx + frame.right - frame.left,
                 layout.client.cy + frame.bottom - frame.top,
                 SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    centre_dialog(dialog);
    add_icon(dialog, message, layout.icon);
    add_control(dialog, u"Static", message.text, SS_NOPREFIX | SS_EDITCONTROL, layout.text,
                kTextId);
    add_buttons(dialog, message, layout, dpi);
}

LRESULT erase(HWND dialog, HDC context, const Box& box) {
    RECT area{};
    GetClientRect(dialog, &area);
    const auto bottom = std::exchange(area.bottom, box.strip);
    FillRect(context, &area, GetSysColorBrush(COLOR_WINDOW));
    area = {area.left, box.strip, area.right, bottom};
    FillRect(context, &area, GetSysColorBrush(COLOR_3DFACE));
    return TRUE;
}

// The answer to a command of the dialog; 0 for none.
int answer_to(const Box& box, int command) {
    if (box.has(command)) return command;
    return command == IDCANCEL && box.is_only(IDOK) ? IDOK : 0;
}

void end(HWND dialog, Box& box, int answer) {
    if (answer == 0) return;
    box.answer = answer;
    EndDialog(dialog, answer);
}

// What is to be read, as it has always been pasted into mails to those who help.
std::u16string to_be_copied(const WindowMessage& message) {
    const std::u16string line = std::u16string(27, u'-') + u"\r\n";
    const std::u16string caption = message.caption != nullptr ? message.caption : u"Error";
    auto text = line + caption + u"\r\n" + line + message.text + u"\r\n" + line;
    for (const int button : message.buttons) {
        for (const char16_t* word = word_of(button); *word != 0; ++word) {
            if (*word != u'&') text += *word;
        }
        text += u"   ";
    }
    return text + u"\r\n" + line;
}

bool asks_to_copy(const MSG& message) {
    return message.message == WM_KEYDOWN && message.wParam == 'C' && GetKeyState(VK_CONTROL) < 0;
}

INT_PTR procedure(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam) {
    if (message == WM_INITDIALOG) {
        SetWindowLongPtrW(dialog, DWLP_USER, lparam);
        build(dialog, *reinterpret_cast<Box*>(lparam));
        return FALSE;
    }
    auto* const box = reinterpret_cast<Box*>(GetWindowLongPtrW(dialog, DWLP_USER));
    if (box == nullptr) return FALSE;
    switch (message) {
        case WM_ERASEBKGND:
            SetWindowLongPtrW(dialog, DWLP_MSGRESULT,
                              erase(dialog, reinterpret_cast<HDC>(wparam), *box));
            return TRUE;
        case WM_CTLCOLORSTATIC: {
            auto* const context = reinterpret_cast<HDC>(wparam);
            SetTextColor(context, GetSysColor(COLOR_WINDOWTEXT));
            return reinterpret_cast<INT_PTR>(GetSysColorBrush(COLOR_WINDOW));
        }
        case WM_COMMAND:
            end(dialog, *box, answer_to(*box, LOWORD(wparam)));
            return TRUE;
        case WM_CLOSE:
            // Nobody can see it any more, and nobody will answer.
            if (!is_on_display(dialog)) end(dialog, *box, box->message->refusing);
            return FALSE;
        default:
            return FALSE;
    }
}

}  // namespace

std::optional<int> ask_in_window(const WindowMessage& message) {
    if (display() == nullptr) return std::nullopt;
    if (message.owner != nullptr && !IsWindow(message.owner)) {
        SetLastError(ERROR_INVALID_WINDOW_HANDLE);
        return 0;
    }
    const auto text = readable(message.text);
    auto shown = message;
    shown.text = text.c_str();
    Box box{&shown};
    // What can't be cancelled has no button to close it.
    const bool is_closable = box.has(IDCANCEL) || box.is_only(IDOK);
    const auto dialog = empty_template(WS_POPUP | WS_CAPTION | DS_MODALFRAME | DS_CENTER |
                                       (is_closable ? WS_SYSMENU : 0));
    const auto pump = [&](HWND window) {
        return pump_dialog(window, [&](const MSG& typed) {
            return asks_to_copy(typed) && put_clipboard_text(window, to_be_copied(shown));
        });
    };
    const auto result = run_dialog(
        {nullptr, &dialog, message.owner, procedure, reinterpret_cast<LPARAM>(&box)}, pump);
    if (result < 0 && !box.is_built) return std::nullopt;
    return box.answer != 0 ? box.answer : message.refusing;
}

}  // namespace tvutil2
