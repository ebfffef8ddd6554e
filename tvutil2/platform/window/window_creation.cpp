// The creation of windows, message by message.
#include "tvutil2/platform/display/monitors.h"
#include "tvutil2/platform/window/class_table.h"
#include "tvutil2/platform/window/hooks.h"
#include "tvutil2/platform/window/menus/menu.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/screen.h"
#include "tvutil2/platform/window/show.h"
#include "tvutil2/platform/window/thread_queue.h"
#include "tvutil2/platform/window/window.h"
#include "tvutil2/platform/window/window_life.h"
#include "tvutil2/platform/window/window_states.h"

#include <algorithm>
#include <atomic>

namespace tvutil2 {
namespace {

int nesting(const Window* window, Window* Window::*up) {
    int depth = 0;
    for (; window != nullptr; window = window->*up) ++depth;
    return depth;
}

// What a caller asked for, as it will be.
struct NewWindow {
    CREATESTRUCTW given{};
    std::shared_ptr<WindowClass> window_class;

    // Null with the last error.
    HWND enter() {
        auto& queue = ThreadQueue::current();
        const TreeLock tree;
        Window* parent = nullptr;
        Window* owner = nullptr;
        if (!find_relatives(tree, parent, owner)) return nullptr;
        auto* const record = tree.table.take_record();
        if (record == nullptr) return nullptr;
        const auto& description = window_class->description;
        record->window_class = window_class;
        ++window_class->windows;
        record->style = static_cast<DWORD>(given.style) & ~WS_VISIBLE;
        record->ex_style = given.dwExStyle;
        record->id = reinterpret_cast<LONG_PTR>(given.hMenu);
        record->instance = given.hInstance;
        record->extra.assign(static_cast<std::size_t>(description.cbWndExtra), BYTE{0});
        take_place(*record);
        record->dpi = monitor_at(record->rect).dpi;
        record->procedure.store(description.lpfnWndProc, std::memory_order_release);
        record->owner = owner;
        if (owner != nullptr) ++owner->owned;
        ++queue.m_windows;
        if (is_child_style(record->style)) {
            tree.table.link_last(*parent, *record);
        } else {
            tree.table.link_first(*parent, *record);
        }
        return tree.table.enter(*record, queue);
    }

    // Its size may have changed on the way; until the window is asked, its client area is all of
    // it.
    void take_place(Window& record) const {
        record.rect = {given.x, given.y, given.x + given.cx, given.y + given.cy};
        record.client = {0, 0, given.cx, given.cy};
        record.normal = record.rect;
    }

    [[nodiscard]] bool is_child() const { return is_child_style(static_cast<DWORD>(given.style)); }
    /// Made to be seen by a person, now or later.
    [[nodiscard]] bool is_for_the_screen() const {
        const auto style = static_cast<DWORD>(given.style);
        return !is_child() && given.hwndParent != HWND_MESSAGE &&
               (style & (WS_VISIBLE | WS_SYSMENU)) != 0;
    }
    [[nodiscard]] bool is_overlapped() const {
        return (static_cast<DWORD>(given.style) & (WS_CHILD | WS_POPUP)) == 0;
    }

