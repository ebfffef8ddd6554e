#include "tvutil2/platform/codepage/codepage.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/wide_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr DWORD kUntouched = 12345;

struct Wide {
    std::u16string text;
    DWORD error = 0;
};
struct Narrow {
    std::string bytes;
    BOOL used_default = FALSE;
    DWORD error = 0;
};

// Both halves of the contract in one: the size that is asked for is the size that is written.
Wide widen(UINT page, const std::string& bytes, DWORD flags = 0) {
    SetLastError(kUntouched);
    const int size = static_cast<int>(bytes.size());
    const int needed = MultiByteToWideChar(page, flags, bytes.data(), size, nullptr, 0);
    if (needed == 0) return {u"", GetLastError()};
    std::u16string text(static_cast<std::size_t>(needed) + 1, u'#');
    EXPECT_EQ(MultiByteToWideChar(page, flags, bytes.data(), size, text.data(), needed), needed);
    EXPECT_EQ(text.back(), u'#');
    text.pop_back();
    return {text, 0};
}

Narrow narrow(UINT page, const std::u16string& text, DWORD flags = 0,
              const char* default_char = nullptr) {
    SetLastError(kUntouched);
    const int size = static_cast<int>(text.size());
    BOOL used = FALSE;
    BOOL* const asked = page == CP_UTF8 ? nullptr : &used;
    const auto convert = [&](char* out, int room) {
        return WideCharToMultiByte(page, flags, text.data(), size, out, room, default_char, asked);
    };
    const int needed = convert(nullptr, 0);
    if (needed == 0) return {"", used, GetLastError()};
    std::string bytes(static_cast<std::size_t>(needed) + 1, '#');
    EXPECT_EQ(convert(bytes.data(), needed), needed);
    EXPECT_EQ(bytes.back(), '#');
    bytes.pop_back();
    return {bytes, used, 0};
}

