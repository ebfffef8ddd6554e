#include "tvutil2/services/update_schedule.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

constexpr std::int64_t kDay = 86400;

TEST(UpdateSchedule, PeriodsAreCountedFrom1970AndNotFromTheLastCheck) {
    const struct {
        std::int64_t last, now;
        unsigned int days;
        bool is_due;
    } cases[] = {
        {13 * kDay, 14 * kDay, 7, true},
        {14 * kDay, 20 * kDay, 7, false},
        {14 * kDay - 1, 14 * kDay, 7, true},
        {14 * kDay, 21 * kDay - 1, 7, false},
        {20 * kDay, 13 * kDay, 7, true},
        {20 * kDay, 14 * kDay, 7, false},
        {0, 6 * kDay, 7, false},
        {5, 5, 0, true},
        {kDay - 1, kDay, 1, true},
        {0, 20000 * kDay, 0xFFFFFFFF, false},
    };
    for (const auto& [last, now, days, is_due] : cases)
        EXPECT_EQ(tvutil2::is_other_period(last, now, days), is_due) << last << ' ' << now;
}

TEST(UpdateSchedule, SecondsOfALocalTimeAreThoseOfUtc) {
    setenv("TZ", "Europe/Berlin", 1);
    const struct {
        SYSTEMTIME date;
        std::int64_t seconds;
    } cases[] = {
        {{2024, 7, 0, 1, 1, 30, 0, 999}, 1719790200},  // still June in UTC
        {{2024, 1, 0, 1, 0, 30, 0, 0}, 1704065400},
        {{1970, 1, 0, 1, 1, 0, 1, 0}, 1},
        {{1970, 1, 0, 1, 0, 0, 0, 0}, 0},
        {{1899, 1, 0, 1, 0, 0, 0, 0}, 0},
        {{2024, 13, 0, 1, 0, 0, 0, 0}, 0},
        {{2024, 2, 0, 30, 0, 0, 0, 0}, 0},
        {{65535, 65535, 65535, 65535, 65535, 65535, 65535, 65535}, 0},
    };
    for (const auto& [date, seconds] : cases)
        EXPECT_EQ(tvutil2::schedule_seconds(date), seconds) << date.wYear << ' ' << date.wMonth;
}

}  // namespace
