#include "tvutil2/platform/base/clock.h"

#include <atomic>
#include <ctime>

namespace {

std::atomic<std::uint64_t> g_stopped_at{0};  // 0: the clock runs

constexpr std::uint64_t kTicksPerSecond = 10000000;
constexpr std::uint64_t kSecondsTo1970 = 11644473600;

std::uint64_t now() {
    if (const auto stopped = g_stopped_at.load(std::memory_order_relaxed)) return stopped;
    timespec time{};
    clock_gettime(CLOCK_REALTIME, &time);
    return tvutil2::ticks_of(tvutil2::file_time_of(time.tv_sec, time.tv_nsec));
}

void fill(SYSTEMTIME* out, tm* (*split)(const time_t*, tm*)) {
    const auto ticks = now();
    const auto seconds = static_cast<time_t>(ticks / kTicksPerSecond - kSecondsTo1970);
    tm parts{};
    split(&seconds, &parts);
    const auto word = [](int value) { return static_cast<WORD>(value); };
    *out = {word(parts.tm_year + 1900), word(parts.tm_mon + 1),
            word(parts.tm_wday),        word(parts.tm_mday),
            word(parts.tm_hour),        word(parts.tm_min),
            word(parts.tm_sec),         static_cast<WORD>(ticks % kTicksPerSecond / 10000)};
}

}  // namespace

void GetSystemTimeAsFileTime(FILETIME* time) {
    *time = tvutil2::file_time_of(now());
}

void GetLocalTime(SYSTEMTIME* time) {
    fill(time, localtime_r);
}

void GetSystemTime(SYSTEMTIME* time) {
    fill(time, gmtime_r);
}

LONG CompareFileTime(const FILETIME* a, const FILETIME* b) {
    const auto left = tvutil2::ticks_of(*a);
    const auto right = tvutil2::ticks_of(*b);
    return left < right ? -1 : static_cast<LONG>(left > right);
}

DWORD GetTickCount() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC_COARSE, &time);
    return static_cast<DWORD>(static_cast<std::uint64_t>(time.tv_sec) * 1000 +
                              static_cast<std::uint64_t>(time.tv_nsec) / 1000000);
}

namespace tvutil2 {

void set_clock(const FILETIME* time) {
    g_stopped_at.store(time == nullptr ? 0 : ticks_of(*time), std::memory_order_relaxed);
}

}  // namespace tvutil2
