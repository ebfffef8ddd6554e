#include "tvutil2/services/update_schedule.h"

#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/system/date_format.h"

#include <algorithm>

namespace tvutil2 {

std::int64_t schedule_seconds(const SYSTEMTIME& local) {
    FILETIME unused{};
    if (SystemTimeToFileTime(&local, &unused) == FALSE) return 0;
    std::tm parts{};
    parts.tm_year = local.wYear - 1900;
    parts.tm_mon = local.wMonth - 1;
    parts.tm_mday = local.wDay;
    parts.tm_hour = local.wHour;
    parts.tm_min = local.wMinute;
    parts.tm_sec = local.wSecond;
    parts.tm_isdst = -1;  // the zone knows
    return std::max<std::int64_t>(_mktime64(&parts), 0);
}

bool is_other_period(std::int64_t last, std::int64_t now, unsigned int days) {
    constexpr std::int64_t kDay = 86400;
    return days == 0 || last / kDay / days != now / kDay / days;
}

CString update_switches(int force, int checked) {
    CString switches;
    if (force == 0) switches += u" /silent";
    if (checked == 1) switches += u" /checked";
    return switches;
}

}  // namespace tvutil2
