#include "tvutil2/platform/files/user_dirs.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace {

constexpr auto kVariable = "XDG_DOCUMENTS_DIR";

TEST(UserDirs, OneLine) {
    const std::pair<std::string, std::optional<std::string>> cases[] = {
        {R"(XDG_DOCUMENTS_DIR="$HOME/Papers")", "/home/ann/Papers"},
        {"  \tXDG_DOCUMENTS_DIR=\"$HOME/Papers\"\r", "/home/ann/Papers"},
        {R"(XDG_DOCUMENTS_DIR="/mnt/d/Papers//" # moved)", "/mnt/d/Papers"},
        {R"(XDG_DOCUMENTS_DIR="$HOME/")", "/home/ann"},
        {R"(XDG_DOCUMENTS_DIR="$HOME")", "/home/ann"},
        {R"(XDG_DOCUMENTS_DIR="/")", "/"},
        {R"(XDG_DOCUMENTS_DIR="$HOME/a \"b\" \\ \$c")", R"(/home/ann/a "b" \ $c)"},
        {R"(#XDG_DOCUMENTS_DIR="/mnt/x")", std::nullopt},
        {R"(XDG_DOCUMENTS_DIRS="/mnt/x")", std::nullopt},
        {R"(XDG_DOCUMENTS_DIR ="/mnt/x")", std::nullopt},
        {R"(XDG_DOCUMENTS_DIR=/mnt/x)", std::nullopt},
        {R"(XDG_DOCUMENTS_DIR='/mnt/x')", std::nullopt},
        {R"(XDG_DOCUMENTS_DIR="/mnt/x)", std::nullopt},
        {R"(XDG_DOCUMENTS_DIR="/mnt/x\)", std::nullopt},
        {R"(XDG_DOCUMENTS_DIR="")", std::nullopt},
        {R"(XDG_DOCUMENTS_DIR="Papers")", std::nullopt},
        {R"(XDG_DOCUMENTS_DIR="$HOMER/Papers")", std::nullopt},
        {R"(XDG_DOCUMENTS_DIR="\$HOME/Papers")", std::nullopt},
        {R"(XDG_DOCUMENTS_DIR="$OTHER/Papers")", std::nullopt},
        {R"(XDG_DOCUMENTS_DIR="/mnt/$OTHER")", std::nullopt},
        {R"(XDG_DOCUMENTS_DIR="/mnt/`id`")", std::nullopt},
        {R"x(XDG_DOCUMENTS_DIR="/mnt/$(id)")x", std::nullopt},
        {std::string("XDG_DOCUMENTS_DIR=\"/mnt/\0x\"", 26), std::nullopt},
        {std::string("XDG_DOCUMENTS_DIR=\"/mnt/\\\0x\"", 27), std::nullopt},
        {"XDG_DOCUMENTS_DIR=\"/" + std::string(5000, 'x') + "\"", std::nullopt},
        {"", std::nullopt},
    };
    for (const auto& [line, folder] : cases) {
        EXPECT_EQ(tvutil2::user_dir(line, kVariable, "/home/ann"), folder) << line;
    }
    EXPECT_EQ(tvutil2::user_dir(R"(XDG_DOCUMENTS_DIR="$HOME/Papers")", kVariable, "/"), "/Papers");
    EXPECT_EQ(tvutil2::user_dir(R"(XDG_DOCUMENTS_DIR="$HOME")", kVariable, "/"), "/");
}

TEST(UserDirs, TheLastValidAssignmentCounts) {
    EXPECT_EQ(tvutil2::user_dir("XDG_DESKTOP_DIR=\"/desk\"\n"
                                "XDG_DOCUMENTS_DIR=\"/one\"\n"
                                "XDG_DOCUMENTS_DIR=\"/two\"\n"
                                "XDG_DOCUMENTS_DIR=\"$(three)\"\n",
                                kVariable, "/home/ann"),
              "/two");
}

}  // namespace
