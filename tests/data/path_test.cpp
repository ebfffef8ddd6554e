#include "tvutil2/data/path.h"

#include "tvutil2/platform/base/utf.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>
#include <string>

#include "tests/support/profile.h"

namespace {

std::string utf8(const CString& text) {
    return tvutil2::to_utf8_lossy(text.View());
}

TEST(Path, AppendPath) {
    const struct {
        const char16_t* path;
        const char16_t* tail;
        int result;
        const char* expected;
    } cases[] = {
        {u"C:\\x\\", u"\\y", 1, "C:\\x\\y"},
        {u"C:\\x", u"y", 1, "C:\\x\\y"},
        {u"C:\\x", u"\\\\y", 1, "C:\\x\\\\y"},
        {u"C:\\x", u"", 1, "C:\\x\\"},
        {u"x", u"\\", 1, "x\\"},
        {u"", u"y", 0, ""},
        {u"C:\\x", nullptr, 0, "C:\\x"},
    };
    for (const auto& c : cases) {
        CString path(c.path);
        EXPECT_EQ(AppendPath(path, c.tail), c.result);
        EXPECT_EQ(utf8(path), c.expected);
    }
    CString own(u"ab");
    AppendPath(own, own);
    EXPECT_EQ(utf8(own), "ab\\ab");
}

TEST(Path, AppendPathEx) {
    const struct {
        const char16_t* path;
        const char16_t* tail;
        int result;
        const char* expected;
    } cases[] = {
        {u"C:\\a\\b", u"..\\c", 1, "C:\\a\\c"},
        {u"C:\\a\\b", u"D:\\e", 1, "D:\\e"},
        {u"C:\\a\\b", u"\\e", 1, "C:\\e"},
        {u"\\\\server\\share", u"\\e", 1, "\\\\\\e"},
        {u"C:\\a\\b", u".\\c", 1, "C:\\a\\b\\c"},
        {u"C:\\a\\b", u"", 1, "C:\\a\\b"},
        {u"C:\\a\\b", u"..\\..\\..\\..\\c", 1, "C:\\c"},
        {u"\\\\s", u"..\\..\\..", 1, ""},
        {u"C:\\a", u"b\\\\c\\d", 1, "C:\\a\\b\\\\c\\d"},
        {u"C:\\a", u"b\\", 1, "C:\\a\\b"},
        {u"C:\\a", u"...", 1, "C:\\a\\..."},
        {u"ab\\c", u"d", 1, "ab\\c\\d"},
        {u"C:", u"x", 1, "C:\\x"},
        {u"ab", u"x", 0, "ab"},
        {u"C:a", u"x", 0, "C:a"},
        {u"C", u"x", 0, "C"},
        {u"", u"x", 0, ""},
        {u"C:\\a", nullptr, 0, "C:\\a"},
    };
    for (const auto& c : cases) {
        CString path(c.path);
        EXPECT_EQ(AppendPathEx(path, c.tail), c.result) << utf8(c.path);
        EXPECT_EQ(utf8(path), c.expected);
    }
}

TEST(Path, NamesInPaths) {
    EXPECT_EQ(utf8(GetFnameofPath(u"C:\\a\\b.c")), "b.c");
    EXPECT_EQ(utf8(GetFnameofPath(u"b.c")), "b.c");
    EXPECT_EQ(utf8(GetFnameofPath(u"C:\\a\\")), "");
    EXPECT_EQ(utf8(GetFnameofPath(nullptr)), "");

    CString out;
    ReplaceFnameOfPath(out, u"C:\\a\\Zemt.exe", u"Pelrin");
    EXPECT_EQ(utf8(out), "C:\\a\\Pelrin.exe");
    ReplaceFnameOfPath(out, out, u"Dovr");
    EXPECT_EQ(utf8(out), "C:\\a\\Dovr.exe");
    ReplaceFnameOfPath(out, (u"C:\\a\\" + std::u16string(256, u'n') + u".exe").c_str(), u"x");
    EXPECT_EQ(utf8(out), "x");
    ReplaceFnameOfPath(out, (u"C:\\a\\" + std::u16string(255, u'n') + u".exe").c_str(), u"x");
    EXPECT_EQ(utf8(out), "C:\\a\\x.exe");

    const auto folder = tests::new_folder();
    tests::write_file(folder + "/Real.Name", "");
    char16_t name[260];
    EXPECT_EQ(GetLongFileName(name, tests::platform_path(folder + "/REAL.NAME").c_str()), 1);
    EXPECT_EQ(std::u16string(name), u"Real.Name");
    const std::u16string missing = u"C:\\" + std::u16string(500, u'm');
    EXPECT_EQ(GetLongFileName(name, missing.c_str()), 0);
    EXPECT_EQ(std::u16string(name), missing.substr(0, 259));

    CString module;
    AfxGetModulePath(module, u"x.ini");
    CString bare;
    AfxGetModulePath(bare, nullptr);
    EXPECT_EQ(utf8(module), utf8(bare) + "\\x.ini");
    EXPECT_EQ(utf8(bare).substr(0, 3), "C:\\");
}

TEST(Path, AfxConvertPath) {
    const struct {
        const char16_t* path;
        const char16_t* base;
        int to_absolute;
        const char* expected;
    } cases[] = {
        {u"x", u"C:\\b", 1, "C:\\b\\x"},
        {u".", u"C:\\b", 1, "C:\\b"},
        {u"..\\x", u"C:\\b", 1, "C:\\b\\..\\x"},
        {u"D:\\x", u"C:\\b", 1, "D:\\x"},
        {u"\\\\s\\x", u"C:\\b", 1, "\\\\s\\x"},
        {u"\\x", u"C:\\b", 1, "\\x"},
        {u"", u"C:\\b", 1, ""},
        {u"C:\\b\\x", u"C:\\b", 0, "x"},
        {u"C:\\b\\C:\\b\\x", u"C:\\b", 0, "\\x"},
        {u"\\\\x", u"C:\\b", 0, "\\x"},
        {u"x", u"", 0, "x"},
        {u"C:\\b", u"C:\\b", 0, ""},
    };
    for (const auto& c : cases) {
        CString path(c.path);
        AfxConvertPath(path, c.base, c.to_absolute);
        EXPECT_EQ(utf8(path), c.expected);
    }
}

TEST(Path, ChangePathWithEnv) {
    setenv("T_ONE", "1", 1);
    setenv("T_TWO", "C:\\two", 1);
    setenv("T_EMPTY", "", 1);
    setenv("T_REF", "%T_ONE%", 1);
    setenv("T_SELF", "x%T_SELF%%T_SELF%", 1);
    setenv("T_LONG", std::string(4095, 'l').c_str(), 1);
    setenv("T_TOO_LONG", std::string(4096, 'l').c_str(), 1);
    const struct {
        std::u16string path;
        int result;
        std::string expected;
    } cases[] = {
        {u"%T_TWO%\\a\\%T_ONE%", 1, "C:\\two\\a\\1"},
        {u"%t_one%", 1, "1"},
        {u"50% of 100%", 0, "50% of 100%"},
        {u"100%T_ONE%", 1, "1001"},
        {u"%none%T_ONE%", 1, "%none1"},
        {u"%T_ONE%T_TWO%", 1, "1T_TWO%"},
        {u"a%T_EMPTY%b", 1, "ab"},
        {u"%%T_ONE%%", 1, "%1%"},
        {u"%T_REF%%T_ONE%", 1, "11"},
        {u"%T_ONE%%T_REF%%T_ONE%", 1, "111"},
        {u"%T_REF%", 1, "%T_ONE%"},
        {u"%T_LONG%", 1, std::string(4095, 'l')},
        {u"%T_TOO_LONG%", 0, "%T_TOO_LONG%"},
        {u"", 0, ""},
        {u"%", 0, "%"},
        // What would make it too long isn't replaced.
        {std::u16string(32760, u'x') + u"%T_LONG%", 0, std::string(32760, 'x') + "%T_LONG%"},
    };
    for (const auto& c : cases) {
        CString path{std::u16string_view(c.path)};
        EXPECT_EQ(ChangePathWithEnv(path), c.result);
        EXPECT_EQ(utf8(path), c.expected);
    }
    // References that breed stop at the longest path; many that don't are still quick.
    std::u16string many;
    for (int i = 0; i < 60; ++i) many += u"%T_SELF%";
    CString breeding{std::u16string_view(many)};
    EXPECT_EQ(ChangePathWithEnv(breeding), 1);
    EXPECT_LE(breeding.GetLength(), 32767);
    many.clear();
    for (int i = 0; i < 100000; ++i) many += u"%T_ONE%";
    CString plain{std::u16string_view(many)};
    EXPECT_EQ(ChangePathWithEnv(plain), 1);
    EXPECT_EQ(plain.GetLength(), 100000);
}

TEST(Path, SplitNameForSaveAs) {
    const struct {
        const char16_t* name;
        int result;
        const char* stem;
        int number;
    } cases[] = {
        {u"report (3)", 1, "report", 3},
        {u"report  (12)", 1, "report", 12},
        {u"(3)", 1, "", 3},
        {u"stem ()", 1, "stem", 0},
        {u"a(1)(2)", 1, "a(1)", 2},
        {u"report 3)", 0, "report 3)", 0},
        {u"12)", 0, "12)", 0},
        {u")", 0, ")", 0},
        {u"report (3", 0, "report (3", 0},
        {u"report (x3)", 0, "report (x3)", 0},
        {u"x (99999999999999999999)", 1, "x", std::numeric_limits<int>::max()},
    };
    for (const auto& c : cases) {
        CString stem(u"before");
        int number = -1;
        EXPECT_EQ(SplitNameForSaveAs(c.name, stem, number), c.result) << utf8(c.name);
        EXPECT_EQ(utf8(stem), c.stem);
        EXPECT_EQ(number, c.number);
    }
    CString stem(u"before");
    int number = -1;
    EXPECT_EQ(SplitNameForSaveAs(u"", stem, number), 0);
    EXPECT_EQ(SplitNameForSaveAs(nullptr, stem, number), 0);
    EXPECT_EQ(utf8(stem), "before");
    EXPECT_EQ(number, -1);
}

TEST(Path, TvTruncatePath) {
    const std::pair<int, const char*> cases[] = {
        {20, "0123456789ABCDEFGHIJ"},
        {19, "012345......EFGHIJ"},
        {11, "01......IJ"},
        {8, "0......J"},
        {7, "......"},
        {0, "......"},
        {-1, "......"},
        {std::numeric_limits<int>::min(), "......"},
        {std::numeric_limits<int>::max(), "0123456789ABCDEFGHIJ"},
    };
    for (const auto& [max_length, expected] : cases) {
        EXPECT_EQ(utf8(TvTruncatePath(u"0123456789ABCDEFGHIJ", max_length)), expected);
    }
    EXPECT_EQ(utf8(TvTruncatePath(u"", 0)), "");
    EXPECT_EQ(utf8(TvTruncatePath(nullptr, -5)), "......");
}

}  // namespace
