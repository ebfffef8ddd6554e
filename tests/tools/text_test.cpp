#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "tests/support/profile.h"

namespace {

// The exit code of "tvutil text ..." in a folder; standard output goes to "printed" there.
int run(const std::string& folder, const std::string& arguments) {
    const auto line =
        "cd '" + folder + "' && '" TESTS_TVUTIL "' text " + arguments + " >printed 2>/dev/null";
    const int status = std::system(line.c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(TextCommand, ConvertsOrLeavesTheFileAsItWas) {
    using namespace std::string_literals;
    const auto folder = tests::new_folder();
    const struct {
        std::string input;
        const char* options;
        int code;
        std::string output;
    } cases[] = {
        {"caf\xE9\nx", "--from 1252 --to utf-8", 0, "caf\xC3\xA9\nx"},
        {"caf\xC3\xA9\r\n", "--to 1252 --line-ends lf", 0, "caf\xE9\n"},
        {"a\n", "--to utf-16", 0,
         "\xFF\xFE"
         "a\0\n\0"s},
        {"a\n", "--to utf-16be --line-ends crlf", 0, "\xFE\xFF\0a\0\r\0\n"s},
        {"\xFF\xFE\x3D\xD8\0\xDE"s, "--to utf-8-bom", 0, "\xEF\xBB\xBF\xF0\x9F\x98\x80"},
        {"a\rb\nc\r\nd\0"s, "--line-ends lf", 0, "a\nb\nc\nd\0"s},
        {"\xEF\xBB\xBF"
         "a\n",
         "--line-ends cr", 0,
         "\xEF\xBB\xBF"
         "a\r"},
        {"", "--to utf-16", 0, "\xFF\xFE"},
        {"ok\n\xE2\x82\xAC", "--to 28591", 5, "old"},
        {"ok\n\xE2\x82\xAC", "--to 28591 --lossy", 5, "ok\n?"},
        {"\xC3\xA9\xFF", "--to utf-16", 5, "old"},
        {"a", "--to klingon", 2, "old"},
        {"a", "--line-ends both", 2, "old"},
    };
    for (const auto& test : cases) {
        tests::write_file(folder + "/in", test.input);
        tests::write_file(folder + "/out", "old");
        EXPECT_EQ(run(folder, std::string("convert in out ") + test.options), test.code)
            << test.options;
        EXPECT_EQ(tests::read_file(folder + "/out"), test.output) << test.options;
    }
    tests::write_file(folder + "/in", "a\n");
    EXPECT_EQ(run(folder, "convert in in --line-ends crlf"), 0);
    EXPECT_EQ(tests::read_file(folder + "/in"), "a\r\n");
    EXPECT_EQ(run(folder, "convert - new --to utf-16 <in"), 0);
    EXPECT_EQ(tests::read_file(folder + "/new").size(), 8U);
    EXPECT_EQ(run(folder, "convert none out"), 4);
    EXPECT_EQ(run(folder, "convert . out"), 4);
    EXPECT_EQ(run(folder, "convert in no/out"), 4);
}

TEST(TextCommand, AFullDiskLeavesTheFileAsItWas) {
    const auto folder = tests::new_folder();
    tests::write_file(folder + "/in", std::string(100'000, 'x'));
    tests::write_file(folder + "/out", "old");
    // The limit counts blocks of 512 bytes; ignoring the signal makes it an error, as a full disk.
    const auto line = "cd '" + folder +
                      "' && trap '' XFSZ && ulimit -f 100 && '" TESTS_TVUTIL
                      "' text convert in out --to utf-16 2>/dev/null";
    const int status = std::system(line.c_str());
    EXPECT_EQ(WEXITSTATUS(status), 4);
    EXPECT_EQ(tests::read_file(folder + "/out"), "old");
    std::size_t files = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(folder)) ++files;
    EXPECT_EQ(files, 2U);
}

TEST(TextCommand, DetectsAsAReaderDoes) {
    const auto folder = tests::new_folder();
    tests::write_file(folder + "/f",
                      "\xEF\xBB\xBF"
                      "a\r\nb\nc");
    ASSERT_EQ(run(folder, "detect f --json"), 0);
    const auto json = nlohmann::json::parse(tests::read_file(folder + "/printed"));
    EXPECT_EQ(json["encoding"], "utf-8-bom");
    EXPECT_EQ(json["mark"], true);
    EXPECT_EQ(json["line_ends"], "mixed");
    EXPECT_EQ(json["lines"], 3);
    EXPECT_EQ(json["crlf"], 1);
    tests::write_file(folder + "/f", "caf\xE9 x\r\n");
    ASSERT_EQ(run(folder, "detect f"), 0);
    EXPECT_NE(tests::read_file(folder + "/printed").find("line ends: crlf\nlines: 1\n"),
              std::string::npos);
    EXPECT_EQ(tests::read_file(folder + "/printed").find("encoding: ansi"), 0U);
}

}  // namespace
