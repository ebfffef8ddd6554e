// Registry keys out to a text and in again, by the command-line program.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/profile.h"
#include "tests/support/program.h"

namespace {

tests::Run reg(std::vector<std::string> arguments, const std::string& input = "") {
    arguments.insert(arguments.begin(), "reg");
    return tests::run(TESTS_TVUTIL, arguments, input);
}

std::string utf16(const std::string& ascii) {
    std::string bytes = "\xff\xfe";
    for (const char c : ascii) bytes.append({c, '\0'});
    return bytes;
}

TEST(TvutilReg, AnExportImportsExactly) {
    const std::string text =
        "Windows Registry Editor Version 5.00\r\n\r\n[HKEY_CURRENT_USER\\X]\r\n"
        "@=\"unnamed\"\r\n; Bare\r\n\"bare\"=hex(1):42,00,61,00,72,00,65,00\r\n"
        "\"break\"=hex(1):41,00,0d,00\r\n; %a%\r\n\"exp\"=hex(2):25,00,61,00,25,00,00,00\r\n"
        "; a | "
        "b\r\n\"list\"=hex(7):61,00,00,00,62,00,00,00,00,00\r\n\"n\"=dword:0000002a\r\n\"odd\"=hex("
        "1):41\r\n"
        "\r\n[HKEY_CURRENT_USER\\X\\Y]\r\n";
    for (const auto& form : {text, utf16(text), "\xef\xbb\xbf" + text}) {
        ASSERT_EQ(reg({"import", "-"}, form).code, 0);
        EXPECT_EQ(reg({"export", "HKCU\\X"}).out, utf16(text));
        EXPECT_EQ(reg({"delete", "HKCU\\X"}).code, 4);
        EXPECT_EQ(reg({"delete", "HKCU\\X", "--tree"}).code, 0);
        EXPECT_EQ(reg({"export", "HKCU\\X"}).code, 1);
    }
    const auto half = reg({"import", "-"}, text + "\"bad\"=what\r\n");
    EXPECT_EQ(half.code, 3);
    EXPECT_NE(half.err.find("line 16"), std::string::npos) << half.err;
    EXPECT_EQ(reg({"query", "HKCU\\X"}).code, 1);
}

TEST(TvutilReg, AnExportReplacesItsFileInOneStep) {
    namespace fs = std::filesystem;
    const auto folder = tests::new_folder();
    const auto file = folder + "/out.reg";
    const auto link = folder + "/link.reg";
    ASSERT_EQ(reg({"add", "HKCU\\E", "v", std::string(30'000, 'x')}).code, 0);
    tests::write_file(file, "old");
    fs::permissions(file, fs::perms(0640));
    fs::create_symlink(file, link);
    // The limit counts blocks of 512 bytes; ignoring the signal makes it an error, as a full disk.
    const auto full =
        tests::run("/bin/sh", {"-c", "trap '' XFSZ; ulimit -f 100; exec \"$0\" \"$@\"",
                               TESTS_TVUTIL, "reg", "export", "HKCU\\E", file});
    EXPECT_EQ(full.code, 4);
    EXPECT_NE(full.err.find("out.reg: the file is too large"), std::string::npos) << full.err;
    EXPECT_EQ(tests::read_file(file), "old");

    EXPECT_EQ(reg({"export", "HKCU\\E", link}).code, 0);
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(tests::read_file(file), reg({"export", "HKCU\\E"}).out);
    EXPECT_EQ(fs::status(file).permissions(), fs::perms(0640));
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), fs::directory_iterator()), 2);
    // A name without a folder is one in the current folder.
    const auto here = tests::run(
        "/bin/sh",
        {"-c", "cd \"$1\" && \"$0\" reg export 'HKCU\\E' out.reg", TESTS_TVUTIL, folder});
    EXPECT_EQ(here.code, 0) << here.err;
    EXPECT_EQ(tests::read_file(file), reg({"export", "HKCU\\E"}).out);
    EXPECT_EQ(reg({"export", "HKCU\\E", folder}).code, 4);
    EXPECT_EQ(reg({"export", "HKCU\\E", folder + "/none/x"}).code, 4);
}

TEST(TvutilReg, ARenameMovesAllAndRefusesWhatIsThere) {
    ASSERT_EQ(reg({"add", "HKCU\\R\\Old\\Below", "v", "1"}).code, 0);
    ASSERT_EQ(reg({"add", "HKCU\\R\\Other"}).code, 0);
    EXPECT_EQ(reg({"rename", "HKCU\\R\\Old", "Other"}).code, 3);
    EXPECT_EQ(reg({"rename", "HKCU\\R\\Old", "a\\b"}).code, 2);
    EXPECT_EQ(reg({"rename", "HKCU\\R\\Old", "New"}).code, 0);
    EXPECT_EQ(reg({"query", "HKCU\\R\\New\\Below", "--value", "v"}).out, "1\n");
    EXPECT_EQ(reg({"query", "HKCU\\R\\Old"}).code, 1);
}

}  // namespace
