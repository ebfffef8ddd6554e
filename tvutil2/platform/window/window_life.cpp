// The end of windows, message by message.
#include "tvutil2/platform/window/window_life.h"

#include "tvutil2/platform/window/class_table.h"
#include "tvutil2/platform/window/endpoint.h"
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

namespace tvutil2 {
namespace {

// With the lock held.
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

// WM_DESTROY from the parent down.
void tell_destroy(HWND window) {
    SendMessageW(window, WM_DESTROY, 0, 0);
    for (auto* const child : children_of(window)) {
        if (own_window(child) == nullptr) {
            destroy_elsewhere(child, true);
        } else if (begin_destroying(child)) {
            tell_destroy(child);
        }
    }
}

}  // namespace

Window* own_window(HWND window) {
    auto* const record = WindowTable::instance().find(window);
    return record != nullptr && record->queue == ThreadQueue::current_or_null() ? record : nullptr;
}

void end_quietly(HWND window) {
    auto* const record = own_window(window);
    if (record == nullptr) return destroy_elsewhere(window, false);
    for (auto* const child : children_of(window)) end_quietly(child);
    release(*record, *record->queue);
}

void finish_window(HWND window) {
    for (auto* const child : children_of(window)) finish_window(child);
    if (own_window(window) == nullptr) return;
    SendMessageW(window, WM_NCDESTROY, 0, 0);
    auto* const record = own_window(window);
    if (record == nullptr) return;
    auto* const menu = menu_of(*record);
    release(*record, *record->queue);
    if (IsMenu(menu)) DestroyMenu(menu);
}

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

BOOL DestroyWindow(HWND window) {
    if (!IsWindow(window)) return fail_with(ERROR_INVALID_WINDOW_HANDLE);
    // Another process's as well as another thread's.
    if (tvutil2::own_window(window) == nullptr) return fail_with(ERROR_ACCESS_DENIED);
    if (!tvutil2::begin_destroying(window)) return FALSE;
    tvutil2::EndUnlessKept end(window);
    if ((GetWindowLongW(window, GWL_STYLE) & static_cast<LONG>(WS_CHILD)) != 0) {
        tvutil2::notify_parents(window, WM_DESTROY);
    }
    ShowWindow(window, SW_HIDE);
    tvutil2::leave_focus(window);
    while (auto* const owned = tvutil2::newest_owned_by(window)) {
        if (tvutil2::own_window(owned) == nullptr) {
            tvutil2::destroy_elsewhere(owned, true);
            // Its thread may have gone without an answer.
            if (IsWindow(owned)) break;
        } else {
            DestroyWindow(owned);
        }
    }
    if (IsWindow(window)) tvutil2::tell_destroy(window);
    if (IsWindow(window)) tvutil2::finish_window(window);
    end.keep();
    return TRUE;
}

BOOL IsWindow(HWND window) {
    if (tvutil2::is_remote(window)) return tvutil2::find_remote(window) ? TRUE : FALSE;
    return tvutil2::WindowTable::instance().find(window) != nullptr ? TRUE : FALSE;
}
