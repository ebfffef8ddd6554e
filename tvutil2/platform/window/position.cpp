// The change of a window's place, size, order and visibility, step by step.
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/window/endpoint.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/input.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/screen.h"
#include "tvutil2/platform/window/update.h"

#include <algorithm>

namespace tvutil2 {
namespace {

constexpr int kMaxSize = 32767;
constexpr UINT kSame = SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER;

bool is_valid_neighbour(const TreeLock& tree, const Window& window, HWND after) {
    if (after == HWND_TOP || after == HWND_BOTTOM || after == HWND_TOPMOST ||
        after == HWND_NOTOPMOST) {
        return true;
    }
    const auto* const sibling = tree.find(after);
    if (sibling == nullptr) return false;
    return sibling->parent == window.parent || fail_with(ERROR_INVALID_PARAMETER);
}

// Says in the flags what stays as it is.
void settle(const Window& window, WINDOWPOS& wanted) {
    const auto& rect = window.rect;
    if ((wanted.flags & SWP_NOMOVE) != 0) {
        wanted.x = rect.left;
        wanted.y = rect.top;
    }
    if ((wanted.flags & SWP_NOSIZE) != 0) {
        wanted.cx = rect.right - rect.left;
        wanted.cy = rect.bottom - rect.top;
    }
    wanted.x = std::clamp(wanted.x, -kMaxSize, kMaxSize);
    wanted.y = std::clamp(wanted.y, -kMaxSize, kMaxSize);
    wanted.cx = std::clamp(wanted.cx, 0, kMaxSize);
    wanted.cy = std::clamp(wanted.cy, 0, kMaxSize);
    if (wanted.x == rect.left && wanted.y == rect.top) wanted.flags |= SWP_NOMOVE;
    if (wanted.cx == rect.right - rect.left && wanted.cy == rect.bottom - rect.top) {
        wanted.flags |= SWP_NOSIZE;
    }
    const bool is_visible = (window.style & WS_VISIBLE) != 0;
    wanted.flags &= ~(is_visible ? SWP_SHOWWINDOW : SWP_HIDEWINDOW);
}

// The client area of a window at its new place, as the window wants it, from the window's corner.
RECT ask_client(const WINDOWPOS& wanted, const RECT& old_rect, const RECT& old_client) {
    WINDOWPOS copy = wanted;
    NCCALCSIZE_PARAMS asked{};
    asked.rgrc[0] = {wanted.x, wanted.y, wanted.x + wanted.cx, wanted.y + wanted.cy};
    asked.rgrc[1] = old_rect;
    asked.rgrc[2] = {old_rect.left + old_client.left, old_rect.top + old_client.top,
                     old_rect.left + old_client.right, old_rect.top + old_client.bottom};
    asked.lppos = &copy;
    SendMessageW(wanted.hwnd, WM_NCCALCSIZE, TRUE, reinterpret_cast<LPARAM>(&asked));
    const auto& given = asked.rgrc[0];
    const auto inside = [](LONG value, LONG corner, LONG size) {
        return std::clamp<LONG>(value - corner, 0, size);
    };
    RECT client{inside(given.left, wanted.x, wanted.cx), inside(given.top, wanted.y, wanted.cy),
                inside(given.right, wanted.x, wanted.cx),
                inside(given.bottom, wanted.y, wanted.cy)};
    client.right = std::max(client.left, client.right);
    client.bottom = std::max(client.top, client.bottom);
    return client;
}

// Carries it out and says in the flags what changed. False when the window has gone.
bool apply(WINDOWPOS& wanted, const RECT& client) {
    const TreeLock tree;
    auto* const window = tree.table.find(wanted.hwnd);
    if (window == nullptr) return false;
    const auto old = window->client;
    const bool keeps_place =
        (wanted.flags & SWP_NOMOVE) != 0 && old.left == client.left && old.top == client.top;
    const bool keeps_size = old.right - old.left == client.right - client.left &&
                            old.bottom - old.top == client.bottom - client.top;
    if (keeps_place) wanted.flags |= SWP_NOCLIENTMOVE;
    if (keeps_size) wanted.flags |= SWP_NOCLIENTSIZE;
    const auto before = placement_of(*window);
    window->rect = {wanted.x, wanted.y, wanted.x + wanted.cx, wanted.y + wanted.cy};
    window->client = client;
    if ((window->style & (WS_MINIMIZE | WS_MAXIMIZE)) == 0) window->normal = window->rect;
    if ((wanted.flags & SWP_NOZORDER) == 0 &&
        !reorder(tree.table, *window, wanted.hwndInsertAfter)) {
        wanted.flags |= SWP_NOZORDER;
    }
    if ((wanted.flags & SWP_SHOWWINDOW) != 0) window->style |= WS_VISIBLE;
    if ((wanted.flags & SWP_HIDEWINDOW) != 0) window->style &= ~WS_VISIBLE;
    if ((wanted.flags & SWP_NOREDRAW) == 0) {
        update_after(*window, before, (wanted.flags & SWP_NOZORDER) == 0,
                     (wanted.flags & SWP_FRAMECHANGED) != 0);
    }
    return true;
}

// A top-level window on a display that is put in front is the active one from then on.
void come_forward(HWND window) {
    {
        const TreeLock tree;
        const auto* const record = tree.table.find(window);
        if (record == nullptr || record->top == nullptr ||
            record->queue != ThreadQueue::current_or_null() ||
            (record->ex_style & WS_EX_NOACTIVATE) != 0) {
            return;
        }
    }
    if (GetActiveWindow() != window) SetActiveWindow(window);
}

}  // namespace
}  // namespace tvutil2

