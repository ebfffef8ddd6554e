// How a person moves in pop-up menus: a loop of its own until something is chosen.
#include "tvutil2/platform/window/menus/menu_loop.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/draw/rect.h"
#include "tvutil2/platform/draw/theme.h"
#include "tvutil2/platform/window/default_paint.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/menus/menu_tracking.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/mouse.h"
#include "tvutil2/platform/window/quietly.h"
#include "tvutil2/platform/window/screen.h"
#include "tvutil2/platform/window/timers.h"
#include "tvutil2/platform/window/window.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace tvutil2 {
namespace {

constexpr UINT_PTR kOpenTimer = 1;
constexpr UINT kOpenTime = 250;

}  // namespace

thread_local MenuLoop* MenuLoop::t_running = nullptr;

char16_t mnemonic_of(const MenuItem& item) {
    char16_t found = 0;
    for (std::size_t i = 0; i + 1 < item.text.size(); ++i) {
        if (item.text[i] != u'&') continue;
        ++i;
        if (item.text[i] != u'&') found = to_lower(item.text[i]);
    }
    return found;
}

// Behind end() nothing is left to do, unless a handler has raised something on the way.
MenuLoop::~MenuLoop() {
    if (t_running != this) return;
    t_running = nullptr;
    quietly([this] {
        if (has_bar() && GetCapture() == m_owner) ReleaseCapture();
    });
    for (auto* const window : m_open) {
        quietly([window] { DestroyWindow(window); });
    }
    if (has_bar()) repaint_frame(m_owner);
}

bool MenuLoop::is_running() const {
    if (m_is_done || !IsWindow(m_owner)) return false;
    if (has_bar()) return GetCapture() == m_owner;
    return !m_open.empty() && IsWindow(m_open.front()) && GetCapture() == m_open.front();
}

bool MenuLoop::open(HMENU menu, const MenuAnchor& anchor) {
    const auto index = m_open.empty() ? std::max(m_bar_item, 0) : std::max(top()->selected, 0);
    tell(WM_INITMENUPOPUP, reinterpret_cast<WPARAM>(menu),
         MAKELPARAM(static_cast<WORD>(index), FALSE));
    if (!IsWindow(m_owner)) return false;
    auto* const window = open_menu_window(menu, m_owner, anchor);
    if (window != nullptr) m_open.push_back(window);
    return window != nullptr;
}

void MenuLoop::close_down_to(std::size_t levels) {
    while (m_open.size() > levels) {
        auto* const window = m_open.back();
        m_open.pop_back();
        const auto state = state_of<MenuWindowState>(window);
        DestroyWindow(window);
        if (state) tell(WM_UNINITMENUPOPUP, reinterpret_cast<WPARAM>(state->menu), 0);
    }
}

void MenuLoop::select(std::size_t level, int item) {
    const auto state = state_at(level);
    if (!state || state->selected == item) return;
    select_menu_item(m_open[level], item);
    if (item >= 0) tell_selected(state->menu, state->items[static_cast<std::size_t>(item)], item);
}

void MenuLoop::tell_selected(HMENU menu, const MenuItem& item, int index) const {
    const bool is_popup = item.submenu != nullptr;
    const auto flags = item.type | item.state | MF_HILITE | (is_popup ? MF_POPUP : 0);
    tell(WM_MENUSELECT,
         MAKEWPARAM(static_cast<WORD>(is_popup ? static_cast<UINT>(index) : item.id),
                    static_cast<WORD>(flags)),
         reinterpret_cast<LPARAM>(menu));
}

void MenuLoop::open_submenu(bool selects_first) {
    const auto state = top();
    if (!state || !state->can_select(state->selected) || m_open.size() >= kMenuNesting) return;
    const auto& item = state->items[static_cast<std::size_t>(state->selected)];
    if (item.submenu == nullptr || item.is_disabled()) return;
    MenuAnchor anchor;
    anchor.is_submenu = true;
    anchor.beside = menu_item_rect(m_open.back(), state->selected);
    anchor.point = {anchor.beside.right, anchor.beside.top - scaled(4, state->dpi)};
    if (!open(item.submenu, anchor) || !selects_first) return;
    const auto opened = top();
    if (opened) select(m_open.size() - 1, opened->next(-1, 1));
}

