// The creation and the end of windows, message by message.
#include "tvutil2/platform/display/monitors.h"
#include "tvutil2/platform/window/class_table.h"
#include "tvutil2/platform/window/endpoint.h"
#include "tvutil2/platform/window/hooks.h"
#include "tvutil2/platform/window/input.h"
#include "tvutil2/platform/window/menus/menu_bar.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/remote.h"
#include "tvutil2/platform/window/screen.h"
#include "tvutil2/platform/window/show.h"
#include "tvutil2/platform/window/thread_queue.h"
#include "tvutil2/platform/window/update.h"
#include "tvutil2/platform/window/window.h"
#include "tvutil2/platform/window/window_states.h"

#include <algorithm>
#include <atomic>

namespace tvutil2 {
namespace {

// With the lock held.

int nesting(const Window* window, Window* Window::*up) {
    int depth = 0;
    for (; window != nullptr; window = window->*up) ++depth;
    return depth;
}

bool is_child_style(DWORD style) {
    return (style & (WS_CHILD | WS_POPUP)) == WS_CHILD;
}

void leave_relatives(Window& window, WindowTable& table) {
    if (window.owner != nullptr) --window.owner->owned;
    if (window.owned != 0) {
        table.for_each([&window](Window& other) {
            if (other.owner == &window) other.owner = nullptr;
        });
    }
    // Children of a thread that hasn't ended them yet.
    while (auto* const child = window.first_child) {
        table.unlink(*child);
        table.link_last(table.message_root(), *child);
    }
    table.unlink(window);
}

// Ends the window as such. The queue is the calling thread's.
void release(Window& window, ThreadQueue& queue) {
    bool was_for_others = false;
    // Ends behind the lock: what a window keeps has handles of its own.
    std::shared_ptr<WindowState> state;
    leave_display(window.hwnd());
    forget_window(queue, window.hwnd());
    {
        const TreeLock tree;
        was_for_others = is_for_others(window);
        state.swap(window.state);
        const auto before = placement_of(window);
        window.style &= ~WS_VISIBLE;
        update_after(window, before, false, false);
        queue.end_window(window);
        --queue.m_windows;
        --window.window_class->windows;
        leave_relatives(window, tree.table);
        tree.table.give_back(window);
    }
    if (was_for_others) publish_windows();
}

std::vector<HWND> children_of(HWND window) {
    std::vector<HWND> children;
    const TreeLock tree;
    const auto* const record = tree.table.find(window);
    if (record == nullptr) return children;
    for (auto* child = record->first_child; child != nullptr; child = child->next) {
        children.push_back(child->hwnd());
    }
    return children;
}

HWND newest_owned_by(HWND owner) {
    const TreeLock tree;
    const auto* const record = tree.table.find(owner);
    const Window* newest = nullptr;
    if (record == nullptr || record->owned == 0) return nullptr;
    tree.table.for_each([&](const Window& each) {
        if (each.owner != record || each.is_destroying) return;
        if (newest == nullptr || each.age > newest->age) newest = &each;
    });
    return newest != nullptr ? newest->hwnd() : nullptr;
}

// False when it is being ended already, or isn't any more.
bool begin_destroying(HWND window) {
    const TreeLock tree;
    auto* const record = tree.table.find(window);
    if (record == nullptr || record->is_destroying) return false;
    record->is_destroying = true;
    return true;
}

// The window's record if it is the calling thread's.
Window* own(HWND window) {
    auto* const record = WindowTable::instance().find(window);
    return record != nullptr && record->queue == ThreadQueue::current_or_null() ? record : nullptr;
}

// Lets a window of another thread be ended there.
void destroy_elsewhere(HWND window, bool waits) {
    const auto* const record = WindowTable::instance().find(window);
    if (record == nullptr) return;
    const auto message = std::make_shared<SentMessage>();
    message->window = window;
    message->action = [](HWND target) { DestroyWindow(target); };
    if (waits) {
        send_and_wait(message, *record, false, INFINITE);
    } else {
        record->queue.load()->send(message, *record);
    }
}

// Without a message: what is left when a procedure threw, or when the thread has ended.
void end_quietly(HWND window) {
    auto* const record = own(window);
    if (record == nullptr) return destroy_elsewhere(window, false);
    for (auto* const child : children_of(window)) end_quietly(child);
    release(*record, *record->queue);
}

// WM_DESTROY from the parent down.
void tell_destroy(HWND window) {
    SendMessageW(window, WM_DESTROY, 0, 0);
    for (auto* const child : children_of(window)) {
        if (own(child) == nullptr) {
            destroy_elsewhere(child, true);
        } else if (begin_destroying(child)) {
            tell_destroy(child);
        }
    }
}

// WM_NCDESTROY from the children up, and the end of each.
void finish(HWND window) {
    for (auto* const child : children_of(window)) finish(child);
    if (own(window) == nullptr) return;
    SendMessageW(window, WM_NCDESTROY, 0, 0);
    auto* const record = own(window);
    if (record == nullptr) return;
    auto* const menu = menu_of(*record);
    release(*record, *record->queue);
    if (IsMenu(menu)) DestroyMenu(menu);
}

// Ends a window unless it is kept: one that was refused, or whose procedure threw on the way.
class EndUnlessKept {
  public:
    explicit EndUnlessKept(HWND window) : m_window(window) {}
    ~EndUnlessKept() {
        if (m_window != nullptr && own(m_window) != nullptr) end_quietly(m_window);
    }
    EndUnlessKept(const EndUnlessKept&) = delete;
    EndUnlessKept& operator=(const EndUnlessKept&) = delete;
    void keep() { m_window = nullptr; }

