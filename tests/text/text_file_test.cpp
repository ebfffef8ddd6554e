#include "tvutil2/text/text_file.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <random>

#include "tests/support/profile.h"
#include "tests/support/text_file_model.h"

namespace {

using tests::MemoryFile;
using tests::TextFileModel;
using Lines = std::vector<std::u16string>;
using Base = CTextFileBase;

struct Place {
    std::string host = tests::new_folder() + "/file.txt";
    std::u16string path = tests::platform_path(host);
};

Lines lines_of(CTextFileRead& reader) {
    Lines lines;
    for (std::u16string line; reader.ReadLine(line);) lines.push_back(line);
    EXPECT_TRUE(reader.Eof());
    return lines;
}

Lines narrow_lines_of(CTextFileRead& reader) {
    Lines lines;
    for (std::string line; reader.ReadLine(line);) {
        lines.emplace_back();
        for (const char c : line) lines.back() += static_cast<unsigned char>(c);
    }
    return lines;
}

std::string utf16le(std::u16string_view text) {
    return {reinterpret_cast<const char*>(text.data()), text.size() * 2};
}

TEST(TextFileRead, FindsEncodingAndLines) {
    using namespace std::string_literals;
    const struct {
        std::string bytes;
        Base::TEXTENCODING encoding;
        Lines lines;
    } kCases[] = {
        {"", Base::TE_UTF8, {u""}},
        {"abc", Base::TE_UTF8, {u"abc"}},
        {"abc\r\n", Base::TE_UTF8, {u"abc", u""}},
        {"a\rb\nc\r\nd", Base::TE_UTF8, {u"a", u"b", u"c", u"d"}},
        {"\n\r", Base::TE_UTF8, {u"", u"", u""}},
        {"\xFF\xFE" + utf16le(u"a\r\n"), Base::TE_UTF16_LE, {u"a", u""}},
        {"\xFE\xFF\0a\0\r\0\n\x04\x10"s, Base::TE_UTF16_BE, {u"a", u"\u0410"}},
        {"\xFF\xFE"s, Base::TE_UTF16_LE, {u""}},
        {"\xFF\xFE"
         "a\0b"s,
         Base::TE_UTF16_LE,
         {u"a"}},
        {"\xEF\xBB\xBF"
         "caf\xC3\xA9",
         Base::TE_UTF8,
         {u"café"}},
        {"\xEF\xBB\xBF", Base::TE_UTF8, {u""}},
        {"caf\xC3\xA9", Base::TE_UTF8, {u"café"}},
        {"caf\xE9 au lait\r\n", Base::TE_ANSI, {u"café au lait", u""}},
        {"\xC3", Base::TE_ANSI, {u"Ã"}},
        {"\xF7\x80\x80\x80", Base::TE_ANSI, {u"÷\u20AC\u20AC\u20AC"}},
        {"\xF6\x80\x80\x80", Base::TE_UTF8, {u"\uFFFD\uFFFD\uFFFD\uFFFD"}},
        {"\xC3\xA9 \xE9\xE2", Base::TE_UTF8, {u"é "}},
        {"\xF0\x9F\x98\x80", Base::TE_UTF8, {u"\uFFFD\uFFFD\uFFFD\uFFFD"}},
        // An overlong line end ends a line, and a continuation byte may be anything.
        {"\xC3\xA9\xC0\x8D\xC0\x8Ax\xC3\nz", Base::TE_UTF8, {u"é", u"x\u00CAz"}},
        {"a\0b\nc"s, Base::TE_UTF8, {u"a", u"c"}},
    };
    for (const auto& test : kCases) {
        MemoryFile file(test.bytes);
        CTextFileRead reader(&file);
        EXPECT_EQ(reader.GetEncoding(), test.encoding) << test.bytes;
        EXPECT_EQ(lines_of(reader), test.lines) << test.bytes;
        EXPECT_FALSE(reader.IsDataLost());
    }
}

TEST(TextFileRead, IsTheSameAsAUnitAtATime) {
    std::mt19937 random(1);
    const std::string kinds[] = {"ab\r\n", std::string("ab\n\0", 4), "a\r\n\xC3\xA9\xE2\x82\xAC",
                                 "abcdefgh\xE9\n"};
    for (const auto* mark : {"", "\xFF\xFE", "\xFE\xFF", "\xEF\xBB\xBF", "\xC3\xA9"}) {
        for (int run = 0; run < 200; ++run) {
            const auto& letters = kinds[random() % 4];
            const unsigned int line_ends = run % 3 == 0 ? 1 : 400;
            std::string bytes = mark;
            for (auto size = random() % 6000; size != 0; --size) {
                const char c = letters[random() % letters.size()];
                const bool is_end = c == '\r' || c == '\n' || c == '\0';
                bytes += is_end && random() % line_ends != 0 ? 'x' : c;
            }
            const auto expected = TextFileModel(bytes).read();
            MemoryFile file(bytes);
            CTextFileRead reader(&file);
            ASSERT_EQ(reader.GetEncoding(), expected.encoding);
            if (expected.encoding == Base::TE_ANSI) {
                ASSERT_EQ(narrow_lines_of(reader), expected.lines);
            } else {
                ASSERT_EQ(lines_of(reader), expected.lines);
            }
        }
    }
}

TEST(TextFileRead, LastPieceOfALongLineEndsAtItsZero) {
    for (const std::size_t size : {1022U, 1023U, 1024U, 2046U, 2047U, 5000U}) {
        std::string line(size, 'x');
        line[size / 2] = '\0';
        line[size - 1] = '\0';
        MemoryFile file(line + "\nend");
        CTextFileRead reader(&file);
        EXPECT_EQ(lines_of(reader), TextFileModel(file.bytes).read().lines) << size;
    }
}

TEST(TextFileRead, RestComesJoined) {
    for (const auto& [bytes, joined] :
         {std::pair{"a\r\nb", "a\nb"}, {"a\r\nb\r\n", "a\nb\n"}, {"", ""}, {"\n\n", "\n\n"}}) {
        MemoryFile file{bytes};
        CTextFileRead reader(&file);
        std::string narrow = "before";
        EXPECT_TRUE(reader.Read(narrow, "\n"));
        EXPECT_EQ(narrow, joined);
        EXPECT_TRUE(reader.Read(narrow, "\n"));
        EXPECT_EQ(narrow, "");

        file.place = 0;
        CTextFileRead again(&file);
        CString wide;
        EXPECT_TRUE(again.Read(wide, u"\n"));
        EXPECT_EQ(wide, CString(joined));

        // The separator may be the very text that is replaced.
        file.place = 0;
        CTextFileRead last(&file);
        narrow = "\n";
        EXPECT_TRUE(last.Read(narrow, narrow));
        EXPECT_EQ(narrow, joined);
    }
}

TEST(TextFileRead, NarrowTextOfAWideFileTellsWhatIsLost) {
    MemoryFile file("\xFF\xFE" + utf16le(u"caf\u00E9\n\u0416x\n\u00E9"));
    CTextFileRead reader(&file);
    reader.SetCodePage(1252);
    reader.SetUnknownChar('#');
    std::string line;
    EXPECT_TRUE(reader.ReadLine(line));
    EXPECT_EQ(line, "caf\xE9");
    EXPECT_FALSE(reader.IsDataLost());
    EXPECT_TRUE(reader.ReadLine(line));
    EXPECT_EQ(line, "#x");
    EXPECT_TRUE(reader.ReadLine(line));
    EXPECT_TRUE(reader.IsDataLost());
    reader.ResetDataLostFlag();
    EXPECT_FALSE(reader.IsDataLost());
}

TEST(TextFileRead, WithoutAFileIsAtItsEnd) {
    const Place place;
    const auto folder = tests::platform_path(tests::new_folder());
    CTextFileRead missing(place.path.c_str());
    CTextFileRead is_folder(folder.c_str());
    CTextFileRead none(nullptr);
    tests::write_file(place.host, "a\nb");
    CTextFileRead closed(place.path.c_str());
    EXPECT_TRUE(closed.IsOpen());
    closed.Close();
    for (auto* reader : {&missing, &is_folder, &none, &closed}) {
        std::string text = "kept";
        EXPECT_FALSE(reader->IsOpen());
        EXPECT_TRUE(reader->Eof());
        EXPECT_FALSE(reader->ReadLine(text));
        EXPECT_FALSE(reader->Read(text, ""));
        EXPECT_EQ(text, "kept");
    }
}

TEST(TextFileWrite, IsTheSameAsAUnitAtATime) {
    std::mt19937 random(2);
    for (const auto encoding : {Base::TE_UTF16_BE, Base::TE_UTF16_LE, Base::TE_UTF8}) {
        for (int run = 0; run < 50; ++run) {
            MemoryFile file;
            std::u16string all;
            CTextFileWrite writer(&file, encoding);
            for (auto parts = random() % 20; parts != 0; --parts) {
                std::u16string text(random() % 900, u'x');
                for (auto& unit : text) {
                    const auto kind = random() % 8;
                    unit = static_cast<char16_t>(1 + random() % (kind > 2    ? 0x7F
                                                                 : kind == 2 ? 0x7FF
                                                                             : 0xFFFE));
                }
                writer << text;
                writer.WriteEndl();
                all += text + u"\r\n";
            }
            writer.Close();
            EXPECT_NE(file.m_hFile, CFile::hFileNull);
            ASSERT_EQ(file.bytes, TextFileModel::written(all, encoding));
            for (std::size_t i = 0; i + 1 < file.writes.size(); ++i) {
                ASSERT_EQ(file.writes[i], 1024U);
            }
        }
    }
}

TEST(TextFileWrite, AnsiKeepsBytesAndTellsWhatIsLost) {
    const Place place;
    CTextFileWrite writer(place.path.c_str(), Base::TE_ANSI);
    writer.SetCodePage(1252);
    writer << "raw \xE9\x81 " << 'c' << u'w' << u"\u20AC" << std::string("s\0t", 3);
    EXPECT_FALSE(writer.IsDataLost());
    writer.SetUnknownChar('#');
    writer.Write(u"[\u0416]");
    EXPECT_TRUE(writer.IsDataLost());
    writer.WriteEndl();
    writer.Write(u"" + std::u16string(5000, u'y'));
    writer.Close();
    writer.Write("nothing");
    EXPECT_FALSE(writer.IsOpen());
    EXPECT_EQ(tests::read_file(place.host), "raw \xE9\x81 cw\x80s[#]\r\n" + std::string(5000, 'y'));
}

TEST(TextFileWrite, NarrowTextIsWidenedWithTheCodePage) {
    MemoryFile file;
    CTextFileWrite writer(&file, Base::TE_UTF8);
    writer.SetCodePage(1252);
    writer << "\x80\xE9";
    writer.Close();
    EXPECT_EQ(file.bytes, "\xEF\xBB\xBF\xE2\x82\xAC\xC3\xA9");
}

TEST(TextFileWrite, FailuresPassThroughButNotOutOfDestructors) {
    MemoryFile file;
    file.room = 1024;
    {
        CTextFileWrite writer(&file, Base::TE_ANSI);
        writer.Write(std::string(2048, 'x'));
        EXPECT_THROW(writer.Write("y"), CFileException);
        writer.Write(std::string(100, 'z'));
    }
    EXPECT_EQ(file.bytes, std::string(1024, 'x'));

    const Place place;
    CTextFileWrite writer(place.path.c_str(), Base::TE_UTF8);
    writer.Write(std::u16string(900, u'x'));
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit full{100, before.rlim_max};
    std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &full), 0);
    EXPECT_THROW(writer.Close(), CFileException);
    EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
    EXPECT_FALSE(writer.IsOpen());
    writer.Write(std::string(5000, 'x'));
    EXPECT_EQ(tests::read_file(place.host).size(), 100U);

    const auto folder = tests::platform_path(tests::new_folder());
    CTextFileWrite refused(folder.c_str(), Base::TE_UTF16_LE);
    EXPECT_FALSE(refused.IsOpen());
    refused.Write(std::string(5000, 'x'));
    refused.WriteEndl();
}

