#include "tvutil2/platform/window/dialogs/built_dialog.h"

#include "tvutil2/platform/draw/text.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/window.h"

namespace tvutil2 {

HWND add_control(HWND dialog, const char16_t* class_name, const char16_t* text, DWORD style,
                 const RECT& place, int id, DWORD ex_style) {
    auto* const control =
        CreateWindowExW(ex_style, class_name, text, style | WS_CHILD | WS_VISIBLE, place.left,
                        place.top, place.right - place.left, place.bottom - place.top, dialog,
                        reinterpret_cast<HMENU>(static_cast<std::uintptr_t>(id)), nullptr, nullptr);
    if (control != nullptr) {
        SendMessageW(control, WM_SETFONT,
                     static_cast<WPARAM>(SendMessageW(dialog, WM_GETFONT, 0, 0)), FALSE);
    }
    return control;
}

SIZE text_extent(HDC context, const char16_t* text, LONG width, UINT format) {
    RECT area{0, 0, width, 0};
    DrawTextW(context, text, -1, &area, format | DT_CALCRECT);
    return {area.right, area.bottom};
}

}  // namespace tvutil2
