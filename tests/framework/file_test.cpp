#include "tvutil2/framework/file.h"

#include <gtest/gtest.h>

#include <cstdio>

#include "tests/support/profile.h"

namespace {

constexpr UINT kCreate = CFile::modeCreate | CFile::modeWrite;

struct Place {
    std::string host = tests::new_folder() + "/file.txt";
    CString path{tests::platform_path(host).c_str()};
};

CFileException::Cause cause_of(const char16_t* path, UINT flags) {
    CFile file;
    CFileException error;
    EXPECT_FALSE(file.Open(path, flags, &error));
    EXPECT_EQ(file.m_hFile, CFile::hFileNull);
    EXPECT_FALSE(file.Open(path, flags));
    return error.m_cause;
}

template <class Action>
CFileException::Cause thrown_by(Action action) {
    try {
        action();
    } catch (const CFileException& error) {
        return error.m_cause;
    }
    return CFileException::none;
}

TEST(File, ReadsWhatItWrote) {
    const Place place;
    CFile file;
    EXPECT_EQ(file.m_hFile, CFile::hFileNull);
    ASSERT_TRUE(file.Open(place.path, CFile::modeCreate | CFile::modeReadWrite));
    file.Write("0123456789", 10);
    EXPECT_EQ(file.GetLength(), 10U);
    EXPECT_EQ(file.Seek(-3, CFile::end), 7U);
    EXPECT_EQ(file.Seek(-2, CFile::current), 5U);
    char bytes[16] = {};
    EXPECT_EQ(file.Read(bytes, 16), 5U);
    EXPECT_STREQ(bytes, "56789");
    EXPECT_EQ(file.Read(bytes, 16), 0U);
    EXPECT_EQ(file.GetPosition(), 10U);
    EXPECT_EQ(thrown_by([&] { file.Seek(-1, CFile::begin); }), CFileException::badSeek);
    file.Close();
    file.Close();
    EXPECT_EQ(thrown_by([&] { file.Read(bytes, 1); }), CFileException::invalidFile);
    EXPECT_EQ(tests::read_file(place.host), "0123456789");
}

TEST(File, FlagsSayWhatBecomesOfTheContent) {
    const Place place;
    for (const auto& [flags, left] :
         {std::pair{UINT{CFile::modeWrite}, "newold"}, std::pair{UINT{kCreate}, "new"},
          std::pair{UINT{kCreate | CFile::modeNoTruncate}, "newold"}}) {
        for (const bool is_buffered : {false, true}) {
            tests::write_file(place.host, "oldold");
            CFile plain;
            CStdioFile buffered;
            CFile& file = is_buffered ? buffered : plain;
            ASSERT_TRUE(file.Open(place.path, flags));
            file.Write("new", 3);
            file.Close();
            EXPECT_EQ(tests::read_file(place.host), left) << flags;
        }
    }
}

TEST(File, FailuresHaveTheirCause) {
    const Place place;
    EXPECT_EQ(cause_of(place.path, CFile::modeRead), CFileException::fileNotFound);
    EXPECT_EQ(cause_of(place.path + u"\\x\\y", CFile::modeRead), CFileException::badPath);
    EXPECT_EQ(thrown_by([&] { CFile(place.path, CFile::modeRead); }), CFileException::fileNotFound);
    EXPECT_EQ(thrown_by([] { CStdioFile().WriteString(u"x"); }), CFileException::invalidFile);

    CFile file(place.path, kCreate | CFile::shareDenyWrite);
    EXPECT_EQ(cause_of(place.path, CFile::modeWrite | CFile::shareDenyNone),
              CFileException::sharingViolation);
    EXPECT_EQ(cause_of(place.path, CFile::shareDenyWrite), CFileException::sharingViolation);
    CFile reader(place.path, CFile::modeRead | CFile::shareDenyNone);
    EXPECT_EQ(thrown_by([&] { reader.Write("x", 1); }), CFileException::accessDenied);
}

TEST(StdioFile, LinesHaveTheEndsOfTheFormat) {
    const Place place;
    CStdioFile file(place.path, kCreate);
    file.WriteString(u"first\n\nthird ä\nlast");
    file.Close();
    EXPECT_EQ(tests::read_file(place.host), "first\r\n\r\nthird \xC3\xA4\r\nlast");

    // Line ends of other systems are understood as well.
    tests::write_file(place.host, "first\n\r\nthird \xC3\xA4\r\nl\rast");
    ASSERT_TRUE(file.Open(place.path, CFile::modeRead | CFile::shareDenyWrite));
    CString line;
    for (const auto* expected : {u"first", u"", u"third ä", u"l\rast"}) {
        EXPECT_TRUE(file.ReadString(line));
        EXPECT_EQ(line, expected);
    }
    EXPECT_FALSE(file.ReadString(line));
    EXPECT_TRUE(line.IsEmpty());

    file.SeekToBegin();
    char bytes[64] = {};
    EXPECT_EQ(file.Read(bytes, sizeof bytes), 21U);
    EXPECT_STREQ(bytes, "first\n\nthird \xC3\xA4\nl\rast");
}

TEST(StdioFile, BinaryLeavesBytesAlone) {
    const Place place;
    CStdioFile file(place.path, kCreate | CFile::typeBinary);
    file.WriteString(u"a\nb\r\n");
    file.Close();
    EXPECT_EQ(tests::read_file(place.host), "a\nb\r\n");
    ASSERT_TRUE(file.Open(place.path, CFile::modeRead | CFile::typeBinary));
    CString line;
    EXPECT_TRUE(file.ReadString(line));
    EXPECT_TRUE(file.ReadString(line));
    EXPECT_EQ(line, u"b\r");
}

TEST(StdioFile, LinesOfAnyLengthAndBytesOfAnyValueComeThrough) {
    const Place place;
    CString text;
    for (int i = 0; i < 100000; ++i) text.AppendChar(static_cast<char16_t>(u'a' + i % 26));
    text += u"\n";
    CStdioFile file(place.path, CFile::modeCreate | CFile::modeReadWrite);
    for (int i = 0; i < 3; ++i) file.WriteString(text);
    file.Write("\0\xFF\n", 3);
    EXPECT_EQ(file.GetLength(), 3U * 100002 + 4);
    file.SeekToBegin();
    CString line;
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(file.ReadString(line));
        EXPECT_EQ(line + u"\n", text);
    }
    EXPECT_TRUE(file.ReadString(line));
    EXPECT_EQ(line, CString(u"\0\xFFFD", 2));
}

