// Error texts, the platform's version, dates, and the initialisation of threads.
#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/base/com.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/notify/notify_errors.h"
#include "tvutil2/platform/process/account.h"
#include "tvutil2/platform/system/date_format.h"
#include "tvutil2/platform/system/error_text.h"
#include "tvutil2/platform/system/os_version.h"
#include "tvutil2/platform/trust/trust_errors.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

constexpr DWORD kFlags = FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS;

std::u16string text_of(DWORD error) {
    char16_t text[200];
    const auto size = FormatMessageW(kFlags, nullptr, error, 0x400, text, 200, nullptr);
    return {text, size};
}

TEST(ErrorText, IsThereForEveryErrorOfTheHost) {
    for (int error = 0; error < 256; ++error) {
        const auto text = text_of(tvutil2::error_from_errno(error));
        EXPECT_TRUE(text.ends_with(u".\r\n")) << error;
    }
    EXPECT_EQ(text_of(0x80070005), text_of(ERROR_ACCESS_DENIED));
    for (const auto error :
         {DWORD{ERROR_NOT_FOUND}, static_cast<DWORD>(E_FAIL),
          static_cast<DWORD>(TRUST_E_BAD_DIGEST), DWORD{CRYPT_E_NO_MATCH},
          static_cast<DWORD>(CERT_E_EXPIRED), static_cast<DWORD>(WPN_E_PLATFORM_UNAVAILABLE)}) {
        EXPECT_TRUE(text_of(error).ends_with(u".\r\n")) << std::hex << error;
    }
    EXPECT_EQ(text_of(0x2BADBEEF), u"");
}

TEST(ErrorText, FillsABufferOrMakesOne) {
    char16_t* made = nullptr;
    const auto size =
        FormatMessageW(kFlags | FORMAT_MESSAGE_ALLOCATE_BUFFER, nullptr, ERROR_DISK_FULL, 0,
                       reinterpret_cast<char16_t*>(&made), 0, nullptr);
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(std::u16string(made), text_of(ERROR_DISK_FULL));
    EXPECT_EQ(size, std::u16string(made).size());
    LocalFree(reinterpret_cast<HLOCAL>(made));

    char16_t small[200];
    EXPECT_EQ(FormatMessageW(kFlags, nullptr, ERROR_DISK_FULL, 0, small, size, nullptr), 0U);
    EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(FormatMessageW(kFlags, nullptr, ERROR_DISK_FULL, 0, small, size + 1, nullptr), size);
    EXPECT_EQ(FormatMessageW(0, nullptr, ERROR_DISK_FULL, 0, small, 200, nullptr), 0U);
}

TEST(OsVersion, ComparesNumbersByPlace) {
    const struct {
        DWORD major, minor;
        WORD pack;
        BYTE condition;
        BOOL answer;
    } cases[] = {
        {10, 0, 0, VER_GREATER_EQUAL, 1},
        {10, 0, 0, VER_EQUAL, 1},
        {10, 0, 0, VER_GREATER, 0},
        {6, 3, 1, VER_GREATER_EQUAL, 1},  // by the first place
        {10, 1, 0, VER_GREATER_EQUAL, 0},
        {11, 0, 0, VER_LESS, 1},
        {10, 0, 1, VER_GREATER_EQUAL, 0},
        {10, 0, 0, VER_LESS_EQUAL, 1},
        {10, 0, 0, 0, 0},
    };
    constexpr DWORD kTypes = VER_MAJORVERSION | VER_MINORVERSION | VER_SERVICEPACKMAJOR;
    for (const auto& [major, minor, pack, condition, answer] : cases) {
        OSVERSIONINFOEXW asked{};
        asked.dwMajorVersion = major;
        asked.dwMinorVersion = minor;
        asked.wServicePackMajor = pack;
        const auto mask = VerSetConditionMask(0, kTypes, condition);
        EXPECT_EQ(VerifyVersionInfoW(&asked, kTypes, mask), answer) << major << '.' << minor;
    }
}

