// Local and system time, through one clock that a test can set.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

TVUTIL_API void GetSystemTimeAsFileTime(FILETIME* time);
TVUTIL_API void GetLocalTime(SYSTEMTIME* time);
TVUTIL_API void GetSystemTime(SYSTEMTIME* time);
/// A date and time as a file time, whatever its day of the week is. FALSE with
/// ERROR_INVALID_PARAMETER, and no change, for what is no date (tvutil2::is_date) or no time of a
/// day.
TVUTIL_API BOOL SystemTimeToFileTime(const SYSTEMTIME* date, FILETIME* time);
/// -1, 0 or 1.
TVUTIL_API LONG CompareFileTime(const FILETIME* a, const FILETIME* b);
/// Milliseconds since the machine started, from 0 again after 49.7 days; no set clock stops it.
TVUTIL_API DWORD GetTickCount();

namespace tvutil2 {

[[nodiscard]] constexpr std::uint64_t ticks_of(FILETIME time) {
    return (std::uint64_t{time.dwHighDateTime} << 32) | time.dwLowDateTime;
}
[[nodiscard]] constexpr FILETIME file_time_of(std::uint64_t ticks) {
    return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}
/// From the host's seconds and nanoseconds since 1970.
[[nodiscard]] constexpr FILETIME file_time_of(std::int64_t seconds, std::int64_t nanoseconds) {
    return file_time_of(
        static_cast<std::uint64_t>((seconds + 11644473600) * 10000000 + nanoseconds / 100));
}

/// Whether year (1601 to 30827), month and day are those of a day of the calendar.
[[nodiscard]] TVUTIL_API bool is_date(const SYSTEMTIME& date);

/// Stops the clock at a time, for tests; null lets it run again. Safe from any thread.
TVUTIL_API void set_clock(const FILETIME* time);

}  // namespace tvutil2
