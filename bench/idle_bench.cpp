// What windows cost while nothing happens: processor time and wake-ups of the whole process, by the
// second, with a window on the desktop, and with an edit whose caret blinks. Needs a display:
//
//     xvfb-run idle_bench [SECONDS]
#include "tvutil2/platform/window/classes.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/show.h"
#include "tvutil2/platform/window/timers.h"
#include "tvutil2/platform/window/window.h"

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "bench/support/profile.h"

namespace {

constexpr UINT kStartMilliseconds = 2000;
// A caret blinks twice a second; the desktop's library draws it in two or three wake-ups.
constexpr double kMostWakeUps = 15;
constexpr double kMostMilliseconds = 5;

struct Cost {
    double milliseconds = 0;
    long wake_ups = 0;
};

Cost cost_so_far() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto milliseconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
    };
    return {milliseconds(usage.ru_utime) + milliseconds(usage.ru_stime), usage.ru_nvcsw};
}

// Lets the program's loop run.
void run_for(UINT milliseconds) {
    const auto timer =
        SetTimer(nullptr, 0, milliseconds, [](HWND, UINT, UINT_PTR, DWORD) { PostQuitMessage(0); });
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0)) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    KillTimer(nullptr, timer);
}

bool measure(const char* what, int seconds) {
    run_for(kStartMilliseconds);
    const auto before = cost_so_far();
    run_for(static_cast<UINT>(seconds) * 1000);
    const auto after = cost_so_far();
    const auto time = (after.milliseconds - before.milliseconds) / seconds;
    const auto wake_ups = static_cast<double>(after.wake_ups - before.wake_ups) / seconds;
    const bool is_met = time <= kMostMilliseconds && wake_ups <= kMostWakeUps;
    std::printf("%-28s %6.2f ms/s %6.1f wake-ups/s  %s\n", what, time, wake_ups,
                is_met ? "met" : "MISSED");
    return is_met;
}

}  // namespace

int main(int count, char** arguments) {
    const int seconds = count > 1 ? std::max(std::atoi(arguments[1]), 1) : 5;
    bench::profile_folder();
    setenv("TVUTIL_DISPLAY", "desktop", 1);
    auto* const window = CreateWindowExW(0, u"#32770", u"Idle", WS_OVERLAPPEDWINDOW | WS_VISIBLE,
                                         100, 100, 400, 300, nullptr, nullptr, nullptr, nullptr);
    bool is_met = measure("a window", seconds);
    auto* const edit = CreateWindowExW(0, u"Edit", u"text", WS_CHILD | WS_VISIBLE, 10, 10, 200, 24,
                                       window, nullptr, nullptr, nullptr);
    SetFocus(edit);
    is_met = measure("an edit with its caret", seconds) && is_met;
    DestroyWindow(window);
    return is_met ? 0 : 1;
}
