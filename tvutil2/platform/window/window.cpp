#include "tvutil2/platform/window/window.h"

#include "tvutil2/platform/window/class_table.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/remote.h"
#include "tvutil2/platform/window/thread_queue.h"
#include "tvutil2/platform/window/window_states.h"
#include "tvutil2/platform/window/window_table.h"

#include <cstring>

using tvutil2::fail_with;
using tvutil2::TreeLock;
using tvutil2::Window;

namespace {

HWND handle_of(const Window* window) {
    return window != nullptr ? window->hwnd() : nullptr;
}

// As much as has room; its length.
int copy_text(const std::u16string& text, char16_t* buffer, int size) {
    const auto length = text.copy(buffer, static_cast<std::size_t>(size) - 1);
    buffer[length] = 0;
    return static_cast<int>(length);
}

// The place of a value in the extra bytes; null with ERROR_INVALID_INDEX.
BYTE* extra_at(Window& window, int index, std::size_t size) {
    if (index >= 0 && window.extra.size() >= size &&
        static_cast<std::size_t>(index) <= window.extra.size() - size) {
        return window.extra.data() + index;
    }
    SetLastError(ERROR_INVALID_INDEX);
    return nullptr;
}

LONG_PTR value_of(Window& window, int index, std::size_t size) {
    switch (index) {
        case GWLP_WNDPROC:
            return reinterpret_cast<LONG_PTR>(window.procedure.load());
        case GWLP_HINSTANCE:
            return reinterpret_cast<LONG_PTR>(window.instance);
        case GWLP_HWNDPARENT:
            return reinterpret_cast<LONG_PTR>(
                handle_of(is_child(window) ? window.parent : window.owner));
        case GWLP_ID:
            return window.id;
        case GWL_STYLE:
            return static_cast<LONG>(window.style);
        case GWL_EXSTYLE:
            return static_cast<LONG>(window.ex_style);
        case GWLP_USERDATA:
            return window.user_data;
        default:
            break;
    }
    const auto* const place = extra_at(window, index, size);
    if (place == nullptr) return 0;
    LONG_PTR wide = 0;
    LONG narrow = 0;
    if (size == sizeof wide) {
        std::memcpy(&wide, place, size);
        return wide;
    }
    std::memcpy(&narrow, place, size);
    return narrow;
}

// The new owner of a window that is no child; false with ERROR_INVALID_WINDOW_HANDLE.
bool set_owner(const TreeLock& tree, Window& window, HWND owner) {
    auto* const record = owner != nullptr ? tree.find(owner) : nullptr;
    if (owner != nullptr && record == nullptr) return false;
    for (const auto* each = record; each != nullptr; each = each->owner) {
        if (each == &window) return fail_with(ERROR_INVALID_PARAMETER);
    }
    if (window.owner != nullptr) --window.owner->owned;
    window.owner = record;
    if (record != nullptr) ++record->owned;
    return true;
}

bool set_value(const TreeLock& tree, Window& window, int index, LONG_PTR value, std::size_t size) {
    switch (index) {
        case GWLP_WNDPROC:
            if (value == 0) return fail_with(ERROR_INVALID_PARAMETER);
            window.procedure.store(reinterpret_cast<WNDPROC>(value));
            return true;
        case GWLP_HINSTANCE:
            window.instance = reinterpret_cast<HINSTANCE>(value);
            return true;
        case GWLP_HWNDPARENT:
            if (is_child(window)) return fail_with(ERROR_INVALID_PARAMETER);
            return set_owner(tree, window, reinterpret_cast<HWND>(value));
        case GWLP_ID:
            window.id = value;
            return true;
        case GWL_STYLE:
            window.style = static_cast<DWORD>(value);
            return true;
        case GWL_EXSTYLE:
            window.ex_style = static_cast<DWORD>(value);
            return true;
        case GWLP_USERDATA:
            window.user_data = value;
            return true;
        default:
            break;
    }
    auto* const place = extra_at(window, index, size);
    if (place == nullptr) return false;
    const auto narrow = static_cast<LONG>(value);
    std::memcpy(place, size == sizeof value ? static_cast<const void*>(&value) : &narrow, size);
    return true;
}

LONG_PTR get_long(HWND window, int index, std::size_t size) {
    if (tvutil2::is_remote(window)) return fail_with(ERROR_ACCESS_DENIED);
    const TreeLock tree;
    auto* const record = tree.find(window);
    return record != nullptr ? value_of(*record, index, size) : 0;
}

LONG_PTR exchange_long(HWND window, int index, LONG_PTR value, std::size_t size) {
    if (tvutil2::is_remote(window)) return fail_with(ERROR_ACCESS_DENIED);
    const TreeLock tree;
    auto* const record = tree.find(window);
    if (record == nullptr) return 0;
    const auto before = value_of(*record, index, size);
    if (!set_value(tree, *record, index, value, size)) return 0;
    SetLastError(ERROR_SUCCESS);
    return before;
}

// A style, which the window hears of before, and may change, and behind.
LONG_PTR exchange_style(HWND window, int index, DWORD style) {
    STYLESTRUCT change{static_cast<DWORD>(get_long(window, index, sizeof(LONG))), style};
    const auto which = static_cast<WPARAM>(index);
    SendMessageW(window, WM_STYLECHANGING, which, reinterpret_cast<LPARAM>(&change));
    const auto before =
        exchange_long(window, index, static_cast<LONG_PTR>(change.styleNew), sizeof(LONG));
    const auto error = GetLastError();
    SendMessageW(window, WM_STYLECHANGED, which, reinterpret_cast<LPARAM>(&change));
    SetLastError(error);
    return before;
}

// The relative that `choose` finds; null for none, or with ERROR_INVALID_WINDOW_HANDLE.
template <class Choose>
HWND relative(HWND window, const Choose& choose) {
    const TreeLock tree;
    const auto* const record = tree.find(window);
    return record != nullptr ? handle_of(choose(*record)) : nullptr;
}

}  // namespace