// What a file of its own keeps back or reads ahead stays unseen by who asks it.
TEST(TextFile, ItsOwnFileKnowsWhereItIs) {
    struct Writer : CTextFileWrite {
        using CTextFileBase::file;
        using CTextFileWrite::CTextFileWrite;
    };
    struct Reader : CTextFileRead {
        using CTextFileBase::file;
        using CTextFileRead::CTextFileRead;
    };
    const Place place;
    std::string expected;
    {
        Writer writer(place.path.c_str(), Base::TE_ANSI);
        // Blocks of every size around what is kept back, and in between the file itself is asked.
        for (unsigned int size = 1; size < 20000; size = size * 3 + 1) {
            const std::string text(size, static_cast<char>('a' + size % 26));
            writer.file->Write(text.data(), size);
            expected += text;
            EXPECT_EQ(writer.file->GetPosition(), expected.size());
            EXPECT_EQ(writer.file->GetLength(), expected.size());
        }
        writer.file->Seek(-3, CFile::current);
        writer.file->Write("xyz", 3);
        expected.replace(expected.size() - 3, 3, "xyz");
        writer.file->Write("!", 1);
        writer.file->Flush();
        EXPECT_EQ(tests::read_file(place.host), expected + "!");
        writer.Write("?");
    }
    expected += "!?";
    EXPECT_EQ(tests::read_file(place.host), expected);

    Reader reader(place.path.c_str());
    EXPECT_EQ(reader.file->GetPosition(), 0U);
    std::string bytes(expected.size() + 10, '\0');
    for (const unsigned int place_in_file : {0U, 7U, 5000U, 100U}) {
        EXPECT_EQ(reader.file->Seek(place_in_file, CFile::begin), place_in_file);
        EXPECT_EQ(reader.file->Read(bytes.data(), 10), 10U);
        EXPECT_EQ(reader.file->Seek(2, CFile::current), place_in_file + 12);
        const auto rest = reader.file->Read(bytes.data(), static_cast<UINT>(bytes.size()));
        EXPECT_EQ(bytes.substr(0, rest), expected.substr(place_in_file + 12));
        EXPECT_EQ(reader.file->GetPosition(), expected.size());
    }
}

