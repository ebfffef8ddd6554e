// The program with a person at its terminal.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <csignal>
#include <string>
#include <vector>

#include "tests/support/child.h"
#include "tests/tools/tvutil.h"

namespace {

void start(std::vector<std::string> arguments) {
    std::vector<char*> words{const_cast<char*>(TESTS_TVUTIL)};
    for (auto& argument : arguments) words.push_back(argument.data());
    words.push_back(nullptr);
    execv(TESTS_TVUTIL, words.data());
    _exit(127);
}

std::string shown(const std::vector<std::string>& arguments) {
    tests::Terminal terminal([&] {
        start(arguments);
        return 0;
    });
    auto text = terminal.read_all();
    EXPECT_GE(terminal.result(), 0);
    return text;
}

TEST(TvutilTerminal, StoredTextCannotCommandIt) {
    const std::string odd = "a\x1b[31m\x7f\u009b\u202e\u00e4z";
    ASSERT_EQ(tests::tvutil({"reg", "add", "HKCU\\T", "v", odd}).code, 0);
    const std::string visible = "a<001B>[31m<007F><009B><202E>\u00e4z";
    EXPECT_EQ(shown({"reg", "query", "HKCU\\T", "--value", "v"}), visible + "\r\n");
    const auto json = shown({"reg", "query", "HKCU\\T", "--value", "v", "--json"});
    EXPECT_NE(json.find("a\\u001b[31m\\u007f\\u009b\\u202e\u00e4z"), std::string::npos) << json;
    EXPECT_NE(shown({"reg", "query", "HKCU\\" + odd}).find(visible), std::string::npos);
    EXPECT_NE(shown({odd}).find(visible), std::string::npos);
    EXPECT_EQ(tests::tvutil({"reg", "query", "HKCU\\T", "--value", "v"}).out, odd + "\n");
    EXPECT_EQ(shown({"base64", "decode", "/dev/null"}), "");

    const auto exported = shown({"reg", "export", "HKCU\\T"});
    EXPECT_EQ(exported.find("Windows Registry Editor Version 5.00\r\n"), 0U) << exported;
    EXPECT_NE(exported.find("\"v\"=\"" + visible + "\"\r\n"), std::string::npos) << exported;
}

TEST(TvutilTerminal, OneEndOfInputEnds) {
    tests::Terminal terminal([] {
        start({"base64", "encode"});
        return 0;
    });
    terminal.type("a\n\x04");
    EXPECT_NE(terminal.read_all().find("YQo="), std::string::npos);
    EXPECT_EQ(terminal.result(), 0);
}

bool has_echo() {
    termios state{};
    return tcgetattr(STDIN_FILENO, &state) == 0 && (state.c_lflag & ECHO) != 0;
}

constexpr int kNoEcho = 100;

// Starts the program as a shell starts a job, and goes on with one that stops. The signal that
// ended it or 0; kNoEcho when the terminal doesn't show what is typed at a stop or in the end.
int as_job(const std::vector<std::string>& arguments) {
    const auto job = fork();
    if (job == 0) {
        setpgid(0, 0);
        signal(SIGTTOU, SIG_IGN);
        tcsetpgrp(STDIN_FILENO, getpid());
        signal(SIGTTOU, SIG_DFL);
        start(arguments);
    }
    int status = 0;
    while (waitpid(job, &status, WUNTRACED) == job && WIFSTOPPED(status)) {
        if (!has_echo()) return kNoEcho;
        kill(-job, SIGCONT);
    }
    if (!has_echo()) return kNoEcho;
    return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
}

TEST(TvutilTerminal, AHiddenQuestionGivesTheEchoBack) {
    for (const auto* keys : {"\x03", "\x1a"}) {
        tests::Terminal terminal([] { return as_job({"protect"}); });
        terminal.wait_for("the secret: ");
        terminal.type(keys);
        const bool is_stop = *keys == '\x1a';
        if (is_stop) {
            terminal.wait_for("the secret: ");
            terminal.type("open sesame\n");
        }
        EXPECT_EQ(terminal.read_all().find("open sesame"), std::string::npos);
        EXPECT_EQ(terminal.result(), is_stop ? 0 : SIGINT);
    }
}

}  // namespace