LRESULT CallWindowProcW(WNDPROC procedure, HWND window, UINT message, WPARAM wparam,
                        LPARAM lparam) {
    return procedure != nullptr ? procedure(window, message, wparam, lparam) : 0;
}

LONG_PTR GetWindowLongPtrW(HWND window, int index) {
    return get_long(window, index, sizeof(LONG_PTR));
}

LONG_PTR SetWindowLongPtrW(HWND window, int index, LONG_PTR value) {
    if ((index == GWL_STYLE || index == GWL_EXSTYLE) && !tvutil2::is_remote(window) &&
        IsWindow(window)) {
        return exchange_style(window, index, static_cast<DWORD>(value));
    }
    return exchange_long(window, index, value, sizeof(LONG_PTR));
}

LONG GetWindowLongW(HWND window, int index) {
    return static_cast<LONG>(get_long(window, index, sizeof(LONG)));
}

LONG SetWindowLongW(HWND window, int index, LONG value) {
    if (index == GWLP_WNDPROC || index == GWLP_HINSTANCE || index == GWLP_HWNDPARENT) {
        fail_with(ERROR_INVALID_INDEX);
        return 0;
    }
    if ((index == GWL_STYLE || index == GWL_EXSTYLE) && !tvutil2::is_remote(window) &&
        IsWindow(window)) {
        return static_cast<LONG>(exchange_style(window, index, static_cast<DWORD>(value)));
    }
    return static_cast<LONG>(exchange_long(window, index, value, sizeof(LONG)));
}

BOOL SetWindowTextW(HWND window, const char16_t* text) {
    return static_cast<BOOL>(SendMessageW(window, WM_SETTEXT, 0,
                                          reinterpret_cast<LPARAM>(text != nullptr ? text : u"")));
}

int GetWindowTextW(HWND window, char16_t* text, int size) {
    if (text == nullptr || size <= 0) return 0;
    *text = 0;
    if (tvutil2::is_remote(window)) {
        const auto found = tvutil2::find_remote(window);
        return found ? copy_text(found->title, text, size) : 0;
    }
    return static_cast<int>(SendMessageW(window, WM_GETTEXT, static_cast<WPARAM>(size),
                                         reinterpret_cast<LPARAM>(text)));
}

int GetWindowTextLengthW(HWND window) {
    if (tvutil2::is_remote(window)) {
        const auto found = tvutil2::find_remote(window);
        return found ? static_cast<int>(found->title.size()) : 0;
    }
    return static_cast<int>(SendMessageW(window, WM_GETTEXTLENGTH, 0, 0));
}

int GetClassNameW(HWND window, char16_t* name, int size) {
    if (name == nullptr || size <= 0) return 0;
    if (tvutil2::is_remote(window)) {
        const auto found = tvutil2::find_remote(window);
        return copy_text(found ? found->class_name : u"", name, size);
    }
    const TreeLock tree;
    const auto* const record = tree.find(window);
    return copy_text(record != nullptr ? record->window_class->name : u"", name, size);
}

DWORD GetWindowThreadProcessId(HWND window, DWORD* process) {
    if (tvutil2::is_remote(window)) {
        const auto found = tvutil2::find_remote(window);
        if (found && process != nullptr) *process = tvutil2::WindowTable::process_of(window);
        return found ? found->thread : 0;
    }
    const TreeLock tree;
    const auto* const record = tree.find(window);
    if (record == nullptr) return 0;
    if (process != nullptr) *process = tree.table.process();
    return record->queue.load()->thread();
}

HWND GetParent(HWND window) {
    return relative(window, [](const Window& record) {
        return is_child(record) ? record.parent : record.owner;
    });
}

HWND GetWindow(HWND window, UINT which) {
    return relative(window, [which](const Window& record) -> const Window* {
        switch (which) {
            case GW_HWNDFIRST:
                return record.parent->first_child;
            case GW_HWNDLAST:
                return record.parent->last_child;
            case GW_HWNDNEXT:
                return record.next;
            case GW_HWNDPREV:
                return record.previous;
            case GW_OWNER:
                return record.owner;
            case GW_CHILD:
                return record.first_child;
            default:
                SetLastError(ERROR_INVALID_PARAMETER);
                return nullptr;
        }
    });
}

HWND GetAncestor(HWND window, UINT which) {
    return relative(window, [which](const Window& record) {
        const auto* ancestor = &record;
        if (which == GA_PARENT) return static_cast<const Window*>(record.parent);
        for (;;) {
            const auto* up = ancestor->parent->handle != 0 ? ancestor->parent : nullptr;
            if (up == nullptr && which == GA_ROOTOWNER) up = ancestor->owner;
            if (up == nullptr) return ancestor;
            ancestor = up;
        }
    });
}

BOOL IsChild(HWND parent, HWND window) {
    const TreeLock tree;
    const auto* const ancestor = tree.find(parent);
    const auto* record = tree.find(window);
    if (ancestor == nullptr || record == nullptr) return FALSE;
    while (is_child(*record) && record->parent->handle != 0) {
        record = record->parent;
        if (record == ancestor) return TRUE;
    }
    return FALSE;
}

HWND GetDlgItem(HWND parent, int id) {
    return relative(parent, [id](const Window& record) {
        const auto* child = record.first_child;
        while (child != nullptr && static_cast<int>(child->id) != id) child = child->next;
        return child;
    });
}

int GetDlgCtrlID(HWND window) {
    return static_cast<int>(get_long(window, GWLP_ID, sizeof(LONG_PTR)));
}
