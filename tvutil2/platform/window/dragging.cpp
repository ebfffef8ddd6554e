// Moving and sizing by the person: a loop of its own until the button goes up.
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/held_capture.h"
#include "tvutil2/platform/window/hit_test.h"
#include "tvutil2/platform/window/input.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/mouse.h"
#include "tvutil2/platform/window/window.h"
#include "tvutil2/platform/window/window_states.h"

#include <algorithm>

namespace tvutil2 {
namespace {

bool is_one_of(LRESULT hit, LRESULT a, LRESULT b, LRESULT c) {
    return hit == a || hit == b || hit == c;
}

// The edges that go with the pointer keep the opposite ones where they are.
RECT dragged(const RECT& start, POINT way, LRESULT hit, const MINMAXINFO& limits) {
    auto rect = start;
    if (hit == HTCAPTION) {
        return {rect.left + way.x, rect.top + way.y, rect.right + way.x, rect.bottom + way.y};
    }
    const bool is_left = is_one_of(hit, HTLEFT, HTTOPLEFT, HTBOTTOMLEFT);
    const bool is_right = is_one_of(hit, HTRIGHT, HTTOPRIGHT, HTBOTTOMRIGHT);
    const bool is_top = is_one_of(hit, HTTOP, HTTOPLEFT, HTTOPRIGHT);
    const bool is_bottom = is_one_of(hit, HTBOTTOM, HTBOTTOMLEFT, HTBOTTOMRIGHT);
    SIZE size{rect.right - rect.left, rect.bottom - rect.top};
    if (is_left) size.cx -= way.x;
    if (is_right) size.cx += way.x;
    if (is_top) size.cy -= way.y;
    if (is_bottom) size.cy += way.y;
    size = within(limits, size);
    (is_left ? rect.left : rect.right) = is_left ? rect.right - size.cx : rect.left + size.cx;
    (is_top ? rect.top : rect.bottom) = is_top ? rect.bottom - size.cy : rect.top + size.cy;
    return rect;
}

WPARAM side_of(LRESULT hit) {
    return hit == HTCAPTION ? 9 : static_cast<WPARAM>(hit - HTLEFT + 1);
}

bool ends_drag(const MSG& message) {
    return message.message == WM_LBUTTONUP ||
           (message.message == WM_KEYDOWN && message.wParam == VK_ESCAPE);
}

}  // namespace

void drag_window(HWND window, LRESULT hit) {
    RECT start{};
    if (!GetWindowRect(window, &start)) return;
    const auto from = input_state().message_point;
    const auto limits = limits_of(window);
    const bool is_child_window =
        (static_cast<DWORD>(GetWindowLongW(window, GWL_STYLE)) & WS_CHILD) != 0;
    const HeldCapture capture(window);
    SendMessageW(window, WM_ENTERSIZEMOVE, 0, 0);
    MSG message{};
    while (capture.is_held()) {
        if (GetMessageW(&message, nullptr, 0, 0) <= 0) {
            PostQuitMessage(static_cast<int>(message.wParam));
            break;
        }
        const bool is_cancelled = message.message == WM_KEYDOWN && message.wParam == VK_ESCAPE;
        if (message.message == WM_MOUSEMOVE || message.message == WM_LBUTTONUP || is_cancelled) {
            const POINT way =
                is_cancelled ? POINT{} : POINT{message.pt.x - from.x, message.pt.y - from.y};
            auto rect = dragged(start, way, hit, limits);
            SendMessageW(window, hit == HTCAPTION ? WM_MOVING : WM_SIZING, side_of(hit),
                         reinterpret_cast<LPARAM>(&rect));
            POINT corner{rect.left, rect.top};
            if (is_child_window) ScreenToClient(GetParent(window), &corner);
            SetWindowPos(window, nullptr, corner.x, corner.y, rect.right - rect.left,
                         rect.bottom - rect.top, SWP_NOZORDER | SWP_NOACTIVATE);
            if (ends_drag(message)) break;
            continue;
        }
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    capture.release();
    SendMessageW(window, WM_EXITSIZEMOVE, 0, 0);
}

}  // namespace tvutil2
