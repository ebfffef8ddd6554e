#include "tvutil2/platform/window/controls/label_edit.h"

#include "tvutil2/platform/draw/theme.h"
#include "tvutil2/platform/window/controls/control.h"
#include "tvutil2/platform/window/controls/edit.h"
#include "tvutil2/platform/window/dialogs/dialogs.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/window.h"

#include <algorithm>

namespace tvutil2 {
namespace {

void end_edit(HWND edit, bool gives_up) {
    const auto message = static_cast<UINT>(GetWindowLongPtrW(edit, GWLP_USERDATA));
    SendMessageW(GetParent(edit), message, gives_up ? TRUE : FALSE, 0);
}

LRESULT procedure(HWND edit, UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
        case WM_GETDLGCODE:
            // Enter and Esc end the name and not the dialog.
            return edit_procedure(edit, message, wparam, lparam) | DLGC_WANTALLKEYS;
        case WM_KEYDOWN:
            if (wparam != VK_RETURN && wparam != VK_ESCAPE) break;
            end_edit(edit, wparam == VK_ESCAPE);
            return 0;
        case WM_CHAR:
            if (wparam == u'\r' || wparam == u'\x1B' || wparam == u'\t') return 0;
            break;
        case WM_KILLFOCUS: {
            const auto result = edit_procedure(edit, message, wparam, lparam);
            end_edit(edit, false);
            return result;
        }
        default:
            break;
    }
    return edit_procedure(edit, message, wparam, lparam);
}

}  // namespace

RECT label_edit_place(HWND owner, RECT name) {
    const auto dpi = GetDpiForWindow(owner);
    name.left -= scaled(3, dpi);
    return name;
}

HWND open_label_edit(HWND owner, UINT end, const RECT& place, const std::u16string& text,
                     HFONT font) {
    auto* const edit = CreateWindowExW(0, u"Edit", text.c_str(),
                                       WS_CHILD | WS_VISIBLE | WS_BORDER | ES_AUTOHSCROLL,
                                       place.left, place.top, place.right - place.left,
                                       place.bottom - place.top, owner, nullptr, nullptr, nullptr);
    if (edit == nullptr) return nullptr;
    SendMessageW(edit, WM_SETFONT, reinterpret_cast<WPARAM>(font), FALSE);
    SetWindowLongPtrW(edit, GWLP_USERDATA, end);
    SetWindowLongPtrW(edit, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&procedure));
    SetFocus(edit);
    SendMessageW(edit, EM_SETSEL, 0, -1);
    return edit;
}

std::u16string close_label_edit(HWND edit) {
    auto text = text_of(edit);
    if (GetFocus() == edit) SetFocus(GetParent(edit));
    DestroyWindow(edit);
    return text;
}

}  // namespace tvutil2