TEST(TextFile, CopiesShareTheFileAndOneOfThemClosesIt) {
    const Place place;
    {
        CTextFileWrite first(place.path.c_str(), Base::TE_ANSI);
        first << "once";
        CTextFileWrite second(first);
        CTextFileWrite third(static_cast<CFile*>(nullptr), Base::TE_UTF8);
        third = first;
        third = second;
        CTextFileWrite moved(std::move(third));
        first.Close();
        EXPECT_FALSE(second.IsOpen());
        EXPECT_FALSE(moved.IsOpen());
        second << "twice";
        CTextFileWrite other((place.path + u"2").c_str(), Base::TE_ANSI);
        other << "other";
        other = second;
        EXPECT_EQ(tests::read_file(place.host + "2"), "other");
        second = std::move(moved);
    }
    EXPECT_EQ(tests::read_file(place.host), "once");

    tests::write_file(place.host, "a\nb\nc");
    CTextFileRead reader(place.path.c_str());
    std::string line;
    reader.ReadLine(line);
    CTextFileRead copy(reader);
    for (const auto* expected : {"b", "c"}) {
        EXPECT_TRUE(copy.ReadLine(line));
        EXPECT_EQ(line, expected);
    }
    CTextFileRead moved(std::move(copy));
    EXPECT_TRUE(copy.Eof());  // NOLINT(bugprone-use-after-move,clang-analyzer-cplusplus.Move)
    EXPECT_TRUE(moved.IsOpen());
}

