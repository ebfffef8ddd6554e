#include "tvutil2/threads/window_timer.h"

#include "tvutil2/framework/map.h"
#include "tvutil2/platform/process/modules.h"
#include "tvutil2/platform/window/classes.h"
#include "tvutil2/platform/window/timers.h"
#include "tvutil2/platform/window/window.h"

#include <mutex>

namespace {

constexpr const char16_t* kClass = u"TVUTIL2::TIMERWND";

// Who has which window. The lock is for objects of several threads.
struct TimerWindows {
    std::mutex lock;
    CMap<HWND, HWND, CTimer*, CTimer*> owners;
};

// Never destroyed: static timers may end behind it.
TimerWindows& windows() {
    static auto* const instance = new TimerWindows;
    return *instance;
}

CTimer* owner_of(HWND window) {
    auto& all = windows();
    const std::lock_guard guard(all.lock);
    CTimer* owner = nullptr;
    all.owners.Lookup(window, owner);
    return owner;
}

void register_class(WNDPROC procedure) {
    [[maybe_unused]] static const auto atom = [procedure] {
        WNDCLASSW description{};
        description.lpfnWndProc = procedure;
        description.hInstance = GetModuleHandleW(nullptr);
        description.lpszClassName = kClass;
        return RegisterClassW(&description);
    }();
}

}  // namespace

CTimer::CTimer(CTimerListener* listener) : m_listener(listener) {}

CTimer::~CTimer() {
    if (m_window == nullptr) return;
    {
        auto& all = windows();
        const std::lock_guard guard(all.lock);
        all.owners.RemoveKey(m_window);
    }
    DestroyWindow(m_window);
}

CTimerListener* CTimer::SetListener(CTimerListener* listener) {
    auto* const former = m_listener;
    m_listener = listener;
    return former;
}

bool CTimer::make_window() {
    register_class(TimerProc);
    m_window = CreateWindowExW(0, kClass, u"", 0, 0, 0, 0, 0, nullptr, nullptr,
                               GetModuleHandleW(nullptr), nullptr);
    if (m_window == nullptr) return false;
    auto& all = windows();
    const std::lock_guard guard(all.lock);
    all.owners.SetAt(m_window, this);
    return true;
}

int CTimer::Start(unsigned id, unsigned milliseconds) {
    if (m_window == nullptr && !make_window()) return 0;
    if (milliseconds == 0) {
        KillTimer(m_window, id);
        return 1;
    }
    return SetTimer(m_window, id, milliseconds, nullptr) != 0 ? 1 : 0;
}

void CTimer::Stop(unsigned id) {
    if (m_window != nullptr) KillTimer(m_window, id);
}

LRESULT CTimer::TimerProc(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    auto* const timer = message == WM_TIMER ? owner_of(window) : nullptr;
    if (timer == nullptr) return DefWindowProcW(window, message, wparam, lparam);
    if (timer->m_listener != nullptr) {
        timer->m_listener->OnTimer(timer, static_cast<unsigned>(wparam));
    }
    return 0;
}
