// The menu bar of a window: a menu's items in a row between its frame and its client area.
//
// Any window but a child may have one, given when it is made, by its class or later; it goes with
// the window. Where the items don't fit side by side they go on in another row, for which the
// client area makes room when the window is sized.
#pragma once

#include "tvutil2/platform/window/menus/menu_object.h"
#include "tvutil2/platform/window/window_table.h"

#include <vector>

/// Null for a window without one. Safe from any thread.
TVUTIL_API HMENU GetMenu(HWND window);
/// Null takes the bar away; the menu that was there before stays, and is the caller's again. For
/// the window's own thread. ERROR_INVALID_WINDOW_HANDLE for a child, ERROR_INVALID_MENU_HANDLE.
TVUTIL_API BOOL SetMenu(HWND window, HMENU menu);
/// After a change of its items.
TVUTIL_API BOOL DrawMenuBar(HWND window);

namespace tvutil2 {

/// In pixels, from the bar's corner.
struct MenuBar {
    std::vector<RECT> places;  ///< of the items
    int height = 0;
};

/// With the lock of the tree.
[[nodiscard]] HMENU menu_of(const Window& window);
[[nodiscard]] MenuBar lay_out_menu_bar(const std::vector<MenuItem>& items, int width, UINT dpi);
/// 0 without a menu.
[[nodiscard]] int menu_bar_height(HMENU menu, int width, UINT dpi);
/// On the screen; empty for a window without a menu.
[[nodiscard]] RECT menu_bar_place(HWND window);
/// Of its items.
[[nodiscard]] TVUTIL_API std::vector<RECT> menu_bar_places(HWND window);
/// The pointer is over the bar at a place on the screen, or not over it any more.
void heat_menu_bar(HWND window, POINT point);
void cool_menu_bar(HWND window);
/// On what is filled with COLOR_MENU. `place` is that of the bar, for the context.
void paint_menu_bar(HDC context, HWND window, const RECT& place);

/// What WM_SYSCOMMAND asks for: chooses from the window's bar until the person has chosen or gone
/// away. By key: at the item of that mnemonic, or at the first one for 0.
void enter_menu_bar(HWND window, POINT point);
void enter_menu_bar(HWND window, char16_t mnemonic);

}  // namespace tvutil2
