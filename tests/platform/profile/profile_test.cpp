#include "tvutil2/platform/profile/profile.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/utf.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <ctime>
#include <filesystem>

#include "tests/support/ansi_page.h"
#include "tests/support/child.h"
#include "tests/support/killed.h"
#include "tests/support/profile.h"

namespace {

std::string utf16(std::u16string_view text) {
    std::string bytes("\xFF\xFE");
    bytes.append(reinterpret_cast<const char*>(text.data()), text.size() * 2);
    return bytes;
}

struct File {
    explicit File(const std::string& content) { tests::write_file(host, content); }
    File() = default;
    [[nodiscard]] std::string content() const { return tests::read_file(host); }
    [[nodiscard]] std::string value(const char16_t* section, const char16_t* key) const {
        char16_t buffer[200];
        GetPrivateProfileStringW(section, key, u"(none)  ", buffer, 200, path.c_str());
        return tvutil2::to_utf8_lossy(buffer);
    }
    [[nodiscard]] BOOL write(const char16_t* section, const char16_t* key,
                             const char16_t* value) const {
        return WritePrivateProfileStringW(section, key, value, path.c_str());
    }

    std::string folder = tests::new_folder();
    std::string host = folder + "/a.ini";
    std::u16string path = tests::platform_path(host);
};

TEST(Profile, FindsValues) {
    const File file(
        "k=before\n; [S]\n[S]\n k = v w \n;k=comment\nq=\" x \"\nr='y\n=n\nempty=\nK=second\nno\n"
        "[t ] ; behind\nk=1\n[s]\nk=other\nlate=1\n[\xC3\x84]\n\xC3\x96=umlaut\n");
    const struct {
        const char16_t* section;
        const char16_t* key;
        const char* expected;
    } cases[] = {{u"S", u"k", "v w"},    {u"s", u" K ", "v w"},
                 {u"s", u"q", " x "},    {u"s", u"r", "'y"},
                 {u"s", u"empty", ""},   {u"s", u"late", "(none)"},
                 {u" T", u"k", "1"},     {u"s", u"no", "(none)"},
                 {u"x", u"k", "(none)"}, {u"\u00E4", u"\u00F6", "umlaut"},
                 {u"", u"k", "(none)"}};
    for (const auto& [section, key, expected] : cases) {
        EXPECT_EQ(file.value(section, key), expected) << tvutil2::to_utf8_lossy(key);
    }
    EXPECT_EQ(File().value(u"s", u"k"), "(none)");
}

TEST(Profile, ReadsNumbers) {
    const File file(
        "[s]\na= -12x\nb=x\nc=\nd=4294967295\ne=+7\ng=0x1Fg\nh=-0o17\ni=0b112\nj=0x\nk=\"5\"\n");
    const struct {
        const char16_t* key;
        int expected;
    } cases[] = {{u"a", -12}, {u"b", 0},   {u"c", 0}, {u"d", -1}, {u"e", 7}, {u"f", -5},
                 {u"g", 31},  {u"h", -15}, {u"i", 3}, {u"j", 0},  {u"k", 5}};
    for (const auto& [key, expected] : cases) {
        EXPECT_EQ(static_cast<int>(GetPrivateProfileIntW(u"s", key, -5, file.path.c_str())),
                  expected);
    }
}

TEST(Profile, ListsAndCuts) {
    const File file("[s]\na=1\nb = 2\n[]\nx=y\n[t]\n");
    const auto list = [&](const char16_t* section, DWORD size) {
        std::u16string buffer(20, u'~');
        const auto count = GetPrivateProfileStringW(section, nullptr, u"d", buffer.data(), size,
                                                    file.path.c_str());
        EXPECT_EQ(buffer[size], u'~');
        return buffer.substr(0, count + 2);
    };
    using namespace std::string_literals;
    EXPECT_EQ(list(nullptr, 10), u"s\0t\0\0~"s);
    EXPECT_EQ(list(u"s", 10), u"a\0b\0\0~"s);
    EXPECT_EQ(list(u"s", 5), u"a\0b\0\0~"s);
    EXPECT_EQ(list(u"s", 4), u"a\0\0\0"s);
    EXPECT_EQ(GetLastError(), ERROR_MORE_DATA);
    EXPECT_EQ(list(u"x", 10), u"d\0\0"s);
    char16_t text[4];
    EXPECT_EQ(GetPrivateProfileSectionW(u"s", text, 4, file.path.c_str()), 2U);
    EXPECT_EQ(std::u16string(text, 4), u"a=\0\0"s);
    const File quoted("[s]\na=\" x \"\n");
    char16_t whole[10];
    EXPECT_EQ(GetPrivateProfileSectionW(u"s", whole, 10, quoted.path.c_str()), 8U);
    EXPECT_EQ(std::u16string(whole, 9), u"a=\" x \"\0\0"s);
    EXPECT_EQ(GetPrivateProfileStringW(u"s", u"z", u"long", text, 4, file.path.c_str()), 3U);
    EXPECT_STREQ(tvutil2::to_utf8_lossy(text).c_str(), "lon");
    EXPECT_EQ(GetPrivateProfileStringW(u"s", u"a", u"", text, 0, file.path.c_str()), 0U);
}

TEST(Profile, ChangesOnlyItsLine) {
    const struct {
        std::string before;
        const char16_t* section;
        const char16_t* key;
        const char16_t* value;
        std::string after;
    } cases[] = {
        {"", u"s", u"k", u"v", "[s]\r\nk=v\r\n"},
        {"; top", u"s", u"k", u"v", "; top\r\n\r\n[s]\r\nk=v\r\n"},
        {"[a]\nx=1\n", u"s", u"k", u"v", "[a]\nx=1\n\n[s]\nk=v\n"},
        {"[a]\r\n\r\n", u"s", u"k", u"v", "[a]\r\n\r\n[s]\r\nk=v\r\n"},
        {"[S]\n; c\n\xFF K  =  old \n\nz", u"s", u"y", u"v", "[S]\n; c\n\xFF K  =  old \ny=v\n\nz"},
        {"[S]\n K  =  old \n\nz", u"s", u"k", u"new", "[S]\n K  =  new\n\nz"},
        {"[s]\nk=", u"s", u"k", u"v", "[s]\nk=v"},
        {"[s]\nk=v", u"s", u"l", u"w", "[s]\nk=v\nl=w\n"},
        {"[s]\n\n; of t\n[t]\n", u"s", u"k", u"v", "[s]\nk=v\n\n; of t\n[t]\n"},
        {"[s]\nk=1\nx=\nK=2\n", u"s", u"k", nullptr, "[s]\nx=\n"},
        {"[s]\nk=1\n", u"s", u"l", nullptr, "[s]\nk=1\n"},
        {"[r]\n[s]\nk=1\n\n; of t\n[t]\n[S]\nl=2", u"s", nullptr, nullptr, "[r]\n; of t\n[t]\n"},
        {"[s]\n", u"s", u"k", u"v\nx=y", "[s]\nk=v\n"},
        {"\xEF\xBB\xBF[s]\n", u"s", u"k", u"\u00E4", "\xEF\xBB\xBF[s]\nk=\xC3\xA4\n"},
        {utf16(u"[s]\r\nk=\u00E4\r\n"), u"s", u"k", u"\u010D", utf16(u"[s]\r\nk=\u010D\r\n")},
        {utf16(u"[s]\r\nk=1"), u"t", u"k", u"2", utf16(u"[s]\r\nk=1\r\n\r\n[t]\r\nk=2\r\n")},
        {std::string("\xFE\xFF\0[\0s\0]\0\n\0k\0=\0a", 16), u"s", u"k", u"b",
         std::string("\xFE\xFF\0[\0s\0]\0\n\0k\0=\0b", 16)},
        {"[s]\n", u"s", u"k", u"\xD800", utf16(u"[s]\nk=\xD800\n")},
        // What isn't UTF-8 is in 1252, where no byte is lost, not even on the way to UTF-16.
        {"[s]\nk=\xE4\x81\n", u"s", u"l", u"\u00F6", "[s]\nk=\xE4\x81\nl=\xF6\n"},
        {"[s]\nk=\xE4\x81\n", u"s", u"l", u"\u010D", utf16(u"[s]\nk=\u00E4\x81\nl=\u010D\n")},
    };
    for (const auto& c : cases) {
        const File file(c.before);
        EXPECT_NE(file.write(c.section, c.key, c.value), FALSE);
        EXPECT_EQ(file.content(), c.after) << c.before;
    }
}

TEST(Profile, RefusesWhatCannotBeWritten) {
    const File file("[s]\nk=v\n");
    for (const auto* key : {u"", u" ", u"a=b", u";a", u" [a", u"a\nb"}) {
        EXPECT_EQ(file.write(u"s", key, u"v"), FALSE);
        EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    }
    EXPECT_EQ(file.write(nullptr, u"k", u"v"), FALSE);
    EXPECT_EQ(WritePrivateProfileStringW(u"s", u"k", u"v", (file.path + u"\\x").c_str()), FALSE);
    const auto folder = tests::platform_path(file.folder);
    EXPECT_EQ(WritePrivateProfileStringW(u"s", u"k", u"v", folder.c_str()), FALSE);
    EXPECT_EQ(WritePrivateProfileStringW(u"s", u"k", u"v", (folder + u"\\no\\a.ini").c_str()),
              FALSE);
    EXPECT_EQ(GetLastError(), ERROR_PATH_NOT_FOUND);
    ASSERT_EQ(chmod(file.host.c_str(), 0444), 0);
    EXPECT_EQ(file.write(u"s", u"k", u"w"), FALSE);
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_EQ(file.content(), "[s]\nk=v\n");
}

TEST(Profile, KeepsEveryEntryOfAHugeFile) {
    constexpr int kKeys = 250'000;
    std::string content = "[s]\n";
    for (int i = 0; i < kKeys; ++i) content += 'k' + std::to_string(i) + "=v\n";
    content += "long=" + std::string(2'000'000, 'x') + "\nlast=1\n";
    const File file(content);
    EXPECT_EQ(file.value(u"s", u"k249999"), "v");
    EXPECT_EQ(file.value(u"s", u"long"), std::string(199, 'x')) << "as far as the buffer goes";
    ASSERT_NE(file.write(u"s", u"last", u"2"), FALSE);
    ASSERT_NE(file.write(u"t", u"new", u"3"), FALSE);
    const auto written = file.content();
    content.replace(content.size() - 2, 1, "2");
    EXPECT_TRUE(written.starts_with(content));
    EXPECT_EQ(written.substr(content.size()), "\n[t]\nnew=3\n");
    EXPECT_EQ(file.value(u"s", u"k0"), "v");
}

TEST(Profile, KeepsTheAnsiPageOfAFile) {
    tests::install_ansi_page(u"1252");
    const File file("; caf\xE9\r\n[s]\r\nk=\x80\r\n");
    EXPECT_EQ(file.value(u"S", u"K"), "\u20AC");
    ASSERT_NE(file.write(u"s", u"\u00FC", u"\u00DF"), FALSE);
    EXPECT_EQ(file.content(), "; caf\xE9\r\n[s]\r\nk=\x80\r\n\xFC=\xDF\r\n");
    EXPECT_EQ(file.value(u"s", u"\u00DC"), "\u00DF");
}

// Without the one byte that isn't UTF-8 the rest would be read as that.
TEST(Profile, ReadsTheOtherLinesAsBefore) {
    tests::install_ansi_page(u"1252");
    for (const char16_t* const value : {u"v", static_cast<const char16_t*>(nullptr)}) {
        const File file("[s]\nk=\xE9\no=\xC3\xA4\n");
        ASSERT_NE(file.write(u"s", u"k", value), FALSE);
        EXPECT_EQ(file.value(u"s", u"o"), "\u00C3\u00A4");
    }
    const File ascii("[s]\n");
    ASSERT_NE(ascii.write(u"s", u"k", u"\u00C3\u00A4"), FALSE);
    EXPECT_EQ(ascii.value(u"s", u"k"), "\u00C3\u00A4");
}

// In a page that can't hold them, wrong bytes stay, and stand in the way of another encoding.
TEST(Profile, GivesUpNoByteForAnotherEncoding) {
    tests::install_ansi_page(u"932");
    const File file("[s]\n; \x81\x20\nk=\x82\xA0\n");
    EXPECT_EQ(file.value(u"s", u"k"), "\u3042");
    EXPECT_EQ(file.write(u"s", u"k", u"\u00E9"), FALSE);
    EXPECT_EQ(GetLastError(), ERROR_NO_UNICODE_TRANSLATION);
    ASSERT_NE(file.write(u"s", u"k", u"\u3044"), FALSE);
    EXPECT_EQ(file.content(), "[s]\n; \x81\x20\nk=\x82\xA2\n");
}

// A file of somebody else's folder that may be written is written in its place.
TEST(Profile, WritesInAFolderOfSomebodyElse) {
    const File file("[s]\nk=longer than before\n");
    ASSERT_EQ(chmod(file.host.c_str(), 0666), 0);
    ASSERT_EQ(chmod(file.folder.c_str(), 0555), 0);
    ASSERT_EQ(chmod(tests::profile_folder().c_str(), 0711), 0);
    struct stat before {};
    ASSERT_EQ(stat(file.host.c_str(), &before), 0);
    EXPECT_EQ(tests::in_child([&] {
                  constexpr uid_t kNobody = 65534;
                  if (geteuid() == 0 && seteuid(kNobody) != 0) return 1;
                  SetLastError(0);
                  if (file.write(u"s", u"k", u"v") == FALSE || GetLastError() != 0) return 2;
                  const auto other = tests::platform_path(file.folder + "/other.ini");
                  if (WritePrivateProfileStringW(u"s", u"k", u"v", other.c_str()) != FALSE)
                      return 3;
                  return GetLastError() == ERROR_ACCESS_DENIED ? 0 : 4;
              }),
              0);
    EXPECT_EQ(file.content(), "[s]\nk=v\n");
    struct stat after {};
    ASSERT_EQ(stat(file.host.c_str(), &after), 0);
    EXPECT_EQ(after.st_ino, before.st_ino);
    EXPECT_EQ(file.value(u"s", u"k"), "v");
}

TEST(Profile, AFolderInThePlaceOfTheFileStays) {
    const File file;
    std::filesystem::create_directory(file.host);
    tests::write_file(file.host + "/inside", "x");
    EXPECT_EQ(file.value(u"s", u"k"), "(none)");
    EXPECT_EQ(file.write(u"s", u"k", u"v"), FALSE);
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_EQ(tests::read_file(file.host + "/inside"), "x");
}

TEST(Profile, KeepsModeAndLinks) {
    const File file("[s]\n");
    ASSERT_EQ(chmod(file.host.c_str(), 0640), 0);
    const auto link = file.folder + "/link.ini";
    ASSERT_EQ(symlink("a.ini", link.c_str()), 0);
    ASSERT_NE(WritePrivateProfileStringW(u"s", u"k", u"v", tests::platform_path(link).c_str()),
              FALSE);
    EXPECT_EQ(file.content(), "[s]\nk=v\n");
    struct stat info {};
    ASSERT_EQ(stat(file.host.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777U, 0640U);
    EXPECT_TRUE(std::filesystem::is_symlink(link));
}

TEST(Profile, LeavesTheFileWhenTheDiskIsFull) {
    const File file("[s]\nk=v\n");
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &limit), 0);
    rlimit less = limit;
    less.rlim_cur = 5;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &less), 0);
    const auto result = file.write(u"s", u"k", u"longer");
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    EXPECT_EQ(result, FALSE);
    EXPECT_EQ(file.content(), "[s]\nk=v\n");
    const std::filesystem::directory_iterator entries(file.folder);
    EXPECT_EQ(std::distance(begin(entries), end(entries)), 1);
}

