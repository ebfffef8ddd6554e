#include "tvutil2/platform/window/geometry.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/draw/rect.h"
#include "tvutil2/platform/window/system_metrics.h"
#include "tvutil2/platform/window/window_states.h"

#include <algorithm>

namespace tvutil2 {

bool is_child(const Window& window) {
    return (window.style & (WS_CHILD | WS_POPUP)) == WS_CHILD;
}

Window& top_level_of(Window& window) {
    auto* top = &window;
    while (!is_top_level(*top)) top = top->parent;
    return *top;
}

POINT corner_of(const Window& window) {
    POINT corner{window.rect.left, window.rect.top};
    for (const auto* up = window.parent; up->handle != 0; up = up->parent) {
        corner.x += up->rect.left + up->client.left;
        corner.y += up->rect.top + up->client.top;
    }
    return corner;
}

POINT client_corner_of(const Window& window) {
    const auto corner = corner_of(window);
    return {corner.x + window.client.left, corner.y + window.client.top};
}

UINT dpi_of(const Window& window) {
    const auto* top = &window;
    while (!is_top_level(*top)) top = top->parent;
    return top->dpi;
}

bool is_shown(const Window& window) {
    for (const auto* each = &window; each->handle != 0; each = each->parent) {
        if ((each->style & WS_VISIBLE) == 0) return false;
    }
    return true;
}

namespace {

// Where a window's client area is on the screen; false with ERROR_INVALID_WINDOW_HANDLE.
bool find_client_corner(const TreeLock& tree, HWND window, POINT& corner) {
    corner = {};
    if (window == nullptr) return true;
    const auto* const record = tree.find(window);
    if (record == nullptr) return false;
    corner = client_corner_of(*record);
    return true;
}

// `point` counts from where the windows' rects do.
Window* deepest_at(Window& parent, POINT point, std::span<const HWND> without) {
    for (auto* each = parent.first_child; each != nullptr; each = each->next) {
        if ((each->style & (WS_VISIBLE | WS_DISABLED | WS_MINIMIZE)) != WS_VISIBLE ||
            PtInRect(&each->rect, point) == 0 ||
            std::find(without.begin(), without.end(), each->hwnd()) != without.end()) {
            continue;
        }
        const POINT inside{point.x - each->rect.left, point.y - each->rect.top};
        if (PtInRect(&each->client, inside) == 0) return each;
        auto* const child =
            deepest_at(*each, {inside.x - each->client.left, inside.y - each->client.top}, without);
        return child != nullptr ? child : each;
    }
    return nullptr;
}

}  // namespace

HWND deepest_window(Window& window, POINT point, std::span<const HWND> without) {
    const auto corner = client_corner_of(window);
    const POINT inside{point.x - corner.x, point.y - corner.y};
    const auto& client = window.client;
    const RECT area{0, 0, client.right - client.left, client.bottom - client.top};
    auto* const child =
        PtInRect(&area, inside) != 0 ? deepest_at(window, inside, without) : nullptr;
    return child != nullptr ? child->hwnd() : window.hwnd();
}

}  // namespace tvutil2

using tvutil2::TreeLock;

BOOL GetWindowRect(HWND window, RECT* rect) {
    const TreeLock tree;
    const auto* const record = tree.find(window);
    if (record == nullptr) return FALSE;
    const auto corner = tvutil2::corner_of(*record);
    *rect = {corner.x, corner.y, corner.x + record->rect.right - record->rect.left,
             corner.y + record->rect.bottom - record->rect.top};
    return TRUE;
}

BOOL GetClientRect(HWND window, RECT* rect) {
    const TreeLock tree;
    const auto* const record = tree.find(window);
    if (record == nullptr) return FALSE;
    const auto& client = record->client;
    *rect = {0, 0, client.right - client.left, client.bottom - client.top};
    return TRUE;
}

int MapWindowPoints(HWND from, HWND to, POINT* points, UINT count) {
    POINT start{};
    POINT end{};
    {
        const TreeLock tree;
        if (!tvutil2::find_client_corner(tree, from, start)) return 0;
        if (!tvutil2::find_client_corner(tree, to, end)) return 0;
    }
    const POINT way{start.x - end.x, start.y - end.y};
    for (UINT i = 0; i < count; ++i) {
        points[i].x += way.x;
        points[i].y += way.y;
    }
    return static_cast<int>(MAKELONG(static_cast<WORD>(way.x), static_cast<WORD>(way.y)));
}

BOOL ClientToScreen(HWND window, POINT* point) {
    const TreeLock tree;
    POINT corner{};
    if (window == nullptr || !tvutil2::find_client_corner(tree, window, corner)) return FALSE;
    point->x += corner.x;
    point->y += corner.y;
    return TRUE;
}

BOOL ScreenToClient(HWND window, POINT* point) {
    const TreeLock tree;
    POINT corner{};
    if (window == nullptr || !tvutil2::find_client_corner(tree, window, corner)) return FALSE;
    point->x -= corner.x;
    point->y -= corner.y;
    return TRUE;
}

BOOL AdjustWindowRectExForDpi(RECT* rect, DWORD style, BOOL has_menu, DWORD ex_style, UINT dpi) {
    const auto frame = tvutil2::frame_thickness(style, ex_style, dpi);
    rect->left -= frame.left;
    rect->top -= frame.top + (has_menu != 0 ? GetSystemMetricsForDpi(SM_CYMENU, dpi) : 0);
    rect->right += frame.right;
    rect->bottom += frame.bottom;
    return TRUE;
}

BOOL AdjustWindowRectEx(RECT* rect, DWORD style, BOOL has_menu, DWORD ex_style) {
    return AdjustWindowRectExForDpi(rect, style, has_menu, ex_style,
                                    tvutil2::monitors().front().dpi);
}

HWND WindowFromPoint(POINT point) {
    const TreeLock tree;
    const auto* const found = tvutil2::deepest_at(tree.table.root(), point, {});
    return found != nullptr ? found->hwnd() : nullptr;
}

HWND ChildWindowFromPoint(HWND parent, POINT point) {
    const TreeLock tree;
    const auto* const record = tree.find(parent);
    if (record == nullptr) return nullptr;
    const auto& client = record->client;
    const RECT area{0, 0, client.right - client.left, client.bottom - client.top};
    if (PtInRect(&area, point) == 0) {
        return nullptr;
    }
    const auto* child = record->first_child;
    while (child != nullptr && PtInRect(&child->rect, point) == 0) child = child->next;
    return child != nullptr ? child->hwnd() : parent;
}

HMONITOR MonitorFromWindow(HWND window, DWORD flags) {
    RECT rect{};
    if (!GetWindowRect(window, &rect)) {
        return flags == MONITOR_DEFAULTTONULL ? nullptr
                                              : MonitorFromPoint({}, MONITOR_DEFAULTTOPRIMARY);
    }
    // An empty window is somewhere, too.
    if (rect.right == rect.left) ++rect.right;
    if (rect.bottom == rect.top) ++rect.bottom;
    return MonitorFromRect(&rect, flags);
}

UINT GetDpiForWindow(HWND window) {
    const TreeLock tree;
    const auto* const record = tree.find(window);
    return record != nullptr ? tvutil2::dpi_of(*record) : 0;
}
