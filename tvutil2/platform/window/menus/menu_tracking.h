// The loop in which a person chooses from menus: pop-up ones, or those of a window's bar.
#pragma once

#include "tvutil2/platform/window/menus/menu_bar.h"
#include "tvutil2/platform/window/menus/menu_window.h"
#include "tvutil2/platform/window/messages.h"

#include <memory>
#include <vector>

namespace tvutil2 {

class MenuLoop {
  public:
    MenuLoop(HWND owner, UINT flags) : m_owner(owner), m_flags(flags) {}
    ~MenuLoop();
    MenuLoop(const MenuLoop&) = delete;
    MenuLoop& operator=(const MenuLoop&) = delete;

    /// What was chosen; 0 for nothing.
    UINT run(HMENU menu, POINT point);
    /// The same in the owner's bar, from the item at a place, or of a mnemonic.
    UINT run_bar(POINT point);
    UINT run_bar(char16_t mnemonic);
    /// -1 for none, and for another window's bar.
    [[nodiscard]] int bar_item(HWND window) const { return window == m_owner ? m_bar_item : -1; }
    void cancel() {
        m_is_done = true;
        PostMessageW(m_owner, WM_NULL, 0, 0);
    }

    static thread_local MenuLoop* t_running;

  private:
    struct Hit {
        std::size_t level = ~std::size_t{0};
        int item = -1;
    };

    [[nodiscard]] std::shared_ptr<MenuWindowState> state_at(std::size_t level) const {
        return state_of<MenuWindowState>(m_open[level]);
    }
    [[nodiscard]] std::shared_ptr<MenuWindowState> top() const {
        return state_at(m_open.size() - 1);
    }
    [[nodiscard]] bool is_running() const;
    void tell(UINT message, WPARAM wparam, LPARAM lparam) const {
        if ((m_flags & TPM_NONOTIFY) == 0) SendMessageW(m_owner, message, wparam, lparam);
    }
    void tell_selected(HMENU menu, const MenuItem& item, int index) const;
    void begin(HMENU menu);
    void follow_all();
    UINT end();
    bool open(HMENU menu, const MenuAnchor& anchor);
    void close_down_to(std::size_t levels);
    void select(std::size_t level, int item);
    void open_submenu(bool selects_first);
    void choose(bool by_key);
    [[nodiscard]] Hit hit(POINT point) const;
    void point_at(POINT point);
    void press(WPARAM key);
    void type(char16_t character);
    void follow(const MSG& message);
    void follow_timer();

    // Of the bar:
    [[nodiscard]] bool has_bar() const { return m_bar != nullptr; }
    [[nodiscard]] int bar_item_at(POINT point) const;
    [[nodiscard]] const MenuItem& bar_item_of(int index) const {
        return m_bar_items[static_cast<std::size_t>(index)];
    }
    [[nodiscard]] bool begin_bar();
    void select_in_bar(int index);
    void step_in_bar(int step);
    void open_from_bar(bool selects_first);
    void press_in_bar(POINT point);
    bool key_in_bar(WPARAM key);
    void type_in_bar(char16_t character);

    HWND m_owner;
    UINT m_flags;
    std::vector<HWND> m_open;
    HMENU m_bar = nullptr;
    std::vector<MenuItem> m_bar_items;
    int m_bar_item = -1;
    bool m_is_done = false;
    bool m_was_pressed = false;  // since the menu opened
    POINT m_start{};
    POINT m_pointer{};  // where it was last
    UINT m_chosen = 0;
};

/// The character behind the "&" of an item, small; 0 for none.
[[nodiscard]] char16_t mnemonic_of(const MenuItem& item);

}  // namespace tvutil2