// A change by another hand is seen however soon it comes and however alike the file looks.
TEST(Profile, NeverAnswersFromAnOlderFile) {
    const File file("[s]\nk=0\n");
    for (int i = 0; i < 200; ++i) {
        tests::write_file(file.host, std::string("[s]\nk=") + static_cast<char>('0' + i % 10));
        EXPECT_EQ(GetPrivateProfileIntW(u"s", u"k", -1, file.path.c_str()),
                  static_cast<UINT>(i % 10));
    }
}

// A file that has been the same for a while isn't opened again, nor looked for.
TEST(Profile, AHotValueCostsOneSystemCall) {
    const File file("[s]\nk=7\n");
    struct stat info {};
    ASSERT_EQ(stat(file.host.c_str(), &info), 0);
    timespec now = info.st_ctim;
    const auto milliseconds = [](const timespec& t) {
        return t.tv_sec * 1000 + t.tv_nsec / 1000000;
    };
    while (milliseconds(now) < milliseconds(info.st_ctim) + 70) {
        EXPECT_EQ(file.value(u"s", u"k"), "7");
        clock_gettime(CLOCK_REALTIME_COARSE, &now);
    }
    const auto read = [&] {
        for (int i = 0; i < 500; ++i) GetPrivateProfileIntW(u"s", u"k", -1, file.path.c_str());
    };
    EXPECT_TRUE(tests::kill_at_call(490, read));
    EXPECT_FALSE(tests::kill_at_call(520, read));
}

