#include "tvutil2/platform/window/show.h"

#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/process_place.h"
#include "tvutil2/platform/window/remote.h"
#include "tvutil2/platform/window/screen.h"
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
namespace {

constexpr DWORD kForm = WS_MINIMIZE | WS_MAXIMIZE;

// The place of a window in a form: minimised it keeps the one that it had.
RECT place_in(HWND window, DWORD form, const RECT& now, const RECT& normal) {
    if ((form & WS_MINIMIZE) != 0) return now;
    if ((form & WS_MAXIMIZE) == 0) return normal;
    const auto limits = limits_of(window);
    const auto& corner = limits.ptMaxPosition;
    const auto size = within(limits, {limits.ptMaxSize.x, limits.ptMaxSize.y});
    return {corner.x, corner.y, corner.x + size.cx, corner.y + size.cy};
}

// Carries a change of the form out; false when the window has gone.
bool change_form(HWND window, DWORD form, UINT flags) {
    RECT now{};
    RECT normal{};
    {
        const TreeLock tree;
        auto* const record = tree.table.find(window);
        if (record == nullptr) return false;
        if ((record->style & kForm) == 0) record->normal = record->rect;
        now = record->rect;
        normal = record->normal;
        record->style = (record->style & ~kForm) | form;
    }
    const auto place = place_in(window, form, now, normal);
    SetWindowPos(window, nullptr, place.left, place.top, place.right - place.left,
                 place.bottom - place.top, (flags & ~(SWP_NOMOVE | SWP_NOSIZE)) | SWP_FRAMECHANGED);
    return IsWindow(window) != 0;
}

UINT flags_of(int command, bool is_child) {
    const bool is_quiet = is_child || command == SW_SHOWNOACTIVATE || command == SW_SHOWNA ||
                          command == SW_SHOWMINNOACTIVE || command == SW_MINIMIZE ||
                          command == SW_HIDE;
    return SWP_NOMOVE | SWP_NOSIZE | (is_quiet ? SWP_NOACTIVATE | SWP_NOZORDER : 0U);
}

}  // namespace
}  // namespace tvutil2

BOOL ShowWindow(HWND window, int command) {
    const bool shows = command != SW_HIDE;
    DWORD before = 0;
    bool is_child = false;
    {
        const tvutil2::TreeLock tree;
        const auto* const record = tree.find(window);
        if (record == nullptr) return FALSE;
        before = record->style;
        is_child = tvutil2::is_child(*record);
    }
    const bool was_shown = (before & WS_VISIBLE) != 0;
    const auto form = form_after(command, before & tvutil2::kForm);
    const bool changes_form = form != (before & tvutil2::kForm);
    if (shows == was_shown && !changes_form) return was_shown ? TRUE : FALSE;
    if (shows != was_shown) SendMessageW(window, WM_SHOWWINDOW, shows ? TRUE : FALSE, 0);
    const UINT flags =
        tvutil2::flags_of(command, is_child) | (shows ? SWP_SHOWWINDOW : SWP_HIDEWINDOW);
    if (changes_form) {
        if (!tvutil2::change_form(window, form, flags)) return was_shown ? TRUE : FALSE;
    } else {
        SetWindowPos(window, nullptr, 0, 0, 0, 0, flags);
    }
    if (shows) tvutil2::tell_size(window, false);
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
    if (was_disabled == (enable == 0)) return was_disabled ? TRUE : FALSE;
    if (!enable) {
        SendMessageW(window, WM_CANCELMODE, 0, 0);
        if (GetFocus() == window) SetFocus(nullptr);
    }
    tvutil2::tell_display(window, false);
    SendMessageW(window, WM_ENABLE, enable ? TRUE : FALSE, 0);
    return was_disabled ? TRUE : FALSE;
}

BOOL IsWindowEnabled(HWND window) {
    const tvutil2::TreeLock tree;
    const auto* const record = tree.find(window);
    return record != nullptr && (record->style & WS_DISABLED) == 0 ? TRUE : FALSE;
}

BOOL BringWindowToTop(HWND window) {
    return SetWindowPos(window, HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
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