// However far it has read, and whoever closed the file.
TEST(TextFile, NothingThrowsOnceTheFileIsClosed) {
    const Place place;
    tests::write_file(place.host, std::string(3000, 'a') + "\nb\n\xE9 ");
    for (const bool is_own : {true, false}) {
        for (int lines = 0; lines < 3; ++lines) {
            CFile file(place.path.c_str(), CFile::modeRead | CFile::shareDenyNone);
            auto reader = is_own ? CTextFileRead(place.path.c_str()) : CTextFileRead(&file);
            std::string text;
            for (int i = 0; i < lines; ++i) reader.ReadLine(text);
            CTextFileRead copy(reader);
            reader.Close();
            file.Close();
            CString wide;
            std::u16string units;
            EXPECT_FALSE(copy.IsOpen());
            EXPECT_FALSE(copy.Read(text, "\n") || copy.Read(wide, u"") || copy.Read(units, u""));
            for (int i = 0; i < 3; ++i) copy.ReadLine(text);
            EXPECT_FALSE(copy.ReadLine(wide) || copy.ReadLine(units));
            EXPECT_TRUE(copy.Eof());
            CTextFileRead again(copy);
            again = reader;
            copy.Close();
        }
    }
}

// A killed writer loses what has no full block yet, and nothing else.
TEST(TextFileWrite, EachFullBlockIsInTheFile) {
    const Place place;
    CTextFileWrite writer(place.path.c_str(), Base::TE_ANSI);
    for (unsigned int size = 1; size < 5000; ++size) {
        writer << 'x';
        ASSERT_EQ(std::filesystem::file_size(place.host), (size - 1) / 1024 * 1024);
    }
}