void count_up(const File& file, const char16_t* key, int count) {
    for (int i = 1; i <= count; ++i) {
        const auto text = std::to_string(i);
        if (file.write(u"s", key, std::u16string(text.begin(), text.end()).c_str()) == FALSE) {
            _exit(1);
        }
    }
}

TEST(Profile, LosesNoUpdateOfTwoProcesses) {
    const File file;
    const auto child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        count_up(file, u"theirs", 150);
        _exit(0);
    }
    // Each of ours is a key of its own.
    for (int i = 0; i < 150; ++i) {
        auto key = std::to_string(i);
        key.insert(key.begin(), 'k');
        EXPECT_NE(file.write(u"s", std::u16string(key.begin(), key.end()).c_str(), u"1"), FALSE);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(file.value(u"s", u"theirs"), "150");
    char16_t names[4096];
    const auto size =
        GetPrivateProfileStringW(u"s", nullptr, nullptr, names, 4096, file.path.c_str());
    EXPECT_EQ(std::count(names, names + size, u'\0'), 151);
}

// A writer is killed before each system call that it makes: the file is the old one or the new one
// each time, and the next writer isn't held up by what the dead one left.
TEST(Profile, SurvivesAWriterKilledAnywhere) {
    const File file;
    const std::u16string big(20'000, u'x');
    const auto write_big = [&](const char16_t* value) { return file.write(u"s", u"big", value); };
    ASSERT_NE(write_big(big.c_str()), FALSE);
    ASSERT_EQ(chmod(file.host.c_str(), 0640), 0);
    const auto before = file.content();
    int olds = 0;
    int news = 0;
    for (int call = 0;; ++call) {
        const bool is_killed = tests::kill_at_call(call, [&] { write_big(u"small"); });
        const auto content = file.content();
        if (content == before) {
            ++olds;
        } else {
            ASSERT_EQ(content, "[s]\r\nbig=small\r\n") << call;
            ++news;
        }
        struct stat info {};
        ASSERT_EQ(stat(file.host.c_str(), &info), 0);
        EXPECT_EQ(info.st_mode & 0777U, 0640U) << call;
        ASSERT_NE(write_big(big.c_str()), FALSE) << call;
        ASSERT_EQ(file.content(), before) << call;
        if (!is_killed) break;
    }
    // There is a life before the new content and one behind it. (How long it is depends on the
    // heap, which takes calls of its own.)
    EXPECT_GT(olds, 5);
    EXPECT_GT(news, 1);
    const std::filesystem::directory_iterator entries(file.folder);
    EXPECT_EQ(std::distance(begin(entries), end(entries)), 1);
}

}  // namespace