  private:
    bool find_relatives(const TreeLock& tree, Window*& parent, Window*& owner) const {
        if (given.hwndParent == HWND_MESSAGE) {
            parent = &tree.table.message_root();
            return true;
        }
        if (given.hwndParent == nullptr) {
            parent = &tree.table.root();
            return !is_child() || fail_with(ERROR_TLW_WITH_WSCHILD);
        }
        auto* const relative = tree.find(given.hwndParent);
        if (relative == nullptr) return false;
        if (relative->is_destroying) return fail_with(ERROR_INVALID_WINDOW_HANDLE);
        if (is_child()) {
            parent = relative;
        } else {
            parent = &tree.table.root();
            owner = &top_level_of(*relative);
        }
        const bool is_too_deep = nesting(parent, &Window::parent) > kMaxNesting ||
                                 nesting(owner, &Window::owner) >= kMaxNesting;
        return !is_too_deep || fail_with(ERROR_INVALID_PARAMETER);
    }
};

// A program that leaves the place to the system gets windows that don't cover each other, and three
// quarters of the screen.
void choose_place(CREATESTRUCTW& given) {
    static std::atomic<int> step{0};
    const bool is_overlapped = (static_cast<DWORD>(given.style) & (WS_CHILD | WS_POPUP)) == 0;
    const auto work = monitors().front().work;
    if (given.x == CW_USEDEFAULT) {
        const auto way = is_overlapped ? 26 * (step++ % 10) : 0;
        given.x = work.left + way;
        given.y = work.top + way;
    }
    if (given.cx == CW_USEDEFAULT) {
        given.cx = is_overlapped ? (work.right - work.left) * 3 / 4 : 0;
        given.cy = is_overlapped ? (work.bottom - work.top) * 3 / 4 : 0;
    }
    if (given.y == CW_USEDEFAULT) given.y = 0;
    if (given.cy == CW_USEDEFAULT) given.cy = 0;
    given.x = std::clamp(given.x, -32767, 32767);
    given.y = std::clamp(given.y, -32767, 32767);
    given.cx = std::clamp(given.cx, 0, 32767);
    given.cy = std::clamp(given.cy, 0, 32767);
}

// With a sizing frame, before anything else; without one only its client area is limited.
void limit_size(HWND window, NewWindow& made) {
    if ((static_cast<DWORD>(made.given.style) & WS_THICKFRAME) != 0) {
        const auto size = within(limits_of(window), {made.given.cx, made.given.cy});
        made.given.cx = size.cx;
        made.given.cy = size.cy;
    }
    made.given.cx = std::max(made.given.cx, 0);
    made.given.cy = std::max(made.given.cy, 0);
    const TreeLock tree;
    if (auto* const record = tree.table.find(window)) made.take_place(*record);
}

void ask_first_client(HWND window, const CREATESTRUCTW& given) {
    RECT area{given.x, given.y, given.x + given.cx, given.y + given.cy};
    SendMessageW(window, WM_NCCALCSIZE, FALSE, reinterpret_cast<LPARAM>(&area));
    const TreeLock tree;
    auto* const record = tree.table.find(window);
    if (record == nullptr) return;
    const auto inside = [](LONG value, LONG corner, LONG size) {
        return std::clamp<LONG>(value - corner, 0, size);
    };
    auto& client = record->client;
    client = {inside(area.left, given.x, given.cx), inside(area.top, given.y, given.cy),
              inside(area.right, given.x, given.cx), inside(area.bottom, given.y, given.cy)};
    client.right = std::max(client.left, client.right);
    client.bottom = std::max(client.top, client.bottom);
}

// The messages of a creation. False when the procedure refuses, or has ended the window.
bool tell_create(HWND window, NewWindow& made) {
    const auto pointer = reinterpret_cast<LPARAM>(&made.given);
    if (!call_creation_hooks(window, made.given)) return false;
    limit_size(window, made);
    if (SendMessageW(window, WM_NCCREATE, 0, pointer) == 0) {
        finish_window(window);
        return false;
    }
    ask_first_client(window, made.given);
    if (SendMessageW(window, WM_CREATE, 0, pointer) == -1) {
        DestroyWindow(window);
        return false;
    }
    return true;
}

}  // namespace
}  // namespace tvutil2

HWND CreateWindowExW(DWORD ex_style, const char16_t* class_name, const char16_t* title, DWORD style,
                     int x, int y, int width, int height, HWND parent, HMENU menu_or_id,
                     HINSTANCE instance, void* parameter) {
    tvutil2::NewWindow made;
    made.window_class = tvutil2::find_class(class_name, instance);
    if (!made.window_class) return nullptr;
    // A window that is neither a child nor pops up has a caption.
    if ((style & (WS_CHILD | WS_POPUP)) == 0) style |= WS_CAPTION | WS_CLIPSIBLINGS;
    made.given = {
        parameter, tvutil2::or_executable(instance), menu_or_id, parent,     height,  width, y,
        x,         static_cast<LONG>(style),         title,      class_name, ex_style};
    const auto* const menu_name = made.window_class->description.lpszMenuName;
    if (menu_or_id == nullptr && menu_name != nullptr && !made.is_child()) {
        made.given.hMenu = LoadMenuW(made.window_class->description.hInstance, menu_name);
    }
    // The monitors, and their scale, are known from the first window on that a person may see.
    if (made.is_for_the_screen()) static_cast<void>(tvutil2::display());
    tvutil2::choose_place(made.given);
    auto* const window = made.enter();
    if (window == nullptr) return nullptr;
    tvutil2::EndUnlessKept end(window);
    if (!tvutil2::tell_create(window, made)) return nullptr;
    if (!made.is_overlapped()) tvutil2::tell_size(window, false);
    if (made.is_child()) tvutil2::notify_parents(window, WM_CREATE);
    if ((style & WS_VISIBLE) != 0) ShowWindow(window, SW_SHOW);
    end.keep();
    return IsWindow(window) ? window : nullptr;
}
