// "tvutil os|file-version|error|firewall|log" as a shell sees them.
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <string>
#include <thread>

#include "tests/support/executable_image.h"
#include "tests/support/profile.h"
#include "tests/tools/tvutil.h"

namespace {

namespace fs = std::filesystem;
using tests::tvutil;

TEST(LogCommands, AnswerByExitCode) {
    const auto folder = tests::new_folder();
    tests::write_file(folder + "/x.exe", tests::pe_image().all());
    tests::write_file(folder + "/text", "no log");
    const std::vector<tests::Answer> answers = {
        {{"os"}, "", 0, "*"},
        {{"file-version", "@/x.exe"}, "", 0, "8.1.2.61\n"},
        {{"file-version", "@/text"}, "", 1, ""},
        {{"file-version", "@/none"}, "", 4, ""},
        {{"file-version", TESTS_TVUTIL}, "", 0, "8.0.0.0\n"},
        {{"error", "5"}, "", 0, "Access is denied.\n"},
        {{"error", "0x80070005"}, "", 0, "Access is denied.\n"},
        {{"error", "--host", "2"}, "", 0, "2 The file is not there.\n"},
        {{"error", "99999"}, "", 1, ""},
        {{"error", "5x"}, "", 2, ""},
        {{"error", "99999999999"}, "", 2, ""},
        {{"firewall", "check", "@/x.exe"}, "", 0, "not blocked\n"},
        {{"firewall", "check", "@/none"}, "", 4, ""},
        {{"firewall", "list"}, "", 0, "profiles in force: public\nfirewall on in: none\n"},
        {{"log", "start", "@/text", "P"}, "", 4, ""},
        {{"log", "start", "@", "P", "--mode", "0"}, "", 2, ""},
        {{"log", "write", "@/none.log", "x"}, "", 4, ""},
        {{"log", "header", "@/text"}, "", 3, ""},
        {{"log", "header", "@/none.log"}, "", 4, ""},
        {{"log", "sweep", "@/none"}, "", 4, ""},
        {{"log", "follow", "@/none/x.log"}, "", 4, ""},
        {{"log", "follow", "@/none.log", "--now"}, "", 4, ""},
        {{"log", "global", "hello"}, "", 0, ""},
    };
    tests::expect_answers(folder, answers);
}

TEST(LogCommands, WalkARun) {
    const auto folder = tests::new_folder();
    auto path = tvutil({"log", "start", folder, "Pelrin", "--mode", "2"}).out;
    ASSERT_FALSE(path.empty());
    path.pop_back();
    EXPECT_EQ(tvutil({"log", "write", path, "one"}).code, 0);
    EXPECT_EQ(tvutil({"log", "write", path, "two", "--debug"}).code, 0);
    const auto header = nlohmann::json::parse(tvutil({"log", "header", path, "--json"}).out);
    EXPECT_EQ(header["log"], path);
    EXPECT_EQ(header["mode"], "2");
    EXPECT_EQ(header["version"], "8.0.0.0");
    EXPECT_EQ(header["package"], "1");
    const auto lines = [&path](const char* option) {
        return tvutil({"log", "follow", path, "--now", option}).out;
    };
    EXPECT_NE(lines("--debug").find("] [DEB] two\n"), std::string::npos);
    EXPECT_EQ(lines("--debug").find("one"), std::string::npos);
    EXPECT_EQ(lines("--information").find("two"), std::string::npos);
    EXPECT_EQ(tvutil({"log", "follow", path, "--now", "--match", "] one"}).out.size(), 19U);
    const auto backup = fs::path(path.substr(path.rfind('\\') + 1)).replace_extension(".bak");
    EXPECT_TRUE(tvutil({"log", "sweep", folder, "--dry-run"}).out.starts_with("back up Pelrin_"));
    EXPECT_FALSE(fs::exists(folder + "/applog/" + backup.string()));
    EXPECT_EQ(tvutil({"log", "sweep", folder}).code, 0);
    EXPECT_TRUE(fs::exists(folder + "/applog/" + backup.string()));
}

// The file appears, grows by halves of lines, and is replaced, while it is followed.
TEST(LogCommands, FollowWhatIsWritten) {
    const auto folder = tests::new_folder();
    const auto file = folder + "/x.log";
    tests::Run followed{};
    std::thread follower([&] { followed = tvutil({"log", "follow", file, "--until", "end"}); });
    const auto wide = [](std::string_view text) {
        std::string bytes;
        for (const char c : text) bytes += {c, '\0'};
        return bytes;
    };
    const auto first = "\xFF\xFE" + wide("[1] a\r\n[2] [DEB] ");
    tests::write_file(file, first);
    tests::write_file(file, first + wide("b\r\n[3] c\r\n"));
    tests::write_file(file + ".new", wide("[4] of another file, end\r\n"));
    fs::rename(file + ".new", file);
    follower.join();
    EXPECT_EQ(followed.code, 0) << followed.err;
    EXPECT_TRUE(followed.out.ends_with("[4] of another file, end\n")) << followed.out;
    EXPECT_EQ(followed.out.find("\xEF\xBB\xBF"), std::string::npos);
}

}  // namespace
