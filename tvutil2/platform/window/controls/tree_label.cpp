#include "tvutil2/platform/window/controls/tree_label.h"

#include "tvutil2/platform/draw/theme.h"
#include "tvutil2/platform/window/controls/control.h"
#include "tvutil2/platform/window/controls/edit.h"
#include "tvutil2/platform/window/controls/tree_view.h"
#include "tvutil2/platform/window/dialogs/dialogs.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/window.h"

#include <algorithm>

namespace tvutil2 {
namespace {

void end(HWND edit, bool gives_up) {
    SendMessageW(GetParent(edit), TVM_ENDEDITLABELNOW, gives_up ? TRUE : FALSE, 0);
}

LRESULT procedure(HWND edit, UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
        case WM_GETDLGCODE:
            // Enter and Esc end the name and not the dialog.
            return edit_procedure(edit, message, wparam, lparam) | DLGC_WANTALLKEYS;
        case WM_KEYDOWN:
            if (wparam != VK_RETURN && wparam != VK_ESCAPE) break;
            end(edit, wparam == VK_ESCAPE);
            return 0;
        case WM_CHAR:
            if (wparam == u'\r' || wparam == u'\x1B' || wparam == u'\t') return 0;
            break;
        case WM_KILLFOCUS: {
            const auto result = edit_procedure(edit, message, wparam, lparam);
            end(edit, false);
            return result;
        }
        default:
            break;
    }
    return edit_procedure(edit, message, wparam, lparam);
}

}  // namespace

RECT label_edit_place(HWND tree, RECT name) {
    const auto dpi = GetDpiForWindow(tree);
    name.left -= scaled(3, dpi);
    return name;
}

HWND open_label_edit(HWND tree, const RECT& place, const std::u16string& text, HFONT font) {
    auto* const edit = CreateWindowExW(0, u"Edit", text.c_str(),
                                       WS_CHILD | WS_VISIBLE | WS_BORDER | ES_AUTOHSCROLL,
                                       place.left, place.top, place.right - place.left,
                                       place.bottom - place.top, tree, nullptr, nullptr, nullptr);
    if (edit == nullptr) return nullptr;
    SendMessageW(edit, WM_SETFONT, reinterpret_cast<WPARAM>(font), FALSE);
    SetWindowLongPtrW(edit, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&procedure));
    SetFocus(edit);
    SendMessageW(edit, EM_SETSEL, 0, -1);
    return edit;
}

}  // namespace tvutil2
