#include "tvutil2/platform/files/find.h"

#include "tvutil2/platform/base/handle_table.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/files/files.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/support/profile.h"

namespace {

namespace fs = std::filesystem;

// The names found, joined by "|"; or the number of the last error.
std::string found(const std::u16string& path) {
    WIN32_FIND_DATAW data{};
    const HANDLE search = FindFirstFileW(path.c_str(), &data);
    if (search == INVALID_HANDLE_VALUE) return std::to_string(GetLastError());
    std::string names;
    do {
        if (!names.empty()) names += '|';
        names += tvutil2::to_utf8_lossy(data.cFileName);
    } while (FindNextFileW(search, &data) != FALSE);
    EXPECT_EQ(GetLastError(), ERROR_NO_MORE_FILES);
    EXPECT_FALSE(CloseHandle(search)) << "a search isn't closed like a file";
    EXPECT_TRUE(FindClose(search));
    EXPECT_FALSE(FindClose(search));
    return names;
}

TEST(Find, PatternsTakeInWhatThePlatformWould) {
    const auto folder = tests::new_folder();
    for (const auto* name : {"b.txt", "A.TXT", "a.text", "noext", "x[1].tar.gz", "\xC3\xA4.txt",
                             "bad\xFFname", "back\\slash", "we*rd", ".dot"}) {
        tests::write_file(folder + "/" + name, "x");
    }
    fs::create_directory(folder + "/Sub");
    const std::pair<const char16_t*, std::string> cases[] = {
        {u"*", ".|..|.dot|a.text|A.TXT|b.txt|noext|Sub|we*rd|x[1].tar.gz|ä.txt"},
        {u"*.*", ".|..|.dot|a.text|A.TXT|b.txt|noext|Sub|we*rd|x[1].tar.gz|ä.txt"},
        {u"*.txt", "A.TXT|b.txt|ä.txt"},
        {u"Ä.*", "ä.txt"},
        {u"?.TXT", "A.TXT|b.txt|ä.txt"},
        {u"noext.*", "noext"},
        {u"*.gz", "x[1].tar.gz"},
        {u"x[1]*", "x[1].tar.gz"},
        {u"a.t*t", "a.text|A.TXT"},
        {u"NOEXT", "noext"},
        {u"a.txt", "A.TXT"},
        {u"we*rd", "we*rd"},
        {u"*.", ".|..|noext|Sub|we*rd"},
        {u"n*.", "noext"},
        {u"*.*.*", ".|..|.dot|a.text|A.TXT|b.txt|noext|Sub|we*rd|x[1].tar.gz|ä.txt"},
        {u"*.none", "2"},
        {u"n*ne\\none", "123"},
        {u"n*ne\\*", "123"},
        {u"none", "2"},
        {u"none\\*", "3"},
        {u"none\\none", "3"},
        {u"noext\\*", "267"},
        {u"SUB\\*", ".|.."},
        {u"Sub\\", "2"},
        {u"Sub\\..", fs::path(folder).filename()},
    };
    for (const auto& [pattern, names] : cases) {
        EXPECT_EQ(found(tests::platform_path(folder) + u"\\" + pattern), names);
    }
    EXPECT_EQ(found(u""), "3");
    EXPECT_EQ(found(u"C:\\"), "2");
    EXPECT_EQ(found(u"Q:\\*"), "3");
    fs::current_path(folder);
    EXPECT_EQ(found(u"*.gz"), "x[1].tar.gz");
    EXPECT_EQ(found(u"C:*.gz"), "x[1].tar.gz");
}

TEST(Find, DataOfFilesFoldersAndLinks) {
    const auto folder = tests::new_folder();
    tests::write_file(folder + "/file", "12345");
    fs::resize_file(folder + "/file", (std::uintmax_t{3} << 32) + 5);
    fs::permissions(folder + "/file", fs::perms::owner_read);
    fs::create_directory_symlink(folder, folder + "/link");
    fs::create_symlink("loop", folder + "/loop");
    const auto attributes = [&folder](const char* name, WIN32_FIND_DATAW& data) {
        const HANDLE search =
            FindFirstFileW(tests::platform_path(folder + "/" + name).c_str(), &data);
        EXPECT_TRUE(FindClose(search));
        return data.dwFileAttributes;
    };
    WIN32_FIND_DATAW data{};
    EXPECT_EQ(attributes("file", data), FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(data.nFileSizeHigh, 3U);
    EXPECT_EQ(data.nFileSizeLow, 5U);
    EXPECT_EQ(attributes("link", data), FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT);
    EXPECT_EQ(attributes("loop", data), FILE_ATTRIBUTE_REPARSE_POINT);
}

TEST(Find, NamesThatVanishArePassedOver) {
    const auto folder = tests::new_folder();
    for (const auto* name : {"/1", "/2", "/3"}) tests::write_file(folder + name, "x");
    WIN32_FIND_DATAW data{};
    const HANDLE search = FindFirstFileW((tests::platform_path(folder) + u"\\?").c_str(), &data);
    ASSERT_EQ(std::u16string(data.cFileName), u".");
    fs::remove(folder + "/2");
    EXPECT_TRUE(FindNextFileW(search, &data));
    EXPECT_EQ(std::u16string(data.cFileName), u"1");
    EXPECT_TRUE(FindNextFileW(search, &data));
    EXPECT_EQ(std::u16string(data.cFileName), u"3");
    EXPECT_FALSE(FindNextFileW(search, &data));
    FindClose(search);
    EXPECT_FALSE(FindNextFileW(search, &data));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
}

}  // namespace
