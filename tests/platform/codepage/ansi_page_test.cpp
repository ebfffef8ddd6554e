// The installation's ANSI page is read once a process: each test runs in one of its own.
#include "tests/support/ansi_page.h"

#include "tvutil2/framework/strings.h"
#include "tvutil2/platform/codepage/codepage.h"
#include "tvutil2/platform/registry/registry.h"

#include <gtest/gtest.h>

namespace {

TEST(AnsiPage, IsUtf8WithoutASetting) {
    EXPECT_EQ(GetACP(), CP_UTF8);
    EXPECT_EQ(CString("\xC3\xA9"), CString(u"\u00E9"));
}

TEST(AnsiPage, SingleBytePageServesNarrowText) {
    tests::install_ansi_page(u"1252");
    EXPECT_EQ(GetACP(), 1252U);
    EXPECT_EQ(CString("\xE9\x80"), CString(u"\u00E9\u20AC"));
    EXPECT_EQ(CStringA(u"\u20AC\u4E00").View(), "\x80?");
}

TEST(AnsiPage, DoubleBytePageServesNarrowText) {
    tests::install_ansi_page(u"936");
    EXPECT_EQ(CString("\xD6\xD0"), CString(u"\u4E2D"));
    EXPECT_NE(IsDBCSLeadByteEx(GetACP(), 0xD6), 0);
}

TEST(AnsiPage, UnknownPageIsPassedOver) {
    tests::install_ansi_page(u"4711");
    EXPECT_EQ(GetACP(), CP_UTF8);
}

// A page in which ASCII isn't itself would turn every key and format of the library into noise.
TEST(AnsiPage, PageThatMovesAsciiIsPassedOver) {
    tests::install_ansi_page(u"37");
    EXPECT_EQ(GetACP(), CP_UTF8);
}

TEST(AnsiPage, NumberMustBeText) {
    tests::install_ansi_page(u"1252", REG_BINARY);
    EXPECT_EQ(GetACP(), CP_UTF8);
}

}  // namespace