// What is selected in the innermost menu.
void MenuLoop::choose(bool by_key) {
    const auto state = top();
    if (!state || !state->can_select(state->selected)) return;
    const auto& item = state->items[static_cast<std::size_t>(state->selected)];
    if (item.is_disabled()) return;
    if (item.submenu != nullptr) return open_submenu(by_key);
    m_chosen = item.id;
    m_is_done = true;
}

MenuLoop::Hit MenuLoop::hit(POINT point) const {
    for (auto level = m_open.size(); level-- > 0;) {
        RECT place{};
        GetWindowRect(m_open[level], &place);
        const auto state = state_at(level);
        if (!state || !PtInRect(&place, point)) continue;
        return {level, state->item_at(static_cast<int>(point.y - place.top))};
    }
    return {};
}

void MenuLoop::point_at(POINT point) {
    // A display may tell of a pointer that rests when a window has come or gone below it.
    const auto before = std::exchange(m_pointer, point);
    if (before.x == point.x && before.y == point.y) return;
    const auto [level, item] = hit(point);
    if (level >= m_open.size()) {
        if (const auto in_bar = bar_item_at(point); in_bar >= 0 && in_bar != m_bar_item) {
            const bool was_open = !m_open.empty();
            select_in_bar(in_bar);
            if (was_open) open_from_bar(false);
        } else if (!m_open.empty()) {
            // An open submenu keeps its item.
            select(m_open.size() - 1, -1);
        }
        return;
    }
    const auto state = state_at(level);
    if (!state) return;
    if (state->selected != item) {
        // What was open below stays until another item has been under the pointer for a while.
        select(level, item);
        SetTimer(m_open.front(), kOpenTimer, kOpenTime, nullptr);
    }
}

void MenuLoop::follow_timer() {
    KillTimer(m_open.front(), kOpenTimer);
    POINT point{};
    GetCursorPos(&point);
    const auto [level, item] = hit(point);
    if (level >= m_open.size() || item < 0) return;
    close_down_to(level + 1);
    select(level, item);
    open_submenu(false);
}

void MenuLoop::press(WPARAM key) {
    if (key == VK_MENU || key == VK_F10) {
        m_is_done = true;
        return;
    }
    if (has_bar() && key_in_bar(key)) return;
    const auto level = m_open.size() - 1;
    const auto state = top();
    if (!state) return;
    switch (key) {
        case VK_UP:
            return select(level, state->next(state->selected, -1));
        case VK_DOWN:
            return select(level, state->next(state->selected, 1));
        case VK_HOME:
            return select(level, state->next(-1, 1));
        case VK_END:
            return select(level, state->next(-1, -1));
        case VK_RIGHT:
            return open_submenu(true);
        case VK_LEFT:
            if (level > 0) close_down_to(level);
            return;
        case VK_ESCAPE:
            if (level > 0) {
                close_down_to(level);
            } else {
                m_is_done = true;
            }
            return;
        case VK_RETURN:
        case VK_SPACE:
            return choose(true);
        default:
            return;
    }
}

// The item of that mnemonic; of several the next one is only selected.
void MenuLoop::type(char16_t character) {
    if (m_open.empty()) return type_in_bar(character);
    const auto wanted = to_lower(character);
    const auto state = top();
    if (!state || wanted <= u' ') return;
    const auto count = static_cast<int>(state->items.size());
    int first = -1;
    int matches = 0;
    for (int i = 1; i <= count; ++i) {
        const auto at = (std::max(state->selected, -1) + i + count) % count;
        if (!state->can_select(at)) continue;
        if (mnemonic_of(state->items[static_cast<std::size_t>(at)]) != wanted) continue;
        if (first < 0) first = at;
        ++matches;
    }
    if (first < 0) return;
    select(m_open.size() - 1, first);
    if (matches == 1) choose(true);
}

