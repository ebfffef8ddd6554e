#include "tvutil2/settings/option_file.h"

#include "tvutil2/settings/information_file.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/support/profile.h"

namespace {

TEST(OptionFile, SelectingLosesNothing) {
    const auto host = tests::new_folder() + "/a.ini";
    tests::write_file(host, "[s]\na=1\n[t]\nb=2\n");
    const auto path = tests::platform_path(host);
    COptionFile file(path.c_str());
    EXPECT_EQ(file.GetValue(u"a", 7), 7);  // no section yet
    file.SetSection(u"s");
    EXPECT_EQ(file.GetValue(u"a", 7), 1);
    file.SetSection(u"t");
    file.SetValue(u"c", u"x");
    EXPECT_EQ(file.GetValue(u"b", 7), 2);
    EXPECT_EQ(file.GetValue(u"c", u"no"), u"x");
    EXPECT_EQ(file.GetValue(u"s", u"a", 7), 1);  // another section leaves the current one
    EXPECT_EQ(file.GetValue(u"a", 7), 7);
    file.ClearSection(path.c_str(), u"t");
    EXPECT_EQ(file.GetValue(u"b", 7), 7);
    file.SetValue(u"b", 3);
    EXPECT_EQ(file.GetValue(u"b", 7), 3);
}

TEST(OptionFile, ListsOptionsInOrder) {
    COptionFile file;
    CStringArray out;
    EXPECT_EQ(file.EnumOption(out, nullptr), 0);
    file.SetSection(u"s");
    file.SetValue(u"b", 2);
    EXPECT_EQ(file.EnumOption(out, nullptr), 0);
    file.SetValue(u"a", 1);
    out.RemoveAll();
    EXPECT_EQ(file.EnumOption(out, nullptr), 1);
    EXPECT_EQ(out[0], u"a=1");
    EXPECT_EQ(out[1], u"b=2");
    file.SetValue(u"t", u"aa", u"0");
    EXPECT_EQ(file.EnumOption(out, u"t"), 2);
    EXPECT_EQ(out[1], u"aa=0");
    EXPECT_EQ(file.EnumOption(out, u"none"), 2);
}

TEST(OptionFile, GoesStraightToFiles) {
    const auto path = tests::platform_path(tests::new_folder() + "/a.ini");
    COptionFile file;
    file.WriteValue(path.c_str(), u"k", u"in no section");
    EXPECT_EQ(file.ReadValue(path.c_str(), u"k", u""), u"in no section");
    file.SetSection(u"s");
    file.WriteValue(path.c_str(), u"n", -5);
    EXPECT_EQ(file.ReadValue(path.c_str(), u"n", 7), -5);
    EXPECT_EQ(file.ReadValue(path.c_str(), u"k", 7), 7);
    EXPECT_EQ(file.GetValue(u"n", 7), 7);
    file.WriteValue(path.c_str(), u"long", std::u16string(5000, u'x').c_str());
    EXPECT_EQ(file.ReadValue(path.c_str(), u"long", u"").GetLength(), 4095);
}

TEST(InformationFile, ReadsWhatItWrote) {
    const auto host = tests::new_folder();
    NUtil::CInformationFile file;
    file.Initialize(tests::platform_path(host) + u"\\", u"a.ini");
    file.WriteInformationFile(u"s", u"f", 1.5F);
    file.WriteInformationFile(u"s", u"u", 4'000'000'000U);
    file.WriteInformationFile(u"s", u"t", u"text");
    file.WriteInformationFile(u"s", u"n", -3);
    EXPECT_EQ(tests::read_file(host + "/a.ini"),
              "[s]\r\nf=1.500000\r\nu=-294967296\r\nt=text\r\nn=-3\r\n");
    float number = 0;
    file.ReadInformationFile(u"s", u"f", number, 2);
    EXPECT_EQ(number, 1.5F);
    unsigned int large = 0;
    file.ReadInformationFile(u"s", u"u", large, 1);
    EXPECT_EQ(large, 4'000'000'000U);
    int small = 0;
    file.ReadInformationFile(u"s", u"n", small, 1);
    EXPECT_EQ(small, -3);
    CString text;
    file.ReadInformationFile(u"s", u"t", text, u"no");
    EXPECT_EQ(text, u"text");
    char16_t buffer[3];
    file.ReadInformationFile(u"s", u"t", buffer, 3, u"no");
    EXPECT_EQ(CString(buffer), u"te");
}

TEST(InformationFile, CutsNumbersAndFallsBack) {
    const auto host = tests::new_folder();
    NUtil::CInformationFile file;
    const struct {
        const char16_t* text;
        float expected;
    } cases[] = {{u"x", 0},
                 {u" -2.5e1z", -25},
                 {u"+.5", 0.5F},
                 {u"00000000000000123", 1},
                 {u"info", 0},
                 {u"nano", 0},
                 {u"-infinite", 0},
                 {u"1e400", INFINITY},
                 {u"-1e400", -INFINITY},
                 {u"1e-400", 0},
                 {u"-inf", -INFINITY}};
    file.Initialize(tests::platform_path(host), u"a.ini");
    float number = 0;
    for (const auto& [text, expected] : cases) {
        file.WriteInformationFile(u"s", u"f", text);
        file.ReadInformationFile(u"s", u"f", number, 7);
        EXPECT_EQ(number, expected);
    }
    const NUtil::CInformationFile unbound;
    CString text;
    unbound.ReadInformationFile(u"s", u"k", text, CString(u"none "));
    EXPECT_EQ(text, u"none ");
    unbound.ReadInformationFile(u"s", u"k", number, 0.25F);
    EXPECT_EQ(number, 0.25F);
}

}  // namespace