TEST(TextFile, WorksOverAStreamOfTheCLibrary) {
    const Place place;
    std::FILE* const stream = std::fopen(place.host.c_str(), "w+");
    ASSERT_NE(stream, nullptr);
    CStdioFile file(stream);
    CTextFileWrite writer(&file, Base::TE_UTF8);
    for (int i = 0; i < 400; ++i) {
        writer << u"\u00E9t\u00E9";  // so that a block ends between CR and LF
        writer.WriteEndl();
    }
    writer.Close();
    file.SeekToBegin();
    EXPECT_TRUE(tests::read_file(place.host).ends_with("\xC3\xA9t\xC3\xA9\r\n"));
    EXPECT_EQ(tests::read_file(place.host).size(), 3U + 400 * 7);
    CTextFileRead reader(&file);
    EXPECT_EQ(lines_of(reader).size(), 401U);
    file.Close();
}

TEST(TextFile, Utf8ByNumberIsRefusedWithADefault) {
    std::string text = "before";
    bool lost = false;
    Base::ConvertWcharToString(u"é", text, 65001, nullptr, 0);
    EXPECT_EQ(text, "\xC3\xA9");
    Base::ConvertWcharToString(u"é", text, 65001, &lost, 0);
    EXPECT_EQ(text, "");
    text = "before";
    Base::ConvertWcharToString(u"é", text, 65001, nullptr, '#');
    EXPECT_EQ(text, "");
    Base::ConvertWcharToString(u"é", text, 0, &lost, '#');
    EXPECT_EQ(text, "\xC3\xA9");
    EXPECT_FALSE(lost);
    Base::ConvertWcharToString(std::u16string(3000, u'Ж').c_str(), text, 1251, &lost, '#');
    EXPECT_EQ(text, std::string(3000, '\xC6'));
    lost = true;
    Base::ConvertWcharToString(u"plain", text, 1252, &lost, 0);
    EXPECT_TRUE(lost);
    std::u16string wide = u"before";
    Base::ConvertCharToWstring("x", wide, 4);
    EXPECT_EQ(wide, u"");
    Base::ConvertCharToWstring(std::string(3000, '\xC6').c_str(), wide, 1251);
    EXPECT_EQ(wide, std::u16string(3000, u'Ж'));
}

}  // namespace
