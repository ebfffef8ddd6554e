#include "tvutil2/frame/ansi_string.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(AnsiString, PartsOfAText) {
    const CAnsiString text("abcde");
    const struct {
        int n;
        const char* left;
        const char* right;
    } rows[] = {
        {-1, "", ""}, {0, "", "abcde"}, {2, "ab", "cde"}, {5, "abcde", ""}, {9, "abcde", "abcde"}};
    for (const auto& row : rows) {
        EXPECT_TRUE(text.Left(row.n) == row.left) << row.n;
        EXPECT_TRUE(text.Right(row.n) == row.right) << row.n;
    }
    EXPECT_TRUE(CAnsiString().Right(0).IsEmpty());
    EXPECT_TRUE(CAnsiString().Left(3).IsEmpty());
}

TEST(AnsiString, EveryEmptyTextIsTheSame) {
    CAnsiString cut("x");
    cut.SetAt(0, 0);
    CAnsiString emptied("x");
    emptied.Empty();
    CAnsiString set("x");
    set.SetString("abc", -1);
    const CAnsiString empties[] = {{},  "",      u"", static_cast<const char16_t*>(nullptr),
                                   cut, emptied, set};
    for (const auto& text : empties) {
        EXPECT_TRUE(text.IsEmpty());
        EXPECT_EQ(text.GetLength(), 0);
        EXPECT_TRUE(text == CAnsiString());
        EXPECT_TRUE("" == text);
        EXPECT_STREQ(text, "");
        EXPECT_EQ(text.GetAt(0), 0);
    }
}

TEST(AnsiString, AssignmentFromItself) {
    CAnsiString text("abcdef");
    const auto& self = text;
    text = self;
    EXPECT_STREQ(text, "abcdef");
    text = static_cast<const char*>(text) + 2;
    EXPECT_STREQ(text, "cdef");
    text += static_cast<const char*>(text) + 2;
    EXPECT_STREQ(text, "cdefef");
    text.Format("%s-%s", static_cast<const char*>(text), "x");
    EXPECT_STREQ(text, "cdefef-x");
}

TEST(AnsiString, Appending) {
    CAnsiString text;
    text += 'a';
    text += '\0';
    text += static_cast<const char*>(nullptr);
    text += static_cast<const char16_t*>(nullptr);
    text += "b\xC3\xA9";
    text += u"\u00E9";
    EXPECT_STREQ(text, "ab\xC3\xA9\xC3\xA9");
    EXPECT_TRUE(text != "ab");
    CAnsiString copy;
    copy = text;
    copy.SetAt(0, 'A');
    copy.SetAt(6, 'Z');
    EXPECT_STREQ(copy, "Ab\xC3\xA9\xC3\xA9");
    EXPECT_EQ(copy.GetAt(6), 0);
    EXPECT_STREQ(text, "ab\xC3\xA9\xC3\xA9");
}

TEST(AnsiString, SetStringTakesBytesAsTheyAre) {
    CAnsiString text;
    text.SetString("ab\0cd", 5);
    EXPECT_EQ(text.GetLength(), 2);
    EXPECT_EQ(static_cast<const char*>(text)[3], 'c');
}

TEST(AnsiString, FormatIsCutAt4095) {
    CAnsiString text;
    text.Format("%s", std::string(5000, 'x').c_str());
    EXPECT_EQ(text.GetLength(), 4095);
    text.Format("%d%c", 1, 0);
    EXPECT_STREQ(text, "1");
    text.Format("%s", "");
    EXPECT_TRUE(text.IsEmpty());
}

TEST(AnsiString, TrimsAndChangesCase) {
    CAnsiString text(" \t\r\n\v\f aB1\xC3\xA9z \n");
    text.Trim();
    EXPECT_STREQ(text, "aB1\xC3\xA9z");
    text.MakeUpper();
    EXPECT_STREQ(text, "AB1\xC3\xA9Z");
    text.MakeLower();
    EXPECT_STREQ(text, "ab1\xC3\xA9z");
    CAnsiString blank(" \n ");
    blank.TrimRight();
    EXPECT_TRUE(blank.IsEmpty());
    CAnsiString none;
    none.Trim();
    none.MakeUpper();
    EXPECT_TRUE(none.IsEmpty());
}

TEST(AnsiString, DeleteCountsCharacters) {
    CAnsiString text(u"a\u00E9b\u4E2Dc");
    text.Delete(1, 2);
    EXPECT_STREQ(text,
                 "a\xE4\xB8\xAD"
                 "c");
    const CString wide = text;
    EXPECT_EQ(wide.View(), u"a\u4E2Dc");
}

// Against the plain thing, as each change leaves the length and the room.
TEST(AnsiString, KeepsCountThroughEveryChange) {
    CAnsiString text;
    std::string model;
    const auto same = [&] {
        return text == model.c_str() && text.GetLength() == static_cast<int>(model.size());
    };
    for (int i = 0; i < 3000; ++i) {
        text += static_cast<char>('a' + i % 26);
        model += static_cast<char>('a' + i % 26);
        ASSERT_TRUE(same());
    }
    text += text;
    model += model;
    text += static_cast<const char*>(text) + 5990;
    model += model.substr(5990);
    EXPECT_TRUE(same());
    text.SetAt(100, '\0');
    model.resize(100);
    text += " \t";
    text.Trim();
    text += '!';
    model += "!";
    EXPECT_TRUE(same());
    text.SetString("ab\0cd", 5);
    text += 'x';
    EXPECT_STREQ(text, "abx");
    text.SetAt(0, '\0');
    text += "new";
    EXPECT_STREQ(text, "new");
    EXPECT_EQ(text.GetLength(), 3);
}

TEST(AnsiString, BecomesWideTextInEveryForm) {
    const CAnsiString narrow("caf\u00E9");
    const CString built(narrow);
    const CString copied = narrow;
    CString assigned;
    assigned = narrow;
    EXPECT_TRUE(built == u"caf\u00E9" && copied == built && assigned == built);
}

}  // namespace
