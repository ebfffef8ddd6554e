// How the keyboard moves among the controls of a dialog, and what goes by a control's id.
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/window/controls/button.h"
#include "tvutil2/platform/window/controls/static.h"
#include "tvutil2/platform/window/dialogs/dialog_state.h"
#include "tvutil2/platform/window/dialogs/dialogs.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/show.h"
#include "tvutil2/platform/window/window.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace tvutil2 {
namespace {

constexpr UINT kSelect = 0x00B1;  // EM_SETSEL

// A control with what the keyboard asks of it.
struct Stop {
    HWND window;
    DWORD style;
};

// With the lock held. What holds controls of its own is passed through.
void add_controls(const Window& parent, std::vector<Stop>& stops) {
    for (const auto* child = parent.first_child; child != nullptr; child = child->next) {
        constexpr DWORD kUsable = WS_VISIBLE | WS_DISABLED;
        const bool is_holder = (child->ex_style & WS_EX_CONTROLPARENT) != 0;
        if (is_holder && (child->style & kUsable) == WS_VISIBLE) {
            add_controls(*child, stops);
        } else {
            stops.push_back({child->hwnd(), child->style});
        }
    }
}

std::vector<Stop> controls_of(HWND dialog) {
    std::vector<Stop> stops;
    const TreeLock tree;
    if (const auto* const record = tree.table.find(dialog)) add_controls(*record, stops);
    return stops;
}

bool is_usable(const Stop& stop) {
    return (stop.style & (WS_VISIBLE | WS_DISABLED)) == WS_VISIBLE;
}

LRESULT code_of(HWND control) {
    return SendMessageW(control, WM_GETDLGCODE, 0, 0);
}

std::size_t index_of(const std::vector<Stop>& stops, HWND control) {
    const auto is_it = [control](const Stop& stop) {
        return stop.window == control || IsChild(stop.window, control) != 0;
    };
    return static_cast<std::size_t>(std::find_if(stops.begin(), stops.end(), is_it) -
                                    stops.begin());
}

// The controls from the last WS_GROUP to the next one.
std::pair<std::size_t, std::size_t> group_of(const std::vector<Stop>& stops, std::size_t at) {
    auto first = at;
    while (first > 0 && (stops[first].style & WS_GROUP) == 0) --first;
    auto end = at + 1;
    while (end < stops.size() && (stops[end].style & WS_GROUP) == 0) ++end;
    return {first, end};
}

// Tab enters a group of radio buttons at the one that is checked.
HWND checked_of_group(HWND dialog, HWND control) {
    if ((code_of(control) & DLGC_RADIOBUTTON) == 0) return control;
    const auto stops = controls_of(dialog);
    const auto at = index_of(stops, control);
    if (at == stops.size()) return control;
    const auto [first, end] = group_of(stops, at);
    for (auto i = first; i < end; ++i) {
        if (is_usable(stops[i]) && (code_of(stops[i].window) & DLGC_RADIOBUTTON) != 0 &&
            SendMessageW(stops[i].window, BM_GETCHECK, 0, 0) == BST_CHECKED) {
            return stops[i].window;
        }
    }
    return control;
}

// The character behind the last "&" that isn't doubled; 0 for none.
char16_t mnemonic_of(HWND control) {
    char16_t text[512];
    const auto length = GetWindowTextW(control, text, 512);
    char16_t found = 0;
    for (int i = 0; i + 1 < length; ++i) {
        if (text[i] != u'&') continue;
        ++i;
        if (text[i] != u'&') found = to_lower(text[i]);
    }
    return found;
}

bool has_mnemonics(HWND control, LRESULT code) {
    if ((code & DLGC_STATIC) != 0) {
        const auto style = static_cast<DWORD>(GetWindowLongW(control, GWL_STYLE));
        return (code & DLGC_BUTTON) != 0 || (style & SS_NOPREFIX) == 0;
    }
    return (code & DLGC_BUTTON) != 0;
}

void choose(HWND dialog, HWND control, LRESULT code) {
    if ((code & DLGC_STATIC) != 0) {
        // A label stands for what comes behind it.
        auto* const next = GetNextDlgTabItem(dialog, control, FALSE);
        if (next != nullptr) focus_control(checked_of_group(dialog, next));
        return;
    }
    focus_control(control);
    SendMessageW(control, BM_CLICK, 0, 0);
}

bool follow_mnemonic(HWND dialog, char16_t character) {
    const auto wanted = to_lower(character);
    const auto stops = controls_of(dialog);
    const auto start = index_of(stops, GetFocus());
    for (std::size_t i = 1; i <= stops.size(); ++i) {
        const auto& stop = stops[(start + i) % stops.size()];
        if (!is_usable(stop) || mnemonic_of(stop.window) != wanted) continue;
        const auto code = code_of(stop.window);
        if (!has_mnemonics(stop.window, code)) continue;
        choose(dialog, stop.window, code);
        return true;
    }
    return false;
}

void press_default(HWND dialog) {
    auto* const focus = GetFocus();
    WORD id = IDOK;
    HWND button = nullptr;
    if (focus != nullptr && (code_of(focus) & DLGC_DEFPUSHBUTTON) != 0) {
        button = focus;
        id = static_cast<WORD>(GetDlgCtrlID(focus));
    } else {
        const auto answer = static_cast<WPARAM>(SendMessageW(dialog, DM_GETDEFID, 0, 0));
        if (HIWORD(answer) == DC_HASDEFID) id = LOWORD(answer);
        button = GetDlgItem(dialog, id);
    }
    if (button != nullptr && !IsWindowEnabled(button)) return;
    SendMessageW(dialog, WM_COMMAND, MAKEWPARAM(id, BN_CLICKED), reinterpret_cast<LPARAM>(button));
}

void move_in_group(HWND dialog, bool previous) {
    auto* const focus = GetFocus();
    auto* const next = GetNextDlgGroupItem(dialog, focus, previous ? TRUE : FALSE);
    if (next == nullptr || next == focus) return;
    focus_control(next);
    if ((code_of(next) & DLGC_RADIOBUTTON) != 0) SendMessageW(next, BM_CLICK, 0, 0);
}

void cancel(HWND dialog) {
    auto* const button = GetDlgItem(dialog, IDCANCEL);
    if (button != nullptr && !IsWindowEnabled(button)) return;
    SendMessageW(dialog, WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED),
                 reinterpret_cast<LPARAM>(button));
}

