#include "tvutil2/platform/window/default_paint.h"
#include "tvutil2/platform/window/endpoint.h"
#include "tvutil2/platform/window/input.h"
#include "tvutil2/platform/window/screen.h"
#include "tvutil2/platform/window/window.h"
#include "tvutil2/platform/window/window_icons.h"
#include "tvutil2/platform/window/window_states.h"

#include <algorithm>
#include <string>

namespace {

LRESULT set_text(HWND window, const char16_t* text) {
    std::u16string copy(text != nullptr ? text : u"");
    bool is_known_to_others = false;
    {
        const tvutil2::TreeLock tree;
        auto* const record = tree.find(window);
        if (record == nullptr) return FALSE;
        is_known_to_others = tvutil2::is_for_others(*record);
        record->text.swap(copy);
        is_known_to_others = is_known_to_others || tvutil2::is_for_others(*record);
    }
    if (is_known_to_others) tvutil2::publish_windows();
    tvutil2::repaint_frame(window);
    tvutil2::tell_display(window, false);
    return TRUE;
}

LRESULT get_text(HWND window, std::size_t size, char16_t* buffer) {
    if (size == 0 || buffer == nullptr) return 0;
    const tvutil2::TreeLock tree;
    const auto* const record = tree.find(window);
    const auto length = record != nullptr ? record->text.copy(buffer, size - 1) : 0;
    buffer[length] = 0;
    return static_cast<LRESULT>(length);
}

LRESULT text_length(HWND window) {
    const tvutil2::TreeLock tree;
    const auto* const record = tree.find(window);
    return record != nullptr ? static_cast<LRESULT>(record->text.size()) : 0;
}

}  // namespace

LRESULT DefWindowProcW(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
        case WM_NCCREATE:
            return set_text(window, reinterpret_cast<const CREATESTRUCTW*>(lparam)->lpszName);
        case WM_SETTEXT:
            return set_text(window, reinterpret_cast<const char16_t*>(lparam));
        case WM_GETTEXT:
            return get_text(window, wparam, reinterpret_cast<char16_t*>(lparam));
        case WM_GETTEXTLENGTH:
            return text_length(window);
        case WM_CLOSE:
            DestroyWindow(window);
            return 0;
        case WM_QUERYENDSESSION:
        case WM_QUERYOPEN:
            return TRUE;
        default:
            break;
    }
    LRESULT result = 0;
    if (tvutil2::handle_icon_message(window, message, wparam, lparam, result) ||
        tvutil2::handle_frame_message(window, message, lparam, result) ||
        tvutil2::handle_paint_message(window, message, wparam, result)) {
        return result;
    }
    tvutil2::handle_input_message(window, message, wparam, lparam, result);
    return result;
}
