// Dates and times as text, and the calendar time of the clock that a test can set.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

#include <ctime>

using __time64_t = std::int64_t;

inline constexpr LCID LOCALE_USER_DEFAULT = 0x0400;

/// A date after a picture of d, dd, M, MM, y, yy, yyyy (numbers, in ASCII digits of the Gregorian
/// calendar) and text, quoted ('...', with '' for an apostrophe) or as it stands. Null stands for
/// today. Units with the zero; with `size` 0 the room that is needed. 0 with
/// ERROR_INSUFFICIENT_BUFFER, ERROR_INVALID_PARAMETER (no date, no picture) or ERROR_NOT_SUPPORTED:
/// names of days, months and eras (ddd, MMM, g) and flags have no place here, and the numbers are
/// the same in every locale.
TVUTIL_API int GetDateFormatW(LCID locale, DWORD flags, const SYSTEMTIME* date,
                              const char16_t* picture, char16_t* buffer, int size);

/// Seconds since 1970-01-01 00:00 UTC; `time` may be null.
TVUTIL_API __time64_t _time64(__time64_t* time);
/// The parts of a time in the process's time zone. 0, or the C error EINVAL (22).
TVUTIL_API int _localtime64_s(std::tm* parts, const __time64_t* time);
/// The way back: fields beyond their range are carried over, in the parts too. -1 for what comes
/// before 1970 or has no time.
TVUTIL_API __time64_t _mktime64(std::tm* parts);

/// The run-time library's function on 16-bit text: the host's conversions, with the names of the
/// process's current C locale, English unless the program has set one. Units without the zero; 0,
/// and an empty buffer, when there is no room.
TVUTIL_API std::size_t wcsftime(char16_t* buffer, std::size_t size, const char16_t* format,
                                const std::tm* parts);
