#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sys/stat.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/profile.h"
#include "tests/tools/tvutil.h"

namespace {

using tests::tvutil_in;

std::string folder_with_files() {
    auto folder = tests::new_folder();
    tests::write_file(folder + "/a.ini", "; top\r\n[S]\r\nk=v\r\nk=second\r\n");
    tests::write_file(folder + "/latin.ini", "[s]\r\nk=\xE4\r\n");
    tests::write_file(folder + "/good.ini", "[s]\nk=v\n");
    tests::write_file(folder + "/euro.ini", "[s]\nk=\xE2\x82\xAC\nl=v\n");
    return folder;
}

// Codes are the contract of scripts; what is printed is compared in full where it is data.
TEST(Commands, AnswerByExitCode) {
    const auto folder = folder_with_files();
    const std::vector<tests::Answer> answers = {
        {{}, "", 2, ""},
        {{"ini"}, "", 2, ""},
        {{"ini", "get", "@/a.ini", "s"}, "", 2, ""},
        {{"ini", "get", "@/a.ini", "s", "K"}, "", 0, "v\n"},
        {{"ini", "get", "@/a.ini", "s", "none"}, "", 1, ""},
        {{"ini", "list", "@/none.ini"}, "", 4, ""},
        {{"ini", "list", "@/good.ini"}, "", 0, "[s]\nk=v\n"},
        {{"ini", "set", "@/no/a.ini", "s", "k", "v"}, "", 4, ""},
        {{"ini", "set", "@/good.ini", "s", "k=x", "v"}, "", 4, ""},
        {{"ini", "lint", "@/good.ini"}, "", 0, ""},
        {{"ini", "lint", "@/a.ini"}, "", 1, "*"},
        {{"ini", "lint", "@/none.ini"}, "", 4, ""},
        {{"ini", "convert", "@/good.ini"}, "", 2, ""},
        {{"ini", "convert", "@/good.ini", "--to", "klingon"}, "", 2, ""},
        {{"ini", "convert", "@/good.ini", "--to", "99999"}, "", 2, ""},
        {{"ini", "convert", "@/none.ini", "--to", "utf-8"}, "", 4, ""},
        {{"ini", "convert", "@", "--to", "utf-8"}, "", 4, ""},
        {{"ini", "convert", "@/latin.ini", "--to", "utf-16"}, "", 5, "*"},
        {{"ini", "convert", "@/euro.ini", "--to", "28591"}, "", 5, "*"},
        {{"option", "get", "x"}, "", 2, ""},
        {{"option", "get", "--file", "@/good.ini", "--section", "s", "k"}, "", 0, "v\n"},
        {{"option", "get", "--file", "@/good.ini", "k"}, "", 1, ""},
        {{"option", "set", "--company", "Co", "--registry", "n", "7", "--number"}, "", 0, ""},
        {{"option", "set", "--company", "Co", "--registry", "--section", "s", "t", "x"}, "", 0, ""},
        {{"option", "get", "--company", "Co", "--registry", "n"}, "", 0, "7\n"},
        {{"option", "list", "--company", "Co", "--registry"}, "", 0, "n=7\n[s]\nt=x\n"},
        {{"option", "list", "--company", "Co"}, "", 1, ""},
        {{"option", "set", "--company", "Co", "n", "7"}, "", 4, ""},
        {{"option", "set", "--file", "@/o.ini", "n", "x", "--number"}, "", 2, ""},
        {{"option", "set", "--file", "@/o.ini", "n", "x"}, "", 0, ""},
        {{"option", "list", "--file", "@/o.ini"}, "", 0, "[Default]\nn=x\n"},
        {{"sessions", "find", "C:\\none"}, "", 1, ""},
        {{"sessions", "move", "Pelrin"}, "", 2, ""},
        {{"data", "previous", "7"}, "", 2, ""},
        {{"data", "previous", "5"}, "", 1, ""},
        {{"features", "set", "none", "on"}, "", 2, ""},
        {{"features", "set", "dovr.filefilter", "maybe"}, "", 2, ""},
        {{"features", "set", "dovr.filefilter", "on"}, "", 0, ""},
    };
    tests::expect_answers(folder, answers);
}

TEST(Commands, PrintValidJson) {
    const auto folder = folder_with_files();
    tests::write_file(folder + "/odd.ini", "[]\na=\x01\"\\\xFF\n[s]\nk=1\nK=2\n[S]\nx=\n");
    const std::vector<std::string> cases[] = {
        {"ini", "list", "@/odd.ini", "--json"},
        {"ini", "lint", "@/odd.ini", "--json"},
        {"ini", "convert", "@/odd.ini", "--to", "utf-16", "--dry-run", "--json"},
        {"option", "list", "--file", "@/odd.ini", "--json"},
        {"option", "get", "--file", "@/odd.ini", "--section", "s", "k", "--json"},
        {"sessions", "list", "--json"},
        {"sessions", "where", "Pelrin", "--json"},
        {"data", "--json"},
        {"data", "previous", "5", "--json"},
        {"data", "check", "--json"},
        {"text", "convert", "@/odd.ini", "@/out", "--lossy", "--to", "utf-8", "--json"},
        {"features", "--json"}};
    for (const auto& arguments : cases) {
        const auto result = tvutil_in(folder, arguments);
        EXPECT_TRUE(nlohmann::json::accept(result.out))
            << testing::PrintToString(arguments) << result.out << result.err;
    }
    const auto listed =
        nlohmann::json::parse(tvutil_in(folder, {"ini", "list", "@/odd.ini", "--json"}).out);
    const auto set = nlohmann::json::parse(
        tvutil_in(folder, {"features", "set", "dovr.filefilter", "on", "--json"}).out);
    EXPECT_EQ(set["switches"]["dovr.filefilter"], 1);
    EXPECT_EQ(tvutil_in(folder, {"text", "convert", "@/odd.ini", "-", "--json"}).code, 2);
    EXPECT_EQ(listed["s"]["k"], "1");  // as every reader of one value sees it
}

TEST(IniConvert, KeepsEveryLine) {
    const std::string latin = "; M\xFCller\r\n\r\n[s]\nk=\xE4 \r\nno equals\nlast=\xDF";
    const auto folder = tests::new_folder();
    const auto file = folder + "/a.ini";
    tests::write_file(file, latin);
    ASSERT_EQ(chmod(file.c_str(), 0640), 0);
    const char* const last = "28591";
    const char* from = last;
    for (const auto* to :
         {"utf-16", "utf-8-bom", "utf-16be", "utf-8", "1252", "1201", "65001", "utf-16", last}) {
        const auto result =
            tvutil_in(folder, {"ini", "convert", "@/a.ini", "--to", to, "--from", from});
        ASSERT_EQ(result.code, 0) << to << result.err << result.out;
        from = to;
    }
    EXPECT_EQ(tests::read_file(file), latin);
    struct stat info {};
    ASSERT_EQ(stat(file.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777U, 0640U);
    EXPECT_EQ(
        tvutil_in(folder, {"ini", "convert", "@/a.ini", "--from", last, "--to", "utf-16"}).code, 0);
    EXPECT_TRUE(tests::read_file(file).starts_with("\xFF\xFE"));
    EXPECT_EQ(
        tvutil_in(folder, {"ini", "convert", "@/a.ini", "--from", last, "--to", "utf-8"}).code, 3);
}

TEST(IniConvert, TellsWhatWouldBeLost) {
    std::string content;
    for (int i = 0; i < 20'000; ++i) content += "key=value\n";
    const auto lossy = content + "k=\xE2\x82\xAC\n" + content + "l=\xC3\xA4\xE4\xBD\xA0\n";
    const auto folder = tests::new_folder();
    const auto file = folder + "/a.ini";
    tests::write_file(file, lossy);
    const auto result = tvutil_in(folder, {"ini", "convert", "@/a.ini", "--to", "28591", "--json"});
    EXPECT_EQ(result.code, 5);
    EXPECT_EQ(tests::read_file(file), lossy);
    const auto report = nlohmann::json::parse(result.out);
    EXPECT_EQ(report["lost_lines"], 2);
    EXPECT_EQ(report["lost"][0]["line"], 20'001);
    EXPECT_EQ(report["lost"][1]["line"], 40'002);
    EXPECT_EQ(report["changed"], false);
    EXPECT_EQ(tvutil_in(folder, {"ini", "convert", "@/a.ini", "--to", "28591", "--lossy"}).code, 5);
    EXPECT_EQ(tests::read_file(file), content + "k=?\n" + content + "l=\xE4?\n");
}

TEST(IniLint, NamesLinesAndRules) {
    using namespace std::string_literals;
    const auto swapped = [](const std::string& text) {
        auto bytes = "\xFE\xFF"s;
        for (const char c : text) (bytes += '\0') += c;
        return bytes;
    };
    const struct {
        std::string content;
        std::vector<std::string> expected;  // line, rule
    } cases[] = {
        {"", {}},
        {"; c\n# d\n\n[s]\nk=v\nl=\n[t]\nk=v", {}},
        {"k=v\nx\n[s\n", {"1 no-section", "2 no-equals", "3 unclosed-header"}},
        {"[s] \n[]\n=x\n", {"1 text-beside-header", "2 empty-section", "3 empty-key"}},
        {"[s]\nKey=1\n[t]\nkey=1\n[S]\n key =2\n", {"5 duplicate-section", "6 duplicate-key"}},
        {"[s]\nk=\xFF\nl=a\0b\nm=a\rb\r\n"s, {"2 bad-encoding", "3 nul", "4 carriage-return"}},
        {"[s]\nk=" + std::string(4096, 'x'), {"2 long-value"}},
        {swapped("[s]\nk=1\nk=2\n"), {"3 duplicate-key"}},
        {"\xFF\xFE[\0s\0]\0\n\0k\0=\0\0\xD8\n\0x"s, {"2 bad-encoding", "3 bad-encoding"}},
        {std::string(100'000, '['), {"1 unclosed-header"}},
    };
    const auto folder = tests::new_folder();
    for (const auto& [content, expected] : cases) {
        tests::write_file(folder + "/a.ini", content);
        const auto result = tvutil_in(folder, {"ini", "lint", "@/a.ini", "--json"});
        EXPECT_EQ(result.code, expected.empty() ? 0 : 1) << result.err;
        std::vector<std::string> found;
        const auto report = nlohmann::json::parse(result.out);
        for (const auto& finding : report["findings"]) {
            found.push_back(std::to_string(finding["line"].get<int>()) + " " +
                            finding["rule"].get<std::string>());
        }
        EXPECT_EQ(found, expected) << content.substr(0, 60);
    }
}

TEST(IniLint, ListsSomeOfManyAndRefusesTheHuge) {
    const auto folder = tests::new_folder();
    std::string content("[s]\n");
    for (int i = 0; i < 5000; ++i) content += "x\n";
    tests::write_file(folder + "/a.ini", content);
    const auto result = tvutil_in(folder, {"ini", "lint", "@/a.ini", "--limit", "3"});
    EXPECT_EQ(std::count(result.out.begin(), result.out.end(), '\n'), 4);
    EXPECT_TRUE(result.out.ends_with("and 4997 more\n")) << result.out;
    std::filesystem::resize_file(folder + "/a.ini", std::uintmax_t{1} << 40U);
    EXPECT_EQ(tvutil_in(folder, {"ini", "lint", "@/a.ini"}).code, 3);
    EXPECT_EQ(tvutil_in(folder, {"ini", "convert", "@/a.ini", "--to", "utf-8"}).code, 4);
}

TEST(CodePages, AreShownAndStreamed) {
    using namespace std::string_literals;
    const auto folder = tests::new_folder();
    tests::write_file(folder + "/gb", "A\x81\x30\x81\x30\x80\x81\x40z");
    tests::write_file(folder + "/cut", "a\xE2\x82");
    tests::write_file(folder + "/text", "\u20AC\0\u3042"s);
    const std::vector<tests::Answer> answers = {
        {{"decode", "54936", "@/gb"}, "", 0, "A\u0080.\u4E02z"},
        {{"decode", "65001", "@/cut"}, "", 3, "a"},
        {{"decode", "65001", "@/cut", "--trace"},
         "",
         3,
         "61  U+0061 a  from 61\nE2  waits with E2\n82  waits with E2 82\n"},
        {{"encode", "932", "@/text"}, "", 0, "?\0\x82\xA0"s},
        {{"encode", "932", "@/text", "--trace"},
         "",
         0,
         "U+20AC \u20AC  as 3F\nU+0000  as 00\nU+3042 \u3042  as 82 A0\n"},
        {{"encode", "932", "@/gb"}, "", 3, ""},
        {{"encode", "932", "@/none"}, "", 4, ""},
        {{"decode", "932", "@"}, "", 4, ""},
        {{"decode", "52936"}, "", 2, ""},
        {{"decode", "-1"}, "", 2, ""},
        {{"decode", "default", "@/none"}, "", 4, ""},
        {{"codepage"}, "", 2, ""},
    };
    tests::expect_answers(folder, answers);
    const auto pages = nlohmann::json::parse(tvutil_in(folder, {"codepage", "list", "--json"}).out);
    ASSERT_EQ(pages.size(), 35U);
    EXPECT_EQ(pages[0]["is_default"], true);
    EXPECT_EQ(pages[34]["code_page"], 1252);
    EXPECT_TRUE(nlohmann::json::accept(tvutil_in(folder, {"codepage", "default", "--json"}).out));
}

}  // namespace
