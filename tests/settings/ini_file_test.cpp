#include "tvutil2/settings/ini_file.h"

#include "tvutil2/framework/narrow_text.h"
#include "tvutil2/platform/base/last_error.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <map>
#include <utility>
#include <vector>

#include "tests/support/ansi_page.h"
#include "tests/support/host_files.h"
#include "tests/support/killed.h"
#include "tests/support/profile.h"

namespace {

using Entries = std::map<std::string, std::string>;  // "section|key", value

std::string utf8(std::u16string_view text) {
    return tvutil2::to_ansi(text);
}

Entries entries_of(const CIniFile& document) {
    Entries entries;
    document.sections.ForEach([&entries](std::u16string_view name, void* section) {
        if (section == nullptr) return;
        static_cast<CIniSection*>(section)->Values().ForEach(
            [&](std::u16string_view key, std::u16string_view value) {
                entries[utf8(name) + '|' + utf8(key)] = utf8(value);
            });
    });
    return entries;
}

std::string utf16(std::u16string_view text) {
    std::string bytes("\xFF\xFE");
    bytes.append(reinterpret_cast<const char*>(text.data()), text.size() * 2);
    return bytes;
}

// A host file and the platform's name of it.
struct File {
    explicit File(const std::string& content) { tests::write_file(host, content); }
    File() = default;
    [[nodiscard]] std::string content() const { return tests::read_file(host); }

