// What programs ask of a combo box: its items, its text.
#include "tvutil2/platform/window/controls/combo_box.h"
#include "tvutil2/platform/window/controls/combo_state.h"
#include "tvutil2/platform/window/controls/edit.h"
#include "tvutil2/platform/window/controls/list_box.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/window.h"

#include <string>
#include <utility>

namespace tvutil2 {
namespace {

LRESULT choose_in_combo(HWND window, ComboState& state, int index) {
    const auto list = list_of(state);
    if (!list || (index != -1 && !list->items.has(index))) {
        go_to_in_combo(window, state, -1);
        return CB_ERR;
    }
    go_to_in_combo(window, state, index);
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

}  // namespace

bool handle_combo_list(HWND window, ComboState& state, UINT message, WPARAM wparam, LPARAM lparam,
                       LRESULT& result) {
    if (const auto theirs = list_message(message)) {
        result = SendMessageW(state.list, theirs, wparam, lparam);
        if (message == CB_RESETCONTENT) fill_combo_edit(state, -1);
        if (message == CB_DELETESTRING || message == CB_RESETCONTENT) repaint(window);
        return true;
    }
    switch (message) {
        case CB_SETCURSEL:
            result = choose_in_combo(window, state, static_cast<int>(wparam));
            return true;
        case CB_SELECTSTRING: {
            const auto found =
                static_cast<int>(SendMessageW(state.list, LB_FINDSTRING, wparam, lparam));
            result = found >= 0 ? choose_in_combo(window, state, found) : CB_ERR;
            return true;
        }
        case CB_SHOWDROPDOWN:
            if (wparam != 0) {
                open_combo(window, state);
            } else {
                close_combo(window, state, false);
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

}  // namespace tvutil2
