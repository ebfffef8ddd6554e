#include "tvutil2/platform/codepage/conversion.h"

#include "tvutil2/frame/ansi_string.h"
#include "tvutil2/frame/buffer.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/codepage/codepage.h"
#include "tvutil2/text/charset.h"

#include <gtest/gtest.h>

#include <climits>
#include <vector>

#include "tests/support/ansi_page.h"

namespace {

using namespace tvutil2::codepage;

std::vector<UINT> pages;

BOOL add_page(char16_t* number) {
    pages.push_back(static_cast<UINT>(_wtoi(number)));
    return TRUE;
}

// Every unit by itself, lone surrogates included, and characters above U+FFFF.
std::u16string every_unit() {
    std::u16string text;
    for (char32_t unit = 0; unit < 0x10000; ++unit) text += {static_cast<char16_t>(unit), u'x'};
    return text + u"\U00010000\U0010FFFF";
}

TEST(Conversion, RoomIsEnoughInEveryPage) {
    EnumSystemCodePagesW(add_page, CP_INSTALLED);
    ASSERT_GT(pages.size(), 30U);
    const auto text = every_unit();
    for (const auto page : pages) {
        const char* const mark = page == CP_UTF8 ? nullptr : "?";
        const auto bytes = bytes_in(page, 0, text, mark);
        ASSERT_TRUE(bytes) << page;
        ASSERT_TRUE(units_of(page, 0, *bytes)) << page;
        // No unit alone has more than its share of the room.
        for (std::size_t i = 0; i < text.size(); i += 2) {
            std::string room(byte_room(page, 1), '\0');
            ASSERT_TRUE(put_bytes(page, 0, std::u16string_view(text).substr(i, 1), room, mark));
        }
    }
}

TEST(Conversion, FailureIsNoLength) {
    char bytes[2];
    EXPECT_EQ(put_bytes(CP_UTF8, 0, u"", bytes), 0U);
    EXPECT_EQ(units_of(CP_UTF8, 0, ""), u"");
    SetLastError(0);
    EXPECT_EQ(put_bytes(CP_UTF8, 0, u"abc", bytes), std::nullopt);
    EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(put_bytes(CP_UTF8, 0, u"abc", {}), std::nullopt);
    EXPECT_EQ(units_of(CP_UTF8, MB_ERR_INVALID_CHARS, "\xFF"), std::nullopt);
    EXPECT_EQ(bytes_in(4711, 0, u"abc"), std::nullopt);
    EXPECT_EQ(byte_room(4711, 1), 0U);
    EXPECT_EQ(byte_room(54936, std::size_t{1} << 40U), INT_MAX);
}

// Four bytes a unit, where three are the most in UTF-8.
TEST(Conversion, AnsiPageOfFourBytesServesWholeTexts) {
    tests::install_ansi_page(u"54936");
    for (const std::size_t size : {1U, 200U, 5000U}) {
        const std::u16string text(size, u'\u00E3');
        const CAnsiString narrow(text.c_str());
        EXPECT_EQ(narrow.GetLength(), static_cast<int>(size * 4));
        EXPECT_EQ(CString(narrow).View(), text);
        EXPECT_EQ(CStringA(text.c_str()).GetLength(), narrow.GetLength());
        CBuffer bytes;
        EXPECT_EQ(CCharSetEncoder().Encode(text.c_str(), bytes), narrow.GetLength());
    }
}

}  // namespace