// Whether the key means something in the dialog, and has been followed.
bool follow_key(HWND dialog, const MSG& message) {
    const auto code = SendMessageW(message.hwnd, WM_GETDLGCODE, message.wParam,
                                   reinterpret_cast<LPARAM>(&message));
    if ((code & DLGC_WANTMESSAGE) != 0) return false;
    switch (message.wParam) {
        case VK_TAB: {
            if ((code & DLGC_WANTTAB) != 0 || GetKeyState(VK_CONTROL) < 0) return false;
            auto* const next = GetNextDlgTabItem(dialog, GetFocus(), GetKeyState(VK_SHIFT) < 0);
            if (next != nullptr) {
                SendMessageW(dialog, WM_NEXTDLGCTL,
                             reinterpret_cast<WPARAM>(checked_of_group(dialog, next)), TRUE);
            }
            return true;
        }
        case VK_LEFT:
        case VK_UP:
        case VK_RIGHT:
        case VK_DOWN:
            if ((code & DLGC_WANTARROWS) != 0) return false;
            move_in_group(dialog, message.wParam == VK_LEFT || message.wParam == VK_UP);
            return true;
        case VK_RETURN:
            press_default(dialog);
            return true;
        case VK_ESCAPE:
            cancel(dialog);
            return true;
        default:
            return false;
    }
}

bool follow(HWND dialog, const MSG& message) {
    if (message.message == WM_KEYDOWN) return follow_key(dialog, message);
    const auto character = static_cast<char16_t>(message.wParam);
    if (message.message == WM_SYSCHAR) return follow_mnemonic(dialog, character);
    if (message.message != WM_CHAR) return false;
    const auto code = code_of(message.hwnd);
    if ((code & (DLGC_WANTCHARS | DLGC_WANTMESSAGE)) != 0) return false;
    // What moved the focus writes nothing; a space presses buttons.
    if (character == u'\t' || character == u'\r' || character == u'\x1B') return true;
    return character != u' ' && follow_mnemonic(dialog, character);
}

}  // namespace

void focus_control(HWND control) {
    SetFocus(control);
    if ((code_of(control) & DLGC_HASSETSEL) != 0) SendMessageW(control, kSelect, 0, -1);
}

