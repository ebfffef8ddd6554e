#include "tvutil2/platform/window/hooks.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/window/thread_queue.h"
#include "tvutil2/platform/window/window.h"

#include <algorithm>
#include <vector>

namespace {

struct Hook {
    HHOOK handle;
    HOOKPROC procedure;
};

// The oldest first. Handles are numbers that aren't given out again.
struct Hooks {
    std::vector<Hook> all;
    std::uintptr_t next_handle = 1;
    HHOOK running = nullptr;
};

thread_local Hooks t_hooks;

auto find_hook(HHOOK handle) {
    return std::find_if(t_hooks.all.begin(), t_hooks.all.end(),
                        [handle](const Hook& hook) { return hook.handle == handle; });
}

LRESULT call(const Hook& hook, int code, WPARAM wparam, LPARAM lparam) {
    struct Running {
        HHOOK before = t_hooks.running;
        explicit Running(HHOOK now) { t_hooks.running = now; }
        ~Running() { t_hooks.running = before; }
        Running(const Running&) = delete;
        Running& operator=(const Running&) = delete;
    } running(hook.handle);
    return hook.procedure(code, wparam, lparam);
}

}  // namespace

HHOOK SetWindowsHookExW(int kind, HOOKPROC procedure, HINSTANCE /*module*/, DWORD thread) {
    if (kind != WH_CBT || procedure == nullptr) {
        SetLastError(ERROR_INVALID_HOOK_FILTER);
        return nullptr;
    }
    if (thread != tvutil2::ThreadQueue::current().thread()) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    auto* const handle = reinterpret_cast<HHOOK>(t_hooks.next_handle++);
    t_hooks.all.push_back({handle, procedure});
    return handle;
}

BOOL UnhookWindowsHookEx(HHOOK hook) {
    const auto found = find_hook(hook);
    if (found == t_hooks.all.end()) return tvutil2::fail_with(ERROR_INVALID_HOOK_HANDLE);
    t_hooks.all.erase(found);
    return TRUE;
}

LRESULT CallNextHookEx(HHOOK /*hook*/, int code, WPARAM wparam, LPARAM lparam) {
    const auto running = find_hook(t_hooks.running);
    if (running == t_hooks.all.end() || running == t_hooks.all.begin()) return 0;
    const auto next = *std::prev(running);
    return call(next, code, wparam, lparam);
}

bool tvutil2::call_creation_hooks(HWND window, CREATESTRUCTW& given) {
    if (t_hooks.all.empty()) return true;
    CBT_CREATEWNDW creation{&given, nullptr};
    const auto latest = t_hooks.all.back();
    const auto refusal = call(latest, HCBT_CREATEWND, reinterpret_cast<WPARAM>(window),
                              reinterpret_cast<LPARAM>(&creation));
    return refusal == 0 && IsWindow(window) != 0;
}
