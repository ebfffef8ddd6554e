#include "tvutil2/platform/window/menus/menu_bar.h"

#include "tvutil2/platform/draw/device_context.h"
#include "tvutil2/platform/draw/look.h"
#include "tvutil2/platform/draw/objects.h"
#include "tvutil2/platform/draw/rect.h"
#include "tvutil2/platform/draw/shapes.h"
#include "tvutil2/platform/draw/text.h"
#include "tvutil2/platform/window/default_paint.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/menus/menu_loop.h"
#include "tvutil2/platform/window/menus/menu_window.h"
#include "tvutil2/platform/window/mouse.h"
#include "tvutil2/platform/window/system_metrics.h"
#include "tvutil2/platform/window/window.h"
#include "tvutil2/platform/window/window_states.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace tvutil2 {
namespace {

// In pixels at 96 dots an inch.
constexpr int kBarEdge = 4;  // beside the first item
constexpr int kMargin = 9;   // beside each text
constexpr int kInset = 2;    // above and below what marks an item

// What a bar is laid out by.
struct BarFacts {
    HMENU menu = nullptr;
    RECT client{};  // on the screen
    UINT dpi = 96;
};

// The item under the pointer, which a thread has one of.
struct HotItem {
    HWND window = nullptr;
    int item = -1;
};
thread_local HotItem t_hot;

void change_hot_item(const HotItem& fresh) {
    const auto before = std::exchange(t_hot, fresh);
    if (before.window == fresh.window && before.item == fresh.item) return;
    if (before.window != nullptr) repaint_frame(before.window);
    if (fresh.window != nullptr && fresh.window != before.window) repaint_frame(fresh.window);
}

std::optional<BarFacts> facts_of(HWND window) {
    const TreeLock tree;
    const auto* const record = tree.table.find(window);
    if (record == nullptr) return std::nullopt;
    const auto corner = corner_of(*record);
    return BarFacts{menu_of(*record), moved(record->client, {corner.x, corner.y}), dpi_of(*record)};
}

void paint_item(HDC context, const MenuItem& item, RECT place, UINT dpi, bool is_selected) {
    const bool is_plain = theme().mode != ThemeMode::high_contrast;
    auto ink = GetSysColor(item.is_disabled() ? COLOR_GRAYTEXT : COLOR_MENUTEXT);
    if (is_selected) {
        const auto inset = scaled(kInset, dpi);
        const RECT mark{place.left, place.top + inset, place.right, place.bottom - inset};
        draw_round_area(context, mark, 4,
                        is_plain ? theme().palette.hot_row : GetSysColor(COLOR_HIGHLIGHT));
        if (!is_plain && !item.is_disabled()) ink = GetSysColor(COLOR_HIGHLIGHTTEXT);
    }
    SetTextColor(context, ink);
    DrawTextW(context, item.text.data(), static_cast<int>(item.text.size()), &place,
              DT_SINGLELINE | DT_CENTER | DT_VCENTER);
}

}  // namespace

HMENU menu_of(const Window& window) {
    const bool is_number = (window.style & WS_CHILD) != 0;
    return is_number ? nullptr : reinterpret_cast<HMENU>(window.id);
}

MenuBar lay_out_menu_bar(const std::vector<MenuItem>& items, int width, UINT dpi) {
    MenuBar bar;
    if (items.empty()) return bar;
    const int row = GetSystemMetricsForDpi(SM_CYMENU, dpi);
    const int edge = scaled(kBarEdge, dpi);
    auto* const context = CreateCompatibleDC(nullptr);
    {
        const MenuFont font(context, dpi);
        int left = edge;
        for (const auto& item : items) {
            font.choose(item);
            const int size = menu_text_width(context, item.text) + 2 * scaled(kMargin, dpi);
            if (left > edge && left + size > width - edge) {
                left = edge;
                bar.height += row;
            }
            bar.places.push_back({left, bar.height, left + size, bar.height + row});
            left += size;
        }
    }
    DeleteDC(context);
    bar.height += row;
    return bar;
}

int menu_bar_height(HMENU menu, int width, UINT dpi) {
    return menu == nullptr ? 0 : lay_out_menu_bar(items_of(menu), width, dpi).height;
}

RECT menu_bar_place(HWND window) {
    const auto facts = facts_of(window);
    if (!facts || facts->menu == nullptr) return {};
    const auto& client = facts->client;
    const auto height = menu_bar_height(facts->menu, client.right - client.left, facts->dpi);
    return {client.left, client.top - height, client.right, client.top};
}

std::vector<RECT> menu_bar_places(HWND window) {
    const auto bar = menu_bar_place(window);
    const auto items = items_of(GetMenu(window));
    auto places = lay_out_menu_bar(items, bar.right - bar.left, GetDpiForWindow(window)).places;
    for (auto& place : places) place = moved(place, {bar.left, bar.top});
    return places;
}

void heat_menu_bar(HWND window, POINT point) {
    const auto places = menu_bar_places(window);
    const auto at = std::ranges::find_if(
        places, [&](const RECT& place) { return PtInRect(&place, point) != 0; });
    if (at == places.end()) return cool_menu_bar(window);
    change_hot_item({window, static_cast<int>(at - places.begin())});
    TRACKMOUSEEVENT track{sizeof track, TME_LEAVE, window, 0};
    TrackMouseEvent(&track);
}

void cool_menu_bar(HWND window) {
    if (t_hot.window == window) change_hot_item({});
}

void paint_menu_bar(HDC context, HWND window, const RECT& place) {
    const auto facts = facts_of(window);
    if (!facts || is_empty(place)) return;
    const auto items = items_of(facts->menu);
    const auto bar = lay_out_menu_bar(items, place.right - place.left, facts->dpi);
    const auto selected = selected_in_menu_bar(window);
    const auto hot = t_hot.window == window ? t_hot.item : -1;
    const MenuFont font(context, facts->dpi);
    for (std::size_t i = 0; i < items.size(); ++i) {
        const auto index = static_cast<int>(i);
        font.choose(items[i]);
        paint_item(context, items[i], moved(bar.places[i], {place.left, place.top}), facts->dpi,
                   index == selected || (index == hot && !items[i].is_disabled()));
    }
}

}  // namespace tvutil2

HMENU GetMenu(HWND window) {
    const tvutil2::TreeLock tree;
    const auto* const record = tree.find(window);
    return record != nullptr ? tvutil2::menu_of(*record) : nullptr;
}

BOOL SetMenu(HWND window, HMENU menu) {
    if (menu != nullptr && !IsMenu(menu)) return tvutil2::fail_with(ERROR_INVALID_MENU_HANDLE);
    {
        const tvutil2::TreeLock tree;
        auto* const record = tree.find(window);
        if (record == nullptr) return FALSE;
        if ((record->style & WS_CHILD) != 0) {
            return tvutil2::fail_with(ERROR_INVALID_WINDOW_HANDLE);
        }
        record->id = reinterpret_cast<LONG_PTR>(menu);
    }
    return DrawMenuBar(window);
}

BOOL DrawMenuBar(HWND window) {
    constexpr UINT kAsItStands = SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE;
    if (!SetWindowPos(window, nullptr, 0, 0, 0, 0, kAsItStands | SWP_FRAMECHANGED)) return FALSE;
    tvutil2::repaint_frame(window);
    return TRUE;
}