void MenuLoop::follow(const MSG& message) {
    const auto& point = message.pt;
    switch (message.message) {
        case WM_MOUSEMOVE:
            return point_at(point);
        case WM_LBUTTONDOWN:
        case WM_LBUTTONDBLCLK:
        case WM_RBUTTONDOWN:
        case WM_RBUTTONDBLCLK: {
            m_was_pressed = true;
            const auto at = hit(point);
            if (at.level >= m_open.size()) return press_in_bar(point);
            close_down_to(at.level + 1);
            select(at.level, at.item);
            open_submenu(false);
            return;
        }
        case WM_RBUTTONUP:
        case WM_LBUTTONUP: {
            const bool counts = message.message == WM_LBUTTONUP || (m_flags & TPM_RIGHTBUTTON) != 0;
            // The end of the press that opened the menu.
            const bool has_moved =
                std::abs(point.x - m_start.x) > 3 || std::abs(point.y - m_start.y) > 3;
            const auto at = hit(point);
            if (!counts || at.item < 0 || (!m_was_pressed && !has_moved)) return;
            close_down_to(std::max(at.level + 1, std::size_t{1}));
            select(at.level, at.item);
            const auto state = state_at(at.level);
            const bool is_leaf =
                state && state->items[static_cast<std::size_t>(at.item)].submenu == nullptr;
            if (is_leaf) choose(false);
            return;
        }
        case WM_MOUSEWHEEL:
            if (!m_open.empty())
                scroll_menu(m_open.back(), -GET_WHEEL_DELTA_WPARAM(message.wParam) / 3);
            return;
        case WM_KEYDOWN:
        case WM_SYSKEYDOWN:
            TranslateMessage(&message);
            return press(message.wParam);
        case WM_CHAR:
        case WM_SYSCHAR:
            return type(static_cast<char16_t>(message.wParam));
        case WM_KEYUP:
        case WM_SYSKEYUP:
            return;
        default:
            DispatchMessageW(&message);
            return;
    }
}

void MenuLoop::begin(HMENU menu) {
    t_running = this;
    GetCursorPos(&m_pointer);
    tell(WM_ENTERMENULOOP, has_bar() ? FALSE : TRUE, 0);
    tell(WM_INITMENU, reinterpret_cast<WPARAM>(menu), 0);
}

void MenuLoop::follow_all() {
    MSG message{};
    while (is_running()) {
        if (GetMessageW(&message, nullptr, 0, 0) <= 0) {
            PostQuitMessage(static_cast<int>(message.wParam));
            return;
        }
        if (message.message == WM_TIMER && !m_open.empty() && message.hwnd == m_open.front()) {
            follow_timer();
        } else if (is_running()) {
            follow(message);
        }
    }
}

UINT MenuLoop::end() {
    auto* const captor = GetCapture();
    const bool is_own = captor == m_owner || (!m_open.empty() && captor == m_open.front());
    if (is_own) ReleaseCapture();
    close_down_to(0);
    if (has_bar()) select_in_bar(-1);
    tell(WM_MENUSELECT, MAKEWPARAM(0, 0xFFFF), 0);
    tell(WM_EXITMENULOOP, has_bar() ? FALSE : TRUE, 0);
    t_running = nullptr;
    return m_chosen;
}

UINT MenuLoop::run(HMENU menu, POINT point) {
    m_start = point;
    begin(menu);
    MenuAnchor anchor;
    anchor.point = point;
    anchor.flags = m_flags;
    if (IsWindow(m_owner) && open(menu, anchor)) SetCapture(m_open.front());
    follow_all();
    return end();
}

void leave_menus() {
    if (MenuLoop::t_running != nullptr) MenuLoop::t_running->cancel();
}

int selected_in_menu_bar(HWND window) {
    return MenuLoop::t_running != nullptr ? MenuLoop::t_running->bar_item(window) : -1;
}

}  // namespace tvutil2

BOOL TrackPopupMenu(HMENU menu, UINT flags, int x, int y, int /*reserved*/, HWND owner,
                    const RECT* /*rect*/) {
    using tvutil2::MenuLoop;
    if (!IsMenu(menu)) return tvutil2::fail_with(ERROR_INVALID_MENU_HANDLE);
    if (!IsWindow(owner)) return tvutil2::fail_with(ERROR_INVALID_WINDOW_HANDLE);
    if (MenuLoop::t_running != nullptr) return tvutil2::fail_with(ERROR_POPUP_ALREADY_ACTIVE);
    if (tvutil2::display() == nullptr) {
        return tvutil2::fail_with(ERROR_REQUIRES_INTERACTIVE_WINDOWSTATION);
    }
    const auto chosen = MenuLoop(owner, flags).run(menu, {x, y});
    if ((flags & TPM_RETURNCMD) != 0) return static_cast<BOOL>(chosen);
    if (chosen != 0 && (flags & TPM_NONOTIFY) == 0) {
        PostMessageW(owner, WM_COMMAND, MAKEWPARAM(static_cast<WORD>(chosen), 0), 0);
    }
    return TRUE;
}