TEST(CodePage, IllFormedUtf8) {
    // The first rows are the Unicode standard's own examples of maximal subparts.
    const std::pair<std::string, std::u16string> rows[] = {
        {"\xC0\xAF\xE0\x80\xBF\xF0\x81\x82\x41",
         u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFDA"},
        {"\xED\xA0\x80\xED\xBF\xBF\xED\xAF\x41",
         u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\uFFFDA"},
        {"\xF4\x91\x92\x93\xFF\x41\x80\xBF\x42", u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFDA\uFFFD\uFFFDB"},
        {"\xE1\x80\xE2\xF0\x91\x92\xF1\xBF\x41", u"\uFFFD\uFFFD\uFFFD\uFFFDA"},
        {"\xF0\x9F\x98", u"\uFFFD"},
        {"plain ascii of some length \xE2\x82", u"plain ascii of some length \uFFFD"},
    };
    for (const auto& [bytes, text] : rows) {
        EXPECT_EQ(widen(CP_UTF8, bytes).text, text);
        EXPECT_EQ(widen(CP_UTF8, bytes, MB_ERR_INVALID_CHARS).error, ERROR_NO_UNICODE_TRANSLATION);
    }
}

TEST(CodePage, EveryCharacterOfUnicodeComesBackFromUtf8) {
    std::u16string text;
    for (char32_t c = 0; c < 0x110000; ++c) {
        if (c < 0x10000) {
            if (c < 0xD800 || c > 0xDFFF) text.push_back(static_cast<char16_t>(c));
        } else {
            text.push_back(static_cast<char16_t>(0xD7C0 + (c >> 10)));
            text.push_back(static_cast<char16_t>(0xDC00 + (c & 0x3FF)));
        }
    }
    const auto bytes = narrow(CP_UTF8, text).bytes;
    EXPECT_EQ(bytes.size(), 128 + 2 * 1920 + 3 * 61440 + 4 * 1048576U);
    EXPECT_EQ(widen(CP_UTF8, bytes, MB_ERR_INVALID_CHARS).text, text);
}

TEST(CodePage, LoneSurrogates) {
    for (const std::u16string text : {u"a\xD83D", u"a\xDE00", u"a\xDE00\xD83D", u"a\xD83Dz"}) {
        std::string replaced = "a";
        std::string questioned = "a";
        for (const char16_t c : text.substr(1)) {
            replaced += c == u'z' ? "z" : "\xEF\xBF\xBD";
            questioned += c == u'z' ? 'z' : '?';
        }
        EXPECT_EQ(narrow(CP_UTF8, text).bytes, replaced);
        EXPECT_EQ(narrow(CP_UTF8, text, WC_ERR_INVALID_CHARS).error, ERROR_NO_UNICODE_TRANSLATION);
        EXPECT_EQ(narrow(CP_ACP, text).bytes, replaced);
        const auto with_default = narrow(CP_ACP, text, WC_COMPOSITECHECK, "?");
        EXPECT_EQ(with_default.bytes, questioned);
        EXPECT_TRUE(with_default.used_default);
    }
}

TEST(CodePage, MarksAreComposedWhereThePageHoldsTheResult) {
    const struct {
        UINT page;
        std::u16string text;
        std::string bytes;
    } rows[] = {
        {CP_ACP, u"e\u0301", "\xC3\xA9"},
        {CP_ACP, u"e\u0302\u0301", "\xE1\xBA\xBF"},  // two marks on one base
        {CP_ACP, u"\u0301e",
         "\xCC\x81"
         "e"},                                          // nothing to stand on
        {CP_ACP, u"q\u0301", "q\xCC\x81"},              // no such character
        {CP_ACP, u"\u05D0\u05B7", "\xD7\x90\xD6\xB7"},  // excluded from composition
        {CP_ACP, u"\U00011099\U000110BA", "\xF0\x91\x82\x9A"},
        {1252, u"ne\u0301e",
         "n\xE9"
         "e"},
        {1252, u"z\u030C.s\u0301", "\x9E.s?"},
        {1258, u"e\u0302\u0301", "\xEA\xEC"},  // the page has the mark itself
        {437, u"u\u0308", "\x81"},
        {932, u"\u304B\u3099", "\x82\xAA"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(narrow(row.page, row.text, WC_COMPOSITECHECK).bytes, row.bytes) << row.page;
        EXPECT_NE(narrow(row.page, row.text, 0).bytes.size(), 0U);
    }
    EXPECT_EQ(narrow(CP_ACP, u"e\u0301").bytes, "e\xCC\x81");
}

TEST(CodePage, DefaultCharacters) {
    const struct {
        UINT page;
        std::u16string text;
        const char* default_char;
        std::string bytes;
        BOOL used;
    } rows[] = {
        {1252, u"a\u4E2Db", nullptr, "a?b", TRUE},
        {1252, u"a\u4E2Db", "_", "a_b", TRUE},
        {1252, u"\u20ACuro", "_", "\x80uro", FALSE},
        {1252, u"\U0001F600", nullptr, "??", TRUE},
        {1252, u"\u2212\uFF21\u0100", nullptr, "???", TRUE},  // no look-alikes
        {932, u"\u00E9", "\x81\xAC", "\x81\xAC", TRUE},       // a default of two bytes
        {1252, u"\u4E2D", "\x81\xAC", "\x81", TRUE},          // where there are no lead bytes
        {437, u"\u00B5", nullptr, "\xE6", FALSE},
        {437, u"\u03BC", nullptr, "?", TRUE},
    };
    for (const auto& row : rows) {
        const auto result = narrow(row.page, row.text, 0, row.default_char);
        EXPECT_EQ(result.bytes, row.bytes) << row.page;
        EXPECT_EQ(result.used_default, row.used) << row.page;
    }
}

TEST(CodePage, BytesWithoutACharacter) {
    const struct {
        UINT page;
        std::string bytes;
        std::u16string text;
    } rows[] = {
        {932, "\x81", u"\u30FB"},
        {932, "\x81\x20z", u"\u30FBz"},
        {932, std::string("\x81\0z", 3), std::u16string(u"\u30FB\0z", 3)},
        {936, "\xFF.", u"\uF8F5."},
        {949, "a\xC9", u"a?"},
        {28593, "\xA5", u"?"},
        {54936, "\x81\x30\x81\xFF", u"?0?"},
        {54936, "\x84\x31\xA5\x30.", u"?."},
        {20127, "\x80z", u"?z"},
    };
    for (const auto& row : rows) {
        const DWORD usual = row.page == 54936 ? 0 : MB_PRECOMPOSED;
        EXPECT_EQ(widen(row.page, row.bytes, usual).text, row.text) << row.page;
        if (row.page == 936) continue;
        EXPECT_EQ(widen(row.page, row.bytes, MB_ERR_INVALID_CHARS).error,
                  ERROR_NO_UNICODE_TRANSLATION)
            << row.page;
    }
}

TEST(CodePage, LeadBytes) {
    const struct {
        UINT page;
        BYTE byte;
        BOOL is_lead;
    } rows[] = {
        {932, 0x80, FALSE}, {932, 0x81, TRUE},   {932, 0x9F, TRUE},      {932, 0xA0, FALSE},
        {932, 0xDF, FALSE}, {932, 0xE0, TRUE},   {932, 0xFC, TRUE},      {932, 0xFD, FALSE},
        {936, 0x80, FALSE}, {936, 0xFE, TRUE},   {936, 0xFF, FALSE},     {949, 0x41, FALSE},
        {950, 0x81, TRUE},  {1252, 0x81, FALSE}, {CP_UTF8, 0xC3, FALSE}, {CP_ACP, 0xC3, FALSE}};
    for (const auto& row : rows) {
        EXPECT_EQ(IsDBCSLeadByteEx(row.page, row.byte), row.is_lead) << row.page;
    }
    SetLastError(kUntouched);
    EXPECT_FALSE(IsDBCSLeadByteEx(12345, 0x81));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

std::vector<std::u16string> g_told;

TEST(CodePage, InstalledPagesAreToldOneByOne) {
    ASSERT_TRUE(EnumSystemCodePagesW(
        [](char16_t* number) {
            g_told.emplace_back(number);
            return TRUE;
        },
        CP_INSTALLED));
    const auto tells = [](const char16_t* number) {
        return std::count(g_told.begin(), g_told.end(), number) == 1;
    };
    for (const auto* number :
         {u"437",   u"708",   u"720",   u"862",   u"866",   u"874",   u"932",   u"936",
          u"949",   u"950",   u"1250",  u"1258",  u"20866", u"20936", u"21866", u"28591",
          u"28599", u"38598", u"51932", u"51949", u"54936", u"65001"}) {
        EXPECT_TRUE(tells(number)) << _wtoi(number);
    }
    EXPECT_FALSE(tells(u"52936"));
    // What is told can be used.
    for (const auto& number : g_told) {
        const auto page = static_cast<UINT>(_wtoi(number.c_str()));
        EXPECT_TRUE(IsValidCodePage(page)) << page;
        EXPECT_EQ(widen(page, "plain").text, u"plain") << page;
    }
    for (const UINT page : {CP_ACP, UINT{52936}, UINT{12345}}) EXPECT_FALSE(IsValidCodePage(page));

    static int calls = 0;
    const auto once = [](char16_t* /*number*/) {
        ++calls;
        return FALSE;
    };
    EXPECT_TRUE(EnumSystemCodePagesW(once, CP_SUPPORTED));
    EXPECT_EQ(calls, 1);
    EXPECT_FALSE(EnumSystemCodePagesW(once, CP_INSTALLED | CP_SUPPORTED));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_FLAGS);
    EXPECT_FALSE(EnumSystemCodePagesW(nullptr, CP_INSTALLED));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
}

TEST(CodePage, SizesAndRoom) {
    char16_t wide[8];
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "abc", -1, wide, 8), 4);  // with the zero
    EXPECT_EQ(wide[3], 0);
    EXPECT_EQ(MultiByteToWideChar(1252, 0, "abc", 2, nullptr, 0), 2);
    for (const UINT page : {CP_UTF8, UINT{1252}, UINT{932}}) {
        std::memset(wide, 0x7F, sizeof wide);
        EXPECT_EQ(MultiByteToWideChar(page, 0, "abcdef", -1, wide, 3), 0);
        EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
        EXPECT_EQ(wide[2], u'c');
        EXPECT_EQ(wide[3], 0x7F7F);
        char bytes[8];
        std::memset(bytes, 0x7F, sizeof bytes);
        EXPECT_EQ(WideCharToMultiByte(page, 0, u"abcdef", -1, bytes, 3, nullptr, nullptr), 0);
        EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
        EXPECT_EQ(bytes[3], 0x7F);
    }
    // A character of several units doesn't go half beyond the room.
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "\xF0\x9F\x98\x80", 4, wide, 1), 0);
    EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
}