    std::string host = tests::new_folder() + "/a.ini";
    std::u16string path = tests::platform_path(host);
};

TEST(IniFile, ReadsLinesByTheGrammar) {
    const struct {
        std::string content;
        Entries expected;
    } cases[] = {
        {"", {}},
        {"[s]", {}},
        {"k=v\n[s]\nk=v=w\r\n=v\ne=", {{"s|k", "v=w"}, {"s|e", ""}}},
        {"[s]\na = b\n;c=d\n#e\nf", {{"s|a ", " b"}, {"s|;c", "d"}}},
        {"[s] \na=1\n[t]\nb=2\n[t ]x\n [u]\nc=3", {{"t|b", "2"}, {"t|c", "3"}}},
        {"[s]\na=1\n[]\nb=2\n[t]\nc=3\n[s]\na=4\nd=5", {{"s|a", "4"}, {"s|d", "5"}, {"t|c", "3"}}},
        {"[a]]b[]\nk=v\n[k=v]\nx=y", {{"a]]b[|k", "v"}, {"k=v|x", "y"}}},
        {"[s]\nk=v\r\r\nl=w\r", {{"s|k", "v\r"}, {"s|l", "w\r"}}},
        {"[s]\n[a=b]\n[\n]\nx=y", {{"a=b|x", "y"}}},
        {std::string("[s]\na\0b=c\0d\ne=f", 15),
         {{std::string("s|a\0b", 5), std::string("c\0d", 3)}, {"s|e", "f"}}},
    };
    for (const auto& [content, expected] : cases) {
        // As narrow text, as UTF-8 with its mark, and as UTF-16.
        for (const auto& bytes :
             {content, "\xEF\xBB\xBF" + content, utf16(tvutil2::from_ansi(content))}) {
            const File file(bytes);
            EXPECT_EQ(entries_of(CIniFile(file.path.c_str())), expected) << bytes;
        }
    }
}

TEST(IniFile, TellsEncodingsAndRewritesNarrowFilesAlone) {
    const struct {
        std::string content;
        Entries expected;
        bool is_rewritten;
        int utf8;
        int utf16;
    } cases[] = {
        {"[s]\r\nk=v\r\n", {{"s|k", "v"}}, true, 0, 0},
        {"[s]", {}, true, 0, 0},
        {"", {}, true, 0, 0},
        {"[s]\nk=\xC3\xA4", {{"s|k", "ä"}}, false, 1, 0},
        {"\xEF\xBB\xBF[s]\nk=v", {{"s|k", "v"}}, false, 1, 0},
        {"[s]\nk=\xC3\xA4\xFF\nl=\xC3\nm=w",
         {{"s|k", "ä�"}, {"s|l", "�"}, {"s|m", "w"}},
         false,
         1,
         0},
        {"[s]\nk=\xE4z\nl=\xC3\xA4", {{"s|k", "äz"}, {"s|l", "Ã¤"}}, true, 0, 0},
        {"[s]\nk=v\nl=\x80\x81\xC3", {{"s|k", "v"}, {"s|l", "€\u0081Ã"}}, true, 0, 0},
        {utf16(u"[s]\nk=\u00E4"), {{"s|k", "ä"}}, false, 0, 1},
        {utf16(u"[s]\nk=v\nl=w") + "x", {{"s|k", "v"}, {"s|l", "w"}}, false, 0, 1},
        {"\xFF\xFE", {}, false, 0, 1},
        // The other byte order isn't known, and not given up for it.
        {std::string("\xFE\xFF\0[\0s\0]", 8), {}, false, 0, 0},
    };
    for (const auto& c : cases) {
        const File file(c.content);
        CIniFile document;
        EXPECT_EQ(document.Read(file.path.c_str()), 1);
        EXPECT_EQ(entries_of(document), c.expected) << c.content;
        EXPECT_EQ(document.utf8File, c.utf8) << c.content;
        EXPECT_EQ(document.unicodeFile, c.utf16) << c.content;
        EXPECT_EQ(file.content() != c.content, c.is_rewritten) << c.content;
        if (!c.is_rewritten) continue;
        EXPECT_TRUE(file.content().starts_with("\xFF\xFE"));
        EXPECT_EQ(entries_of(CIniFile(file.path.c_str())), c.expected) << c.content;
    }
}

// In a page that has no character for them.
TEST(IniFile, RewritesNoFileThatWouldLoseBytes) {
    tests::install_ansi_page(u"932");
    const File valid("[s]\nk=\x82\xA0\n");
    const File broken("[s]\nk=\x82\xA0\nl=\x81\x20\n");
    for (const auto* file : {&valid, &broken}) {
        EXPECT_EQ(CIniFile(file->path.c_str()).GetValue(u"s", u"k", u""), u"\u3042");
    }
    EXPECT_EQ(valid.content(), utf16(u"[s]\r\nk=\u3042\r\n"));
    EXPECT_EQ(broken.content(), "[s]\nk=\x82\xA0\nl=\x81\x20\n");
}

TEST(IniFile, FindsTheSequenceThatTellsUtf8) {
    const struct {
        std::string bytes;
        int expected;
    } cases[] = {{"", 0},
                 {"abc", 0},
                 {"a\xC3\xA4", 1},
                 {"\xC3", 0},
                 {"\x80", 0},
                 {"\xBF\xC3\xA4", 0},
                 {"\xE2\x82\xAC\xFF", 1},
                 {"\xE2\x82", 0},
                 {"\xE2\x82z", 0},
                 {"\xF6\xBF\xBF\xBF", 1},
                 {"\xF7\xBF\xBF\xBF", 0},
                 {"\xC0\x80", 1}};
    for (const auto& [bytes, expected] : cases) {
        auto copy = bytes + '\0';
        auto* const stream = fmemopen(copy.data(), bytes.empty() ? 1 : bytes.size(), "r");
        if (bytes.empty()) std::getc(stream);
        EXPECT_EQ(CIniFile::IsUTF8NotBom(stream), expected) << bytes;
        std::fclose(stream);
    }
}

// Long lines and large files: nothing behind them is lost, in memory or on the disk.
TEST(IniFile, KeepsEverythingBehindLongLines) {
    for (const std::size_t length : {std::size_t{10238}, std::size_t{10240}, std::size_t{65535},
                                     std::size_t{65536}, std::size_t{1} << 20U}) {
        const std::string value(length, 'x');
        for (const std::string umlaut : {"", "\xC3\xA4", "\xE4"}) {
            const File file("[s]\na=1\nlong=" + value + umlaut + "\r\nb=2\n[t]\nc=3");
            for (int round = 0; round < 2; ++round) {
                CIniFile document(file.path.c_str());
                EXPECT_EQ(document.GetValue(u"s", u"long", u"").GetLength(),
                          static_cast<int>(length + (umlaut.empty() ? 0 : 1)));
                EXPECT_EQ(document.GetValue(u"s", u"b", 0), 2);
                EXPECT_EQ(document.GetValue(u"t", u"c", 0), 3);
            }
        }
    }
}

TEST(IniFile, ReadsAMillionKeys) {
    std::u16string text;
    for (int i = 0; i < 1'000'000; ++i) {
        if (i % 1000 == 0) text += u"[s" + std::u16string(i / 1000 % 2, u'x') + u"]\r\n";
        CString line;
        line.Format(u"key%d=%d\r\n", i, i);
        text += line.View();
    }
    const File file(utf16(text));
    CIniFile document(file.path.c_str());
    ASSERT_EQ(document.Write(file.path.c_str(), 1, 0), 1);
    CIniFile again(file.path.c_str());
    for (int i = 0; i < 1'000'000; i += 997) {
        CString key;
        key.Format(u"key%d", i);
        EXPECT_EQ(again.GetValue(i / 1000 % 2 != 0 ? u"sx" : u"s", key, -1), i);
    }
}

TEST(IniFile, WritesInTheOrderOfComing) {
    const File file;
    CIniFile document;
    document.SetValue(u"b", u"z", 1);
    document.SetValue(u"b", u"a", u"two\nlines");
    document.SetValue(u"a", u"k", u"ä");
    static_cast<void>(document.GetValue(u"never", u"k", 0));
    document.RemoveKey(u"a", u"k");
    document.SetValue(u"c", u"d", reinterpret_cast<const unsigned char*>("abc"), 3);
    document.SetValue(u"c", u"e", nullptr, 3);
    ASSERT_EQ(document.Write(file.path.c_str(), 1, 1), 1);
    EXPECT_EQ(file.content(),
              utf16(u"[b]\r\nz=1\r\na=two\r\nlines\r\n[a]\r\n[c]\r\nd=YWJj\r\ne=\r\n"));
    ASSERT_EQ(document.Write(file.path.c_str(), 0, 0), 1);
    EXPECT_EQ(file.content(), "[b]\r\nz=1\r\na=two\r\nlines\r\n[a]\r\n[c]\r\nd=YWJj\r\ne=\r\n");
    // What the page doesn't hold isn't given up, be it found when much is written already.
    document.SetValue(u"a", u"l", CString(u'x', 200'000));
    document.SetValue(u"c", u"k", u"\xD800");
    ASSERT_EQ(document.Write(file.path.c_str(), 0, 0), 1);
    CIniFile again(file.path.c_str());
    EXPECT_EQ(again.GetValue(u"a", u"l", u"").GetLength(), 200'000);
    EXPECT_EQ(again.GetValue(u"c", u"k", u""), u"\xD800");
}

// Larger than the pieces in which it is written, with characters of two units at each place of
// them, over nothing, over less and over more than itself.
TEST(IniFile, WritesOverAnyContent) {
    const File file;
    for (const int count : {100'000, 50'000, 150'000}) {
        for (const int unicode : {0, 1}) {
            std::u16string value(static_cast<std::size_t>(count / 50'000 + unicode), u'x');
            for (int i = 0; i < count; ++i) value += u"\U0001F600";
            CIniFile document;
            document.SetValue(u"s", u"k", value.c_str());
            document.SetValue(u"s", u"lines", u"\n[t]\na=1\n\n");
            ASSERT_EQ(document.Write(file.path.c_str(), unicode, 0), 1);
            const auto text = u"[s]\r\nk=" + value + u"\r\nlines=\r\n[t]\r\na=1\r\n\r\n\r\n";
            ASSERT_TRUE(file.content() == (unicode != 0 ? utf16(text) : utf8(text))) << count;
        }
    }
}

TEST(IniFile, ReadsNumbersByOneRule) {
    const struct {
        const char16_t* text;
        int expected;
    } cases[] = {{u"0", 0},   {u"x", 7},      {u"", 7},   {u" 0", 7}, {u"00", 7},
                 {u"-3", -3}, {u"12abc", 12}, {u" 5", 5}, {u"+0", 7}};
    for (const auto& [text, expected] : cases) {
        CIniFile document;
        document.SetValue(u"s", u"k", text);
        EXPECT_EQ(document.GetValue(u"s", u"k", 7), expected) << utf8(text);
        EXPECT_EQ(document.GetValue(u"s", u"k", u"no"), text);
    }
    CIniFile document;
    EXPECT_EQ(document.GetValue(u"s", u"k", 7), 7);
    EXPECT_EQ(document.GetValue(u"s", u"k", u"no"), u"no");
    EXPECT_EQ(document.sections.GetCount(), 1);  // looking it up entered the name
}

TEST(IniFile, MergesAndClears) {
    const File file(utf16(u"[s]\r\na=1\r\n[t]\r\nb=2\r\n"));
    CIniFile document;
    document.SetValue(u"s", u"a", u"lost");
    document.SetValue(u"s", u"c", u"kept");
    document.Read(file.path.c_str());
    EXPECT_EQ(entries_of(document), (Entries{{"s|a", "1"}, {"s|c", "kept"}, {"t|b", "2"}}));
    CIniFile other;
    other.SetValue(u"x", u"y", u"z");
    other.ClearSection(file.path.c_str(), u"s");
    const Entries left{{"t|b", "2"}, {"x|y", "z"}};
    EXPECT_EQ(entries_of(other), left);
    EXPECT_EQ(entries_of(CIniFile(file.path.c_str())), left);
    other.ClearAll(file.path.c_str());
    EXPECT_EQ(entries_of(other), Entries());
    EXPECT_EQ(file.content(), "");
}

TEST(IniFile, TellsWhatCannotBeOpened) {
    CIniFile document;
    document.SetValue(u"s", u"k", 1);
    const auto folder = tests::platform_path(tests::new_folder());
    const struct {
        std::u16string path;
        DWORD error;
    } cases[] = {{folder, ERROR_ACCESS_DENIED},
                 {folder + u"\\no\\a.ini", ERROR_PATH_NOT_FOUND},
                 {u"", ERROR_PATH_NOT_FOUND}};
    for (const auto& [path, error] : cases) {
        EXPECT_EQ(document.Read(path.c_str()), 0);
        EXPECT_EQ(document.Write(path.c_str(), 1, 1), 0);
        EXPECT_EQ(GetLastError(), error) << utf8(path);
        document.Read(nullptr);
    }
    const File read_only("[s]\nk=2");
    ASSERT_EQ(chmod(read_only.host.c_str(), 0444), 0);
    EXPECT_EQ(document.Write(read_only.path.c_str(), 1, 0), 0);
    EXPECT_EQ(document.GetValue(u"s", u"k", 0), 1);
    EXPECT_EQ(document.Read(read_only.path.c_str()), 1);  // the write-back goes unnoticed
    EXPECT_EQ(document.GetValue(u"s", u"k", 0), 2);
    EXPECT_EQ(read_only.content(), "[s]\nk=2");
}

// A document of `count` keys with the same value.
void fill(CIniFile& document, int count, const char16_t* value) {
    for (int i = 0; i < count; ++i) {
        CString key;
        key.Format(u"key%d", i);
        document.SetValue(u"s", key, value);
    }
}

// Two processes write documents of unlike sizes over each other's while a third one reads: each
// time it finds one of both, whole.
TEST(IniFile, TwoWritersAndAReaderMeetNoMix) {
    const File file;
    const struct {
        int count;
        const char16_t* value;
    } documents[] = {{3000, u"a"}, {200, u"bcd"}};
    std::vector<pid_t> writers;
    for (const auto& [count, value] : documents) {
        CIniFile document;
        fill(document, count, value);
        ASSERT_EQ(document.Write(file.path.c_str(), 1, 0), 1);
        const auto child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            int failures = 0;
            for (int i = 0; i < 300; ++i) failures += 1 - document.Write(file.path.c_str(), 1, 0);
            _exit(failures == 0 ? 0 : 1);
        }
        writers.push_back(child);
    }
    for (const auto writer : writers) {
        int status = -1;
        while (waitpid(writer, &status, WNOHANG) == 0) {
            CIniFile document;
            ASSERT_EQ(document.Read(file.path.c_str()), 1);
            const auto entries = entries_of(document);
            const auto& expected = documents[entries.size() == 3000 ? 0 : 1];
            ASSERT_EQ(entries.size(), static_cast<std::size_t>(expected.count));
            for (const auto& [name, value] : entries) ASSERT_EQ(value, utf8(expected.value));
        }
        EXPECT_EQ(status, 0);
    }
}

// Killed before each of its system calls, a writer leaves the one document or the other.
TEST(IniFile, AKilledWriterLeavesOneDocument) {
    const File file;
    CIniFile few;
    CIniFile many;
    fill(few, 20, u"few");
    fill(many, 500, u"many");
    for (const auto& documents : {std::pair(&few, &many), std::pair(&many, &few)}) {
        auto* const before = documents.first;
        auto* const after = documents.second;
        const std::map<Entries, int> names{{entries_of(*before), 0}, {entries_of(*after), 1}};
        int found[] = {0, 0};
        for (int call = 0;; ++call) {
            ASSERT_EQ(before->Write(file.path.c_str(), 1, 0), 1);
            const bool is_killed =
                tests::kill_at_call(call, [&] { after->Write(file.path.c_str(), 1, 0); });
            const auto name = names.find(entries_of(CIniFile(file.path.c_str())));
            ASSERT_NE(name, names.end()) << call;
            ++found[name->second];
            if (!is_killed) break;
        }
        EXPECT_GT(found[0], 3);
        EXPECT_GT(found[1], 1);
    }
}

// A narrow file is rewritten by the very act of reading it: a full disk must not take it away.
TEST(IniFile, LeavesTheFileWhenTheDiskIsFull) {
    std::string content("[s]\n");
    for (int i = 0; i < 1000; ++i) content += "key" + std::to_string(i) + "=value\n";
    const File file(content);
    for (const auto room : {std::size_t{0}, content.size() / 2, content.size() * 3 / 2}) {
        CIniFile document;
        const tests::FullDisk full(room);
        EXPECT_EQ(document.Read(file.path.c_str()), 1);
        EXPECT_EQ(document.GetValue(u"s", u"key999", u""), u"value");
        EXPECT_EQ(file.content(), content) << room;
        EXPECT_EQ(document.Write(file.path.c_str(), 1, 0), 0);
        EXPECT_EQ(GetLastError(), ERROR_DISK_FULL);
        EXPECT_EQ(file.content(), content) << room;
    }
}

}  // namespace
