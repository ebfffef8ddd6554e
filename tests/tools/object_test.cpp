// "tvutil object|window" as a shell sees them, beside other programs.
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <string>

#include "tests/support/profile.h"
#include "tests/tools/tvutil.h"

namespace {

// Runs a script in a folder of its own, with the program as $tvutil.
std::string script(const std::string& text) {
    const auto folder = tests::new_folder();
    const auto run = tests::run(
        "/bin/bash", {"-c", "set -eu; tvutil=$1; cd \"$2\"\n" + text, "sh", TESTS_TVUTIL, folder});
    EXPECT_EQ(run.code, 0) << run.err;
    return run.out;
}

TEST(ObjectCommands, AnswerByExitCode) {
    tests::expect_answers(
        "", {
                {{"object", "wait", "mutex", "free", "--timeout", "0"}, "", 0, "taken\n"},
                {{"object", "wait", "mutex", "free", "--json"}, "", 0, "{\"result\":\"taken\"}\n"},
                {{"object", "wait", "event", "never", "--timeout", "0"}, "", 1, "timeout\n"},
                {{"object", "wait", "event", "a\\b"}, "", 4, ""},
                {{"object", "wait", "event", ""}, "", 2, ""},
                {{"object", "wait", "door", "x"}, "", 2, ""},
                {{"object", "hold", "free"}, "all of it", 0, "taken\n"},
                {{"object", "set", "never"}, "", 1, ""},
                {{"object", "set", "a\\b"}, "", 4, ""},
                {{"window", "list"}, "", 0, ""},
                {{"window", "list", "--json"}, "", 0, "[]\n"},
                {{"window", "find"}, "", 1, ""},
                {{"window", "post", "0", "16"}, "", 1, ""},
                {{"window", "post", "0x", "16"}, "", 2, ""},
                {{"window", "post", "1", "0x100000000"}, "", 2, ""},
            });
}

TEST(ObjectCommands, ShareAnEventAndSeeWhoDiedWithAMutex) {
    EXPECT_EQ(script(R"sh(
        "$tvutil" object wait event ready --timeout 60000 & waiter=$!
        until "$tvutil" object set 'Local\ready'; do kill -0 "$waiter"; done
        wait "$waiter"
        mkfifo in out
        "$tvutil" object hold door <in >out & owner=$!
        exec 3>in 4<out
        read -r said <&4; echo "owner: $said"
        "$tvutil" object wait mutex door --timeout 0 || echo "code $?"
        # Without anybody else who has it the name would go with its owner.
        "$tvutil" object wait mutex door --timeout 60000 & next=$!
        until [ -n "$(find "/proc/$next/fd" -lname '*tvutil2-object*')" ]; do kill -0 "$next"; done
        kill -9 "$owner"
        wait "$next"
        "$tvutil" object wait mutex door
    )sh"),
              "signalled\nowner: taken\ntimeout\ncode 1\nabandoned\ntaken\n");
}

TEST(WindowCommands, FindAndCloseAWindowOfAnotherProgram) {
    const auto told = script(R"sh(
        mkfifo out
        )sh" TESTS_STARTED R"sh(/with_window.exe 'a title' >out & program=$!
        read -r handle <out
        "$tvutil" window list --json
        window=$("$tvutil" window find --class tests::withwindow --title 'a title')
        [ "$window" = "$(printf '0x%x' "$handle")" ]
        [ "$("$tvutil" window list)" = "$window  $program  Tests::WithWindow  a title" ]
        "$tvutil" window post "$window" 0x402
        wait "$program" || [ $? -eq 3 ]
        "$tvutil" window post "$window" 0x402 || [ $? -eq 1 ]
    )sh");
    const auto list = nlohmann::json::parse(told);
    ASSERT_EQ(list.size(), 1U);
    EXPECT_EQ(list[0]["class"], "Tests::WithWindow");
    EXPECT_EQ(list[0]["title"], "a title");
}

}  // namespace