TEST(CodePage, Misuse) {
    char bytes[8] = "x";
    char16_t wide[8] = u"x";
    BOOL used = FALSE;
    const auto mb = [](int result) { return result == 0 ? GetLastError() : 0; };
    const DWORD parameter = ERROR_INVALID_PARAMETER;
    const DWORD flags = ERROR_INVALID_FLAGS;
    const std::pair<DWORD, DWORD> rows[] = {
        {mb(MultiByteToWideChar(12345, 0, "x", 1, wide, 8)), parameter},
        {mb(MultiByteToWideChar(CP_UTF8, 0, nullptr, 1, wide, 8)), parameter},
        {mb(MultiByteToWideChar(CP_UTF8, 0, "x", 0, wide, 8)), parameter},
        {mb(MultiByteToWideChar(CP_UTF8, 0, "x", 1, wide, -1)), parameter},
        {mb(MultiByteToWideChar(CP_UTF8, 0, "x", 1, nullptr, 8)), parameter},
        {mb(MultiByteToWideChar(CP_UTF8, 0, bytes, 1, reinterpret_cast<char16_t*>(bytes), 4)),
         parameter},
        {mb(MultiByteToWideChar(CP_UTF8, MB_PRECOMPOSED, "x", 1, wide, 8)), flags},
        {mb(MultiByteToWideChar(1252, 0x100, "x", 1, wide, 8)), flags},
        {mb(MultiByteToWideChar(CP_ACP, MB_PRECOMPOSED, "x", 1, wide, 8)), 0},
        {mb(WideCharToMultiByte(CP_UTF8, WC_COMPOSITECHECK, u"x", 1, bytes, 8, nullptr, nullptr)),
         flags},
        {mb(WideCharToMultiByte(CP_UTF8, 0, u"x", 1, bytes, 8, "?", nullptr)), parameter},
        {mb(WideCharToMultiByte(CP_UTF8, 0, u"x", 1, bytes, 8, nullptr, &used)), parameter},
        {mb(WideCharToMultiByte(CP_ACP, WC_COMPOSITECHECK, u"x", 1, bytes, 8, "?", &used)), 0},
        {mb(WideCharToMultiByte(1252, WC_ERR_INVALID_CHARS, u"x", 1, bytes, 8, "?", &used)), flags},
    };
    for (std::size_t i = 0; i < std::size(rows); ++i) EXPECT_EQ(rows[i].first, rows[i].second) << i;
}

TEST(CodePage, ThreadsMayMeetAtTheFirstUse) {
    std::vector<std::thread> threads;
    std::vector<std::u16string> results(8);
    for (auto& result : results) {
        threads.emplace_back([&result] { result = widen(936, "\xD6\xD0\xCE\xC4").text; });
    }
    for (auto& thread : threads) thread.join();
    for (const auto& result : results) EXPECT_EQ(result, u"\u4E2D\u6587");
}

}  // namespace