  private:
    HWND m_window;
};

void notify_parents(HWND window, UINT event) {
    LONG_PTR id = 0;
    std::vector<HWND> parents;
    {
        const TreeLock tree;
        const auto* record = tree.table.find(window);
        if (record == nullptr || (record->ex_style & WS_EX_NOPARENTNOTIFY) != 0) return;
        id = record->id;
        while (is_child_style(record->style) && record->parent->handle != 0) {
            record = record->parent;
            parents.push_back(record->hwnd());
        }
    }
    for (auto* const parent : parents) {
        SendMessageW(parent, WM_PARENTNOTIFY,
                     MAKEWPARAM(static_cast<WORD>(event), static_cast<WORD>(id)),
                     reinterpret_cast<LPARAM>(window));
    }
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
        finish(window);
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

void end_windows_of(ThreadQueue& queue) {
    if (queue.m_windows == 0) return;
    std::vector<HWND> left;
    {
        const TreeLock tree;
        tree.table.for_each([&](const Window& each) {
            if (each.queue == &queue) left.push_back(each.hwnd());
        });
    }
    for (auto* const window : left) {
        if (IsWindow(window)) end_quietly(window);
    }
}

}  // namespace tvutil2

using tvutil2::fail_with;

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

BOOL DestroyWindow(HWND window) {
    if (!IsWindow(window)) return fail_with(ERROR_INVALID_WINDOW_HANDLE);
    // Another process's as well as another thread's.
    if (tvutil2::own(window) == nullptr) return fail_with(ERROR_ACCESS_DENIED);
    if (!tvutil2::begin_destroying(window)) return FALSE;
    tvutil2::EndUnlessKept end(window);
    if ((GetWindowLongW(window, GWL_STYLE) & static_cast<LONG>(WS_CHILD)) != 0) {
        tvutil2::notify_parents(window, WM_DESTROY);
    }
    ShowWindow(window, SW_HIDE);
    tvutil2::leave_focus(window);
    while (auto* const owned = tvutil2::newest_owned_by(window)) {
        if (tvutil2::own(owned) == nullptr) {
            tvutil2::destroy_elsewhere(owned, true);
            // Its thread may have gone without an answer.
            if (IsWindow(owned)) break;
        } else {
            DestroyWindow(owned);
        }
    }
    if (IsWindow(window)) tvutil2::tell_destroy(window);
    if (IsWindow(window)) tvutil2::finish(window);
    end.keep();
    return TRUE;
}

BOOL IsWindow(HWND window) {
    if (tvutil2::is_remote(window)) return tvutil2::find_remote(window) ? TRUE : FALSE;
    return tvutil2::WindowTable::instance().find(window) != nullptr ? TRUE : FALSE;
}
