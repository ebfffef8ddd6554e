#include "tvutil2/platform/base/clock.h"

#include "tvutil2/platform/base/last_error.h"

#include <atomic>
#include <chrono>
#include <ctime>

namespace {

namespace chrono = std::chrono;

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

chrono::year_month_day day_of(const SYSTEMTIME& date) {
    return {chrono::year(date.wYear), chrono::month(date.wMonth), chrono::day(date.wDay)};
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

BOOL SystemTimeToFileTime(const SYSTEMTIME* date, FILETIME* time) {
    const bool is_time =
        date->wHour < 24 && date->wMinute < 60 && date->wSecond < 60 && date->wMilliseconds < 1000;
    if (!is_time || !tvutil2::is_date(*date)) {
        return tvutil2::fail_with(ERROR_INVALID_PARAMETER);
    }
    const chrono::milliseconds since_1970 =
        chrono::sys_days(day_of(*date)).time_since_epoch() + chrono::hours(date->wHour) +
        chrono::minutes(date->wMinute) + chrono::seconds(date->wSecond) +
        chrono::milliseconds(date->wMilliseconds);
    const auto seconds = chrono::floor<chrono::seconds>(since_1970);
    *time =
        tvutil2::file_time_of(seconds.count(), chrono::nanoseconds(since_1970 - seconds).count());
    return TRUE;
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

bool is_date(const SYSTEMTIME& date) {
    return date.wYear >= 1601 && date.wYear <= 30827 && date.wMonth <= 12 && date.wDay <= 31 &&
           day_of(date).ok();
}

void set_clock(const FILETIME* time) {
    g_stopped_at.store(time == nullptr ? 0 : ticks_of(*time), std::memory_order_relaxed);
}

}  // namespace tvutil2
