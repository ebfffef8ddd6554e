// A pop-up menu as it is seen: one window of a menu that is open.
#pragma once

#include "tvutil2/platform/window/menus/menu_object.h"
#include "tvutil2/platform/window/window_states.h"

namespace tvutil2 {

/// Lengths in pixels of the window's client area.
struct MenuWindowState : WindowState {
    HMENU menu = nullptr;
    std::vector<MenuItem> items;
    std::vector<int> tops;  ///< of the items, and of what is behind the last one
    UINT dpi = 96;
    int scrolled = 0;  ///< of a menu that is higher than its monitor
    int selected = -1;
    int text_width = 0;  ///< of the widest text, without shortcuts

    [[nodiscard]] bool can_select(int index) const;
    /// The next item in a direction that can be selected, around the end; -1 for none.
    [[nodiscard]] int next(int from, int step) const;
    /// -1 for none.
    [[nodiscard]] int item_at(int y) const;
};

/// A context with a menu's font, plain or bold as an item wants it.
class MenuFont {
  public:
    MenuFont(HDC context, UINT dpi);
    ~MenuFont();
    MenuFont(const MenuFont&) = delete;
    MenuFont& operator=(const MenuFont&) = delete;
    void choose(const MenuItem& item) const;

  private:
    HDC m_context;
    HFONT m_plain, m_bold;
    HGDIOBJ m_before;
};

/// With the context's font; `format` are flags of DrawTextW.
[[nodiscard]] int menu_text_width(HDC context, std::u16string_view text, UINT format = 0);

/// Where a menu goes on the screen.
struct MenuAnchor {
    POINT point{};
    UINT flags = 0;  ///< TPM_ alignments
    RECT beside{};   ///< the item that it belongs to; empty for none
    bool is_submenu = false;
};

/// Makes and shows the window; null when that fails.
[[nodiscard]] HWND open_menu_window(HMENU menu, HWND owner, const MenuAnchor& anchor);
void select_menu_item(HWND window, int index);
/// On the screen.
[[nodiscard]] RECT menu_item_rect(HWND window, int index);
void scroll_menu(HWND window, int by);

LRESULT menu_procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);

}  // namespace tvutil2