TEST(OsVersion, ReadsTheDistributionsFile) {
    const struct {
        const char* content;
        const char* value;  // null: none
    } cases[] = {
        {"PRETTY_NAME=\"Debian GNU/Linux 12 (bookworm)\"\n", "Debian GNU/Linux 12 (bookworm)"},
        {"ID=x\nPRETTY_NAME=Plain", "Plain"},
        {"PRETTY_NAME='It is \\\"'\n", "It is \\\""},
        {"PRETTY_NAME=\"a\\\"b\\\\c\" tail\n", "a\"b\\c"},
        {"PRETTY_NAME=\"open", "open"},
        {"PRETTY_NAME=", ""},
        {"XPRETTY_NAME=a\nPRETTY_NAMES=b\n", nullptr},
        {"", nullptr},
    };
    for (const auto& [content, value] : cases) {
        const auto found = tvutil2::os_release_value(content, "PRETTY_NAME");
        EXPECT_EQ(found.value_or("none"), value != nullptr ? value : "none") << content;
    }
    EXPECT_FALSE(tvutil2::host_facts().product.empty());
}

TEST(DateFormat, FollowsItsPicture) {
    const SYSTEMTIME date{2026, 5, 2, 3, 14, 3, 27, 418};
    const SYSTEMTIME no_date{2026, 2, 0, 29, 0, 0, 0, 0};
    const struct {
        const char16_t* picture;
        const char16_t* text;
        DWORD error = 0;
    } cases[] = {
        {u"yyyyMMdd", u"20260503"},
        {u"d/M/yy", u"3/5/26"},
        {u"y 'of' 'o''clock'", u"26 of o'clock"},
        {u"'open", u"open"},
        {u"", u""},
        {u"dddd", nullptr, ERROR_NOT_SUPPORTED},
        {u"gg", nullptr, ERROR_NOT_SUPPORTED},
    };
    for (const auto& [picture, text, error] : cases) {
        char16_t out[64] = u"?";
        const int size = GetDateFormatW(LOCALE_USER_DEFAULT, 0, &date, picture, out, 64);
        if (text == nullptr) {
            EXPECT_EQ(size, 0);
            EXPECT_EQ(GetLastError(), error);
            continue;
        }
        EXPECT_EQ(std::u16string(out), text);
        EXPECT_EQ(GetDateFormatW(LOCALE_USER_DEFAULT, 0, &date, picture, nullptr, 0), size);
        EXPECT_EQ(GetDateFormatW(LOCALE_USER_DEFAULT, 0, &date, picture, out, size - 1),
                  size == 1 ? 1 : 0);  // no room at all asks for the room
    }
    EXPECT_EQ(GetDateFormatW(LOCALE_USER_DEFAULT, 0, &no_date, u"d", nullptr, 0), 0);
}

TEST(DateFormat, WritesTimesAsTheRunTimeLibraryDoes) {
    std::tm parts{};
    parts.tm_year = 126;
    parts.tm_mon = 4;
    parts.tm_mday = 12;
    parts.tm_wday = 2;
    parts.tm_hour = 14;
    char16_t text[64];
    EXPECT_EQ(wcsftime(text, 64, u"%H:%M:%S %A, %B %d, %Y", &parts), 30U);
    EXPECT_EQ(std::u16string(text), u"14:00:00 Tuesday, May 12, 2026");
    EXPECT_EQ(wcsftime(text, 30, u"%H:%M:%S %A, %B %d, %Y", &parts), 0U);
    EXPECT_EQ(text[0], 0);
}

TEST(Com, CountsAThreadsInitialisations) {
    EXPECT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE), S_OK);
    EXPECT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_FALSE);
    EXPECT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), RPC_E_CHANGED_MODE);
    CoUninitialize();
    CoUninitialize();
    EXPECT_EQ(CoInitializeEx(nullptr, COINIT_MULTITHREADED), S_OK);
    CoUninitialize();
}

}  // namespace