BOOL SetWindowPos(HWND window, HWND after, int x, int y, int width, int height, UINT flags) {
    WINDOWPOS wanted{window, after, x, y, width, height, flags & 0x7FF};
    RECT rect{};
    RECT client{};
    {
        const tvutil2::TreeLock tree;
        const auto* const record = tree.find(window);
        if (record == nullptr) return FALSE;
        if ((flags & SWP_NOZORDER) == 0 && !tvutil2::is_valid_neighbour(tree, *record, after)) {
            return FALSE;
        }
    }
    if ((flags & SWP_NOSENDCHANGING) == 0) {
        SendMessageW(window, WM_WINDOWPOSCHANGING, 0, reinterpret_cast<LPARAM>(&wanted));
        wanted.hwnd = window;
    }
    bool is_known_to_others = false;
    {
        const tvutil2::TreeLock tree;
        const auto* const record = tree.find(window);
        if (record == nullptr) return FALSE;
        tvutil2::settle(*record, wanted);
        rect = record->rect;
        client = record->client;
        is_known_to_others = tvutil2::is_for_others(*record);
    }
    if ((wanted.flags & SWP_NOSIZE) == 0 || (wanted.flags & SWP_FRAMECHANGED) != 0) {
        client = tvutil2::ask_client(wanted, rect, client);
    }
    if (!tvutil2::apply(wanted, client)) return FALSE;
    constexpr UINT kChanges = SWP_SHOWWINDOW | SWP_HIDEWINDOW | SWP_FRAMECHANGED;
    if ((wanted.flags & tvutil2::kSame) == tvutil2::kSame && (wanted.flags & kChanges) == 0) {
        if ((flags & SWP_NOACTIVATE) == 0) tvutil2::come_forward(window);
        return TRUE;
    }
    const bool shows = (wanted.flags & SWP_SHOWWINDOW) != 0;
    tvutil2::tell_display(window, shows && (wanted.flags & SWP_NOACTIVATE) == 0);
    if ((wanted.flags & SWP_NOACTIVATE) == 0) tvutil2::come_forward(window);
    if ((wanted.flags & SWP_HIDEWINDOW) != 0) tvutil2::leave_focus(window);
    if (is_known_to_others && (wanted.flags & (SWP_SHOWWINDOW | SWP_HIDEWINDOW)) != 0) {
        tvutil2::publish_windows();
    }
    SendMessageW(window, WM_WINDOWPOSCHANGED, 0, reinterpret_cast<LPARAM>(&wanted));
    return TRUE;
}

BOOL MoveWindow(HWND window, int x, int y, int width, int height, BOOL repaint) {
    return SetWindowPos(window, nullptr, x, y, width, height,
                        SWP_NOZORDER | SWP_NOACTIVATE | (repaint != 0 ? 0U : SWP_NOREDRAW));
}
