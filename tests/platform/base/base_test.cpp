// The small rooms of the base: texts, UTF, clock.
#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/base/guid.h"
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/base/wide_text.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <limits>
#include <string>

namespace {

int sign(int value) {
    return (value > 0) - (value < 0);
}

TEST(WideText, Comparisons) {
    const struct {
        const char16_t* a;
        const char16_t* b;
        int with_case;
        int without_case;
    } cases[] = {
        {u"a", u"a", 0, 0},          {u"a", u"B", -1, -1},       {u"a", u"A", -1, 0},
        {u"10", u"8", -1, -1},       {u"1.0", u"1.0.1", -1, -1}, {u"co-op", u"coop", 1, 1},
        {u"co-op", u"copy", -1, -1}, {u"\u00E4", u"b", -1, -1},  {u"", u"a", -1, -1},
        {nullptr, u"", -1, -1},      {nullptr, nullptr, 0, 0},   {u"\u00C4", u"\u00E4", 1, 0},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(sign(lstrcmpW(c.a, c.b)), c.with_case);
        EXPECT_EQ(sign(lstrcmpW(c.b, c.a)), -c.with_case);
        EXPECT_EQ(sign(lstrcmpiW(c.a, c.b)), c.without_case);
    }
    EXPECT_EQ(_wcsicmp(u"ABC\u00C4", u"abc\u00E4"), 0);
    EXPECT_GT(_wcsicmp(u"Z", u"_"), 0) << "lowered, not raised";
}

// Where case is passed over, nothing else is.
TEST(WideText, OtherFormsOfALetterAreOtherLetters) {
    const std::pair<const char16_t*, const char16_t*> different[] = {
        {u"\u3042", u"\u30A2"}, {u"\uFF71", u"\u30A2"}, {u"\uFF41", u"a"}, {u"\uFF11", u"1"},
        {u"\u00AA", u"a"},      {u"\u00B2", u"2"},      {u"\u24D0", u"a"}, {u"\u017F", u"s"},
        {u"\u0130", u"i"},      {u"\u210C", u"h"},
    };
    for (const auto& [a, b] : different) EXPECT_NE(lstrcmpiW(a, b), 0) << tvutil2::to_utf8_lossy(a);
    const std::pair<const char16_t*, const char16_t*> same[] = {
        {u"\uFF21", u"\uFF41"}, {u"\u0416x", u"\u0436X"}, {u"\u24B6", u"\u24D0"},
        {u"\u01C4", u"\u01C6"}, {u"E\u0301", u"\u00E9"},
    };
    for (const auto& [a, b] : same) EXPECT_EQ(lstrcmpiW(a, b), 0) << tvutil2::to_utf8_lossy(a);
}

// Every length at the end of a page, with nothing behind it and no zero in front.
TEST(WideText, LengthReadsNoPageBeyondItsText) {
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    auto* const pages =
        mmap(nullptr, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(pages, MAP_FAILED);
    ASSERT_EQ(mprotect(static_cast<char*>(pages) + page, page, PROT_NONE), 0);
    auto* const units = static_cast<char16_t*>(pages);
    const std::size_t count = page / sizeof *units;
    for (std::size_t i = 0; i < count; ++i)
        units[i] = static_cast<char16_t>(i % 2 == 0 ? 1 : 0x100);
    for (std::size_t last = 200; last > 0; --last) {
        units[count - last] = 0;
        for (std::size_t size = 0; size < 200; ++size) {
            ASSERT_EQ(lstrlenW(units + count - last - size), static_cast<int>(size));
        }
        units[count - last] = 0x8000;
    }
    EXPECT_EQ(lstrlenW(nullptr), 0);
    munmap(pages, 2 * page);
}

TEST(WideText, Numbers) {
    const std::pair<const char16_t*, int> cases[] = {
        {u"", 0},
        {nullptr, 0},
        {u" \t-12x", -12},
        {u"+7", 7},
        {u"- 7", 0},
        {u"0x10", 0},
        {u"2147483648", std::numeric_limits<int>::max()},
        {u"-2147483648", std::numeric_limits<int>::min()},
        {u"-99999999999999999999999", std::numeric_limits<int>::min()},
    };
    for (const auto& [text, value] : cases) EXPECT_EQ(_wtoi(text), value);

    constexpr int kLargest = std::numeric_limits<int>::max();
    EXPECT_EQ(MulDiv(7, 96, 72), 9);
    EXPECT_EQ(MulDiv(-1, 1, 2), -1);
    EXPECT_EQ(MulDiv(1, 1, -2), -1);
    EXPECT_EQ(MulDiv(kLargest, kLargest, kLargest), kLargest);
    EXPECT_EQ(MulDiv(kLargest, 2, 1), -1);
    EXPECT_EQ(MulDiv(1, 1, 0), -1);
    EXPECT_EQ(MulDiv(std::numeric_limits<int>::min(), 1, std::numeric_limits<int>::min()), 1);
}

TEST(WideText, SplitPath) {
    const struct {
        const char16_t* path;
        std::u16string drive, folder, name, extension;
    } cases[] = {
        {u"C:\\a\\b.c.d", u"C:", u"\\a\\", u"b.c", u".d"},
        {u"b", u"", u"", u"b", u""},
        {u"a/b\\", u"", u"a/b\\", u"", u""},
        {u"C:b.c", u"C:", u"", u"b", u".c"},
        {u"a.b\\c", u"", u"a.b\\", u"c", u""},
        {u".c", u"", u"", u"", u".c"},
        {u"", u"", u"", u"", u""},
    };
    char16_t drive[3], folder[16], name[8], extension[8];
    for (const auto& c : cases) {
        EXPECT_EQ(_wsplitpath_s(c.path, drive, 3, folder, 16, name, 8, extension, 8), 0);
        EXPECT_EQ(drive, c.drive);
        EXPECT_EQ(folder, c.folder);
        EXPECT_EQ(name, c.name);
        EXPECT_EQ(extension, c.extension);
    }
    EXPECT_EQ(_wsplitpath_s(u"C:\\a\\12345678", drive, 3, folder, 16, name, 8, extension, 8),
              ERANGE);
    EXPECT_EQ(std::u16string(drive) + folder + name + extension, u"");
    EXPECT_EQ(_wsplitpath_s(u"C:\\a\\b", nullptr, 0, nullptr, 0, name, 8, nullptr, 0), 0);
    EXPECT_EQ(std::u16string(name), u"b");
    EXPECT_EQ(_wsplitpath_s(nullptr, drive, 3, folder, 16, name, 8, extension, 8), EINVAL);
    EXPECT_EQ(_wsplitpath_s(u"x", drive, 0, folder, 16, name, 8, extension, 8), EINVAL);
}

TEST(Utf, RoundTripsAndRefusals) {
    for (const std::u16string text : {u"", u"a\u0080\u07FF\u0800\uFFFF", u"\U00010000\U0010FFFF"}) {
        const auto utf8 = tvutil2::to_utf8(text);
        ASSERT_TRUE(utf8.has_value());
        EXPECT_EQ(tvutil2::to_utf16(*utf8), text);
    }
    for (const std::u16string lone : {u"\xD800", u"a\xDC00z", u"\xDC00\xD800", u"\xD800\xD800"}) {
        EXPECT_EQ(tvutil2::to_utf8(lone), std::nullopt);
        EXPECT_NE(tvutil2::to_utf8_lossy(lone).find("\xEF\xBF\xBD"), std::string::npos);
    }
    const std::pair<const char*, std::u16string> bad[] = {
        {"a\xC0\x80z", u"a\uFFFD\uFFFDz"},                  // overlong
        {"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},            // a surrogate
        {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},  // above U+10FFFF
        {"\xE4\xB8", u"\uFFFD\uFFFD"},                      // cut short
        {"\xC3z", u"\uFFFDz"},
        {"\x80", u"\uFFFD"},
    };
    for (const auto& [bytes, lossy] : bad) {
        EXPECT_EQ(tvutil2::to_utf16(bytes), std::nullopt);
        EXPECT_EQ(tvutil2::to_utf16_lossy(bytes), lossy);
    }
}

TEST(Clock, StopsAndCounts) {
    setenv("TZ", "UTC", 1);
    const FILETIME leap = tvutil2::file_time_of(1709210096, 250000000);  // 2024-02-29 12:34:56.25
    tvutil2::set_clock(&leap);
    SYSTEMTIME time{};
    GetSystemTime(&time);
    EXPECT_EQ(time.wYear, 2024);
    EXPECT_EQ(time.wMonth, 2);
    EXPECT_EQ(time.wDay, 29);
    EXPECT_EQ(time.wDayOfWeek, 4);
    EXPECT_EQ(time.wHour, 12);
    EXPECT_EQ(time.wMilliseconds, 250);
    FILETIME now{};
    GetSystemTimeAsFileTime(&now);
    EXPECT_EQ(CompareFileTime(&now, &leap), 0);
    tvutil2::set_clock(nullptr);
    GetSystemTimeAsFileTime(&now);
    EXPECT_EQ(CompareFileTime(&now, &leap), 1);
    EXPECT_EQ(CompareFileTime(&leap, &now), -1);
}

TEST(Clock, TurnsDatesIntoFileTimes) {
    const struct {
        SYSTEMTIME date;
        std::uint64_t ticks;  // 0: no date
    } cases[] = {
        {{1601, 1, 0, 1, 0, 0, 0, 1}, 10000},
        {{1970, 1, 99, 1, 0, 0, 0, 0}, 116444736000000000},
        {{2024, 2, 0, 29, 12, 34, 56, 250}, 133536836962500000},
        {{30827, 12, 0, 31, 23, 59, 59, 999}, 9223149887999990000},
        {{2023, 2, 0, 29, 0, 0, 0, 0}, 0},
        {{2024, 13, 0, 1, 0, 0, 0, 0}, 0},
        {{2024, 0, 0, 1, 0, 0, 0, 0}, 0},
        {{2024, 257, 0, 1, 0, 0, 0, 0}, 0},
        {{2024, 1, 0, 257, 0, 0, 0, 0}, 0},
        {{2024, 1, 0, 0, 0, 0, 0, 0}, 0},
        {{2024, 1, 0, 1, 24, 0, 0, 0}, 0},
        {{2024, 1, 0, 1, 0, 0, 60, 0}, 0},
        {{1600, 1, 0, 1, 0, 0, 0, 0}, 0},
        {{65535, 1, 0, 1, 0, 0, 0, 0}, 0},
    };
    for (const auto& [date, ticks] : cases) {
        FILETIME time{};
        EXPECT_EQ(SystemTimeToFileTime(&date, &time), ticks != 0 ? TRUE : FALSE) << date.wYear;
        EXPECT_EQ(tvutil2::ticks_of(time), ticks) << date.wYear << ' ' << date.wMonth;
    }
}

TEST(Guid, IsRandomAndSaysSo) {
    constexpr GUID kFixed{
        0x01234567, 0x89AB, 0xCDEF, {0, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF}};
    char16_t* text = nullptr;
    ASSERT_EQ(UuidToStringW(&kFixed, &text), RPC_S_OK);
    EXPECT_EQ(std::u16string(text), u"01234567-89ab-cdef-0023-456789abcdef");
    EXPECT_EQ(RpcStringFreeW(&text), RPC_S_OK);
    EXPECT_EQ(text, nullptr);
    GUID a{};
    GUID b{};
    ASSERT_EQ(CoCreateGuid(&a), S_OK);
    ASSERT_EQ(CoCreateGuid(&b), S_OK);
    EXPECT_FALSE(a == b);
    EXPECT_EQ(a.Data3 >> 12, 4);
    EXPECT_EQ(a.Data4[0] >> 6, 2);
}

}  // namespace
