#include "tvutil2/platform/window/show.h"

#include "tvutil2/platform/window/endpoint.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/process_place.h"
#include "tvutil2/platform/window/remote.h"
#include "tvutil2/platform/window/window.h"
#include "tvutil2/platform/window/window_states.h"
#include "tvutil2/platform/window/window_table.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>

namespace {

// The window in front is known to all processes of the user; without a run-time folder, to this
// one.
std::atomic<std::uintptr_t> g_foreground{0};
constexpr const char* kForeground = "foreground";

// The form that a command gives a window; what stays as it is, for the others.
DWORD form_after(int command, DWORD form) {
    switch (command) {
        case SW_SHOWMINIMIZED:
        case SW_MINIMIZE:
        case SW_SHOWMINNOACTIVE:
            return WS_MINIMIZE;
        case SW_MAXIMIZE:
            return WS_MAXIMIZE;
        case SW_SHOWNORMAL:
        case SW_SHOWNOACTIVATE:
        case SW_RESTORE:
        case SW_SHOWDEFAULT:
            return 0;
        default:
            return form;
    }
}

WPARAM size_type(DWORD form) {
    if ((form & WS_MINIMIZE) != 0) return SIZE_MINIMIZED;
    return (form & WS_MAXIMIZE) != 0 ? SIZE_MAXIMIZED : SIZE_RESTORED;
}

bool has_style(HWND window, DWORD style) {
    if (tvutil2::is_remote(window)) {
        const auto found = tvutil2::find_remote(window);
        return found && (found->style & style) != 0;
    }
    const tvutil2::TreeLock tree;
    const auto* const record = tree.find(window);
    return record != nullptr && (record->style & style) != 0;
}

}  // namespace

namespace tvutil2 {

// Size, then place: what a window is told of them once it is there.
void tell_size(HWND window, bool anew) {
    RECT rect{};
    DWORD style = 0;
    {
        const TreeLock tree;
        auto* const record = tree.table.find(window);
        if (record == nullptr || (record->was_sized && !anew)) return;
        record->was_sized = true;
        rect = record->rect;
        style = record->style;
    }
    const bool is_minimised = (style & WS_MINIMIZE) != 0;
    const auto width = is_minimised ? 0 : rect.right - rect.left;
    const auto height = is_minimised ? 0 : rect.bottom - rect.top;
    SendMessageW(window, WM_SIZE, size_type(style),
                 MAKELPARAM(static_cast<WORD>(width), static_cast<WORD>(height)));
    SendMessageW(window, WM_MOVE, 0,
                 MAKELPARAM(static_cast<WORD>(rect.left), static_cast<WORD>(rect.top)));
}

}  // namespace tvutil2

BOOL ShowWindow(HWND window, int command) {
    constexpr auto kForm = WS_MINIMIZE | WS_MAXIMIZE;
    const bool shows = command != SW_HIDE;
    DWORD before = 0;
    DWORD form = 0;
    bool tells_others = false;
    {
        const tvutil2::TreeLock tree;
        auto* const record = tree.find(window);
        if (record == nullptr) return FALSE;
        before = record->style;
        form = form_after(command, before & kForm);
    }
    const bool was_shown = (before & WS_VISIBLE) != 0;
    if (shows != was_shown) SendMessageW(window, WM_SHOWWINDOW, shows ? TRUE : FALSE, 0);
    {
        const tvutil2::TreeLock tree;
        auto* const record = tree.table.find(window);
        if (record == nullptr) return was_shown ? TRUE : FALSE;
        tells_others = tvutil2::is_for_others(*record);
        record->style = (record->style & ~(kForm | WS_VISIBLE)) | form | (shows ? WS_VISIBLE : 0);
    }
    if (tells_others) tvutil2::publish_windows();
    if (shows) tvutil2::tell_size(window, form != (before & kForm));
    return was_shown ? TRUE : FALSE;
}

BOOL IsWindowVisible(HWND window) {
    if (tvutil2::is_remote(window)) return has_style(window, WS_VISIBLE) ? TRUE : FALSE;
    const tvutil2::TreeLock tree;
    const auto* record = tree.find(window);
    if (record == nullptr) return FALSE;
    for (; record->handle != 0; record = record->parent) {
        if ((record->style & WS_VISIBLE) == 0) return FALSE;
    }
    return TRUE;
}

BOOL IsIconic(HWND window) {
    return has_style(window, WS_MINIMIZE) ? TRUE : FALSE;
}

BOOL IsZoomed(HWND window) {
    return has_style(window, WS_MAXIMIZE) ? TRUE : FALSE;
}

BOOL EnableWindow(HWND window, BOOL enable) {
    bool was_disabled = false;
    {
        const tvutil2::TreeLock tree;
        auto* const record = tree.find(window);
        if (record == nullptr) return FALSE;
        was_disabled = (record->style & WS_DISABLED) != 0;
        record->style = (record->style & ~WS_DISABLED) | (enable ? 0 : WS_DISABLED);
    }
    if (was_disabled != (enable == 0)) {
        SendMessageW(window, WM_ENABLE, enable ? TRUE : FALSE, 0);
    }
    return was_disabled ? TRUE : FALSE;
}

BOOL IsWindowEnabled(HWND window) {
    const tvutil2::TreeLock tree;
    const auto* const record = tree.find(window);
    return record != nullptr && (record->style & WS_DISABLED) == 0 ? TRUE : FALSE;
}

BOOL BringWindowToTop(HWND window) {
    const tvutil2::TreeLock tree;
    auto* const record = tree.find(window);
    if (record == nullptr) return FALSE;
    auto& parent = *record->parent;
    tree.table.unlink(*record);
    tree.table.link_first(parent, *record);
    return TRUE;
}

BOOL SetForegroundWindow(HWND window) {
    if (tvutil2::is_remote(window) ? !IsWindow(window) : !BringWindowToTop(window)) return FALSE;
    const auto value = reinterpret_cast<std::uintptr_t>(window);
    g_foreground = value;
    const auto file = tvutil2::open_shared_file(kForeground, O_WRONLY | O_CREAT);
    if (file) [[maybe_unused]]
        const auto size = pwrite(file.get(), &value, sizeof value, 0);
    return TRUE;
}

HWND GetForegroundWindow() {
    auto value = g_foreground.load();
    const auto file = tvutil2::open_shared_file(kForeground, O_RDONLY);
    if (file && pread(file.get(), &value, sizeof value, 0) != sizeof value) return nullptr;
    auto* const window = reinterpret_cast<HWND>(value);
    return IsWindow(window) ? window : nullptr;
}