void show_default_button(HWND dialog) {
    const auto state = state_of<DialogState>(dialog);
    if (!state) return;
    auto* const focus = GetFocus();
    constexpr auto kPush = DLGC_DEFPUSHBUTTON | DLGC_UNDEFPUSHBUTTON;
    const bool is_push =
        focus != nullptr && IsChild(dialog, focus) != 0 && (code_of(focus) & kPush) != 0;
    auto* const wanted = is_push ? focus : GetDlgItem(dialog, state->default_id);
    auto* const before = std::exchange(state->default_shown, wanted);
    if (before == wanted) return;
    if (before != nullptr && IsWindow(before) && (code_of(before) & DLGC_DEFPUSHBUTTON) != 0) {
        SendMessageW(before, BM_SETSTYLE, BS_PUSHBUTTON, TRUE);
    }
    if (wanted != nullptr && (code_of(wanted) & DLGC_UNDEFPUSHBUTTON) != 0) {
        SendMessageW(wanted, BM_SETSTYLE, BS_DEFPUSHBUTTON, TRUE);
    }
}

}  // namespace tvutil2

using tvutil2::controls_of;
using tvutil2::is_usable;

HWND GetNextDlgTabItem(HWND dialog, HWND control, BOOL previous) {
    const auto stops = controls_of(dialog);
    const auto count = stops.size();
    if (count == 0) return nullptr;
    auto at = tvutil2::index_of(stops, control);
    if (at == count && previous != 0) at = 0;
    // From behind the last one the first one is next.
    const auto places = count + (at == count ? 1 : 0);
    for (std::size_t i = 1; i <= places; ++i) {
        const auto index = (at + (previous != 0 ? places - i : i)) % places;
        if (index == count) continue;
        if (is_usable(stops[index]) && (stops[index].style & WS_TABSTOP) != 0) {
            return stops[index].window;
        }
    }
    return control;
}

HWND GetNextDlgGroupItem(HWND dialog, HWND control, BOOL previous) {
    const auto stops = controls_of(dialog);
    const auto at = tvutil2::index_of(stops, control);
    if (at == stops.size()) return nullptr;
    const auto [first, end] = tvutil2::group_of(stops, at);
    const auto count = end - first;
    for (std::size_t i = 1; i < count; ++i) {
        const auto step = previous != 0 ? count - i : i;
        const auto& stop = stops[first + (at - first + step) % count];
        if (is_usable(stop) && (tvutil2::code_of(stop.window) & DLGC_STATIC) == 0) {
            return stop.window;
        }
    }
    return control;
}

BOOL IsDialogMessageW(HWND dialog, MSG* message) {
    if (message->hwnd == nullptr ||
        (message->hwnd != dialog && IsChild(dialog, message->hwnd) == 0)) {
        return FALSE;
    }
    auto* const focus = GetFocus();
    if (!tvutil2::follow(dialog, *message)) {
        TranslateMessage(message);
        DispatchMessageW(message);
    }
    if (GetFocus() != focus && IsWindow(dialog)) tvutil2::show_default_button(dialog);
    return TRUE;
}

LRESULT SendDlgItemMessageW(HWND dialog, int id, UINT message, WPARAM wparam, LPARAM lparam) {
    auto* const control = GetDlgItem(dialog, id);
    return control != nullptr ? SendMessageW(control, message, wparam, lparam) : 0;
}

BOOL SetDlgItemTextW(HWND dialog, int id, const char16_t* text) {
    auto* const control = GetDlgItem(dialog, id);
    return control != nullptr ? SetWindowTextW(control, text) : FALSE;
}

UINT GetDlgItemTextW(HWND dialog, int id, char16_t* text, int size) {
    if (text != nullptr && size > 0) *text = 0;
    auto* const control = GetDlgItem(dialog, id);
    return control != nullptr ? static_cast<UINT>(GetWindowTextW(control, text, size)) : 0;
}

BOOL CheckDlgButton(HWND dialog, int id, UINT check) {
    SendDlgItemMessageW(dialog, id, BM_SETCHECK, check, 0);
    return GetDlgItem(dialog, id) != nullptr ? TRUE : FALSE;
}

UINT IsDlgButtonChecked(HWND dialog, int id) {
    return static_cast<UINT>(SendDlgItemMessageW(dialog, id, BM_GETCHECK, 0, 0));
}

BOOL CheckRadioButton(HWND dialog, int first, int last, int checked) {
    for (int id = first; id <= last; ++id) {
        SendDlgItemMessageW(dialog, id, BM_SETCHECK, id == checked ? BST_CHECKED : BST_UNCHECKED,
                            0);
    }
    return TRUE;
}
