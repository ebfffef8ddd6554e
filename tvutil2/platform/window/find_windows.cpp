#include "tvutil2/platform/window/find_windows.h"

#include "tvutil2/platform/window/class_table.h"
#include "tvutil2/platform/window/remote.h"
#include "tvutil2/platform/window/thread_queue.h"
#include "tvutil2/platform/window/window.h"
#include "tvutil2/platform/window/window_table.h"

namespace {

using tvutil2::ListedWindow;
using tvutil2::TreeLock;
using tvutil2::Window;

class Wanted {
  public:
    Wanted(const char16_t* class_name, const char16_t* title) : m_title(title) {
        if (class_name == nullptr) return;
        if (IS_INTRESOURCE(class_name)) {
            m_atom = static_cast<ATOM>(reinterpret_cast<std::uintptr_t>(class_name));
        } else {
            m_class = tvutil2::folded_name(class_name);
        }
        m_has_class = true;
    }
    [[nodiscard]] bool is(const Window& window) const {
        const auto& its = *window.window_class;
        return (!m_has_class || (m_atom != 0 ? its.atom == m_atom : its.folded == m_class)) &&
               has_title(window.text);
    }
    // Numbers of classes mean something in their own process only.
    [[nodiscard]] bool is(const ListedWindow& window) const {
        return (!m_has_class ||
                (m_atom == 0 && tvutil2::folded_name(window.class_name.c_str()) == m_class)) &&
               has_title(window.title);
    }

  private:
    [[nodiscard]] bool has_title(const std::u16string& text) const {
        return m_title == nullptr || text == m_title;
    }

    bool m_has_class = false;
    ATOM m_atom = 0;
    std::u16string m_class;
    const char16_t* m_title;
};

HWND handle_of(const ListedWindow& window) {
    return reinterpret_cast<HWND>(window.handle);
}

HWND find_own(HWND parent, HWND after, const Wanted& wanted) {
    const TreeLock tree;
    const auto* record = &tree.table.root();
    if (parent == HWND_MESSAGE) {
        record = &tree.table.message_root();
    } else if (parent != nullptr) {
        record = tree.find(parent);
    }
    if (record == nullptr) return nullptr;
    const auto* each = record->first_child;
    if (after != nullptr) {
        const auto* const previous = tree.find(after);
        if (previous == nullptr || previous->parent != record) return nullptr;
        each = previous->next;
    }
    while (each != nullptr && !wanted.is(*each)) each = each->next;
    return each != nullptr ? each->hwnd() : nullptr;
}

void add_children(const Window& window, bool all, std::vector<HWND>& found) {
    for (const auto* child = window.first_child; child != nullptr; child = child->next) {
        found.push_back(child->hwnd());
        if (all) add_children(*child, all, found);
    }
}

// A window that has gone by the time its turn comes is left out.
BOOL walk(const std::vector<HWND>& windows, WNDENUMPROC callback, LPARAM parameter) {
    for (auto* const window : windows) {
        if (IsWindow(window) && !callback(window, parameter)) return FALSE;
    }
    return TRUE;
}

}  // namespace

HWND FindWindowExW(HWND parent, HWND after, const char16_t* class_name, const char16_t* title) {
    const Wanted wanted(class_name, title);
    const bool is_after_remote = parent == nullptr && tvutil2::is_remote(after);
    if (!is_after_remote) {
        auto* const own = find_own(parent, after, wanted);
        if (own != nullptr || parent != nullptr) return own;
    }
    bool is_behind = !is_after_remote;
    for (const auto& each : tvutil2::remote_windows()) {
        if (is_behind && wanted.is(each)) return handle_of(each);
        is_behind = is_behind || handle_of(each) == after;
    }
    return nullptr;
}

HWND FindWindowW(const char16_t* class_name, const char16_t* title) {
    return FindWindowExW(nullptr, nullptr, class_name, title);
}

BOOL EnumWindows(WNDENUMPROC callback, LPARAM parameter) {
    std::vector<HWND> windows;
    {
        const TreeLock tree;
        add_children(tree.table.root(), false, windows);
    }
    for (const auto& each : tvutil2::remote_windows()) windows.push_back(handle_of(each));
    return walk(windows, callback, parameter);
}

BOOL EnumThreadWindows(DWORD thread, WNDENUMPROC callback, LPARAM parameter) {
    std::vector<HWND> windows;
    {
        const TreeLock tree;
        const auto& root = tree.table.root();
        for (const auto* each = root.first_child; each != nullptr; each = each->next) {
            if (each->queue.load()->thread() == thread) windows.push_back(each->hwnd());
        }
    }
    return walk(windows, callback, parameter);
}

BOOL EnumChildWindows(HWND parent, WNDENUMPROC callback, LPARAM parameter) {
    std::vector<HWND> windows;
    {
        const TreeLock tree;
        const auto* const record = tree.find(parent);
        if (record == nullptr) return FALSE;
        add_children(*record, true, windows);
    }
    return walk(windows, callback, parameter);
}