TEST(StdioFile, WorksOverAnOpenStreamAndLeavesItOpen) {
    const Place place;
    std::FILE* const stream = std::fopen(place.host.c_str(), "w+");
    ASSERT_NE(stream, nullptr);
    {
        CStdioFile file(stream);
        file.WriteString(u"one\ntwo\n");
        EXPECT_EQ(file.GetLength(), 10U);
        EXPECT_NE(file.m_hFile, CFile::hFileNull);
        EXPECT_EQ(thrown_by([&] { file.Seek(-1, CFile::begin); }), CFileException::badSeek);
    }
    std::rewind(stream);
    CStdioFile file(stream);
    CString line;
    EXPECT_TRUE(file.ReadString(line));
    EXPECT_EQ(line, u"one");
    file.Close();
    EXPECT_EQ(file.m_hFile, CFile::hFileNull);
}

TEST(StdioFile, ADiskThatIsFullIsNotSilent) {
    CStdioFile file;
    ASSERT_TRUE(file.Open(tests::platform_path("/dev/full").c_str(),
                          CFile::modeWrite | CFile::shareDenyNone));
    file.WriteString(u"kept back until the end");
    EXPECT_EQ(thrown_by([&] { file.Close(); }), CFileException::diskFull);
    EXPECT_EQ(file.m_hFile, CFile::hFileNull);
}

}  // namespace
