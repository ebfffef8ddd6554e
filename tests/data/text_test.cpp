#include "tvutil2/data/text.h"

#include "tvutil2/data/command_line.h"
#include "tvutil2/framework/app.h"
#include "tvutil2/framework/collections.h"
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/process/modules.h"
#include "tvutil2/platform/resource/resource.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/profile.h"

namespace {

std::string utf8(const CString& text) {
    return tvutil2::to_utf8_lossy(text.View());
}

std::string joined(const CStringList& list) {
    std::string text;
    for (POSITION at = list.GetHeadPosition(); at != nullptr;) text += utf8(list.GetNext(at)) + "|";
    return text;
}

TEST(Text, StrTok) {
    const struct {
        const char16_t* text;
        const char16_t* delimiter;
        int count;
        const char* tokens;
    } cases[] = {
        {u",,a,,b,", u",", 2, "a|b|"},
        {u"a", u",", 1, "a|"},
        {u"", u",", 0, ""},
        {u",", u",", 0, ""},
        {u"a--b-c---d", u"--", 3, "a|b-c|-d|"},
        {u"a,b", u"", 1, "a,b|"},
        {u"a,b", nullptr, 1, "a,b|"},
    };
    for (const auto& c : cases) {
        CStringArray out;
        out.Add(u"before");
        EXPECT_EQ(StrTok(out, c.text, c.delimiter), c.count);
        std::string tokens;
        for (int i = 1; i < out.GetSize(); ++i) tokens += utf8(out[i]) + "|";
        EXPECT_EQ(tokens, c.tokens);
    }
}

TEST(Text, GetNumberFormatByComma) {
    const std::pair<const char16_t*, const char*> cases[] = {
        {u"", ""},
        {u"7", "7"},
        {u"123", "123"},
        {u"1234", "1,234"},
        {u"123456", "123,456"},
        {u"1234567", "1,234,567"},
        {u"-123", "-123"},
        {u"-1234", "-1,234"},
        {u"+123456", "+123,456"},
        {u"-", "-"},
    };
    for (const auto& [digits, expected] : cases)
        EXPECT_EQ(utf8(GetNumberFormatByComma(digits)), expected);
}

TEST(Text, FormatsAndFileNames) {
    EXPECT_EQ(utf8(csFmt(u"%s-%03d", CString(u"a"), 7)), "a-007");
    EXPECT_EQ(utf8(csFmt(14107U, u"C:\\x")), "Cannot create file: C:\\x");
    EXPECT_EQ(utf8(csFmt(1U, u"x")), "??");
    const auto image = tests::read_file(TESTS_STARTED "/product.res");
    ASSERT_TRUE(tvutil2::add_module_resources(nullptr, image.data(), image.size()));
    AfxSetResourceHandle(GetModuleHandleW(nullptr));
    EXPECT_EQ(utf8(csFmt(1U, u"x")), "English");
    tvutil2::remove_module_resources(nullptr);
    EXPECT_EQ(IsValidFileName(u"a b.\u00E4'"), 1);
    EXPECT_EQ(IsValidFileName(u""), 1);
    for (const auto c : std::u16string(u"\\/:*?\"<>|")) {
        EXPECT_EQ(IsValidFileName((std::u16string(u"a") + c).c_str()), 0);
    }
    CString name(u"a\\b/c:d*e?f\"g<h>i|j.k");
    TvSmartFileRename(name);
    EXPECT_EQ(utf8(name), "a_b_c_d_e_f_g_h_i_j.k");
}

TEST(Text, StringLists) {
    CStringList a;
    CStringList b;
    b.AddTail(u"old");
    EXPECT_EQ(TvEqualStringList(&a, &b), 0);
    a.AddTail(u"1");
    a.AddTail(u"2");
    TvCopyStringList(&a, &b);
    EXPECT_EQ(joined(b), "1|2|");
    EXPECT_EQ(TvEqualStringList(&a, &b), 1);
    TvCopyStringList(&a, &a);
    EXPECT_EQ(joined(a), "1|2|");
    b.SetAt(b.GetTailPosition(), u"3");
    EXPECT_EQ(TvEqualStringList(&a, &b), 0);
}

TEST(CommandLine, ArgumentSplit) {
    const std::pair<const char16_t*, const char*> cases[] = {
        {u"", ""},
        {u"   ", ""},
        {u"a b  c", "a|b|c|"},
        {u"\"a b\" c", "a b|c|"},
        {u"\"\"", "|"},
        {u"a\\\\b", "a\\b|"},
        {u"a\\b", "ab|"},
        {u"\\\"a\\\"", "\"a\"|"},
        {u"\"a \\\"b\\\" c\"", "a \"b\" c|"},
        {u"x\"y z\"w", "xy z|w|"},
        {u"\"open end ", "open end |"},
        {u"a\\ b\"c d\"", "a|bc d|"},  // a blank ends the escape
        {u"\\a\"b c", "a\"b|c|"},      // an escape waits for the next quote
        {u"\"\\ x\"", " x\"|"},        // and a blank in quotes doesn't end it
        {u"\ta\t b", "a|b|"},
    };
    for (const auto& [args, items] : cases) {
        CStringList out;
        out.AddTail(u"before");
        const int count = ArgumentSplit(args, out, u"");
        EXPECT_EQ(joined(out), std::string("before|") + items) << utf8(args);
        EXPECT_EQ(count, out.GetCount());
    }
    CStringList out;
    EXPECT_EQ(ArgumentSplit(u"a", out, u"first"), 2);
    EXPECT_EQ(joined(out), "first|a|");
}

}  // namespace
