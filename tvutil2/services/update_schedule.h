// When a check for updates is due, and what the update module is told: arithmetic without a clock
// and without a registry.
#pragma once

#include "tvutil2/framework/strings.h"
#include "tvutil2/platform/base/types.h"

namespace tvutil2 {

/// Seconds since 1970-01-01 00:00 UTC of a local time in the process's time zone. 0 for a time
/// before 1970, and for what is no date or no time of a day (a month of 13, say).
[[nodiscard]] TVUTIL_API std::int64_t schedule_seconds(const SYSTEMTIME& local);

/// Whether two times, in seconds since 1970, lie in different periods. Periods of that many whole
/// days follow one another from 1970-01-01 00:00 UTC on, whatever was checked when: after a check
/// on the last day of one the next is due a day later. An earlier period is another one too, as
/// when a clock is turned back. Always so for 0 days.
[[nodiscard]] TVUTIL_API bool is_other_period(std::int64_t last, std::int64_t now,
                                              unsigned int days);

/// The switches of a check: " /silent" unless it is forced, then " /checked" when the caller's
/// argument is 1.
[[nodiscard]] TVUTIL_API CString update_switches(int force, int checked);

}  // namespace tvutil2
