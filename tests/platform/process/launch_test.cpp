#include "tvutil2/platform/process/launch.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/utf.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <thread>
#include <vector>

#include "tests/support/fifo.h"
#include "tests/support/profile.h"

namespace {

int shell_execute(const std::u16string& file, const char16_t* arguments,
                  const char16_t* folder = nullptr, const char16_t* verb = nullptr) {
    return static_cast<int>(reinterpret_cast<std::intptr_t>(
        ShellExecuteW(nullptr, verb, file.c_str(), arguments, folder, SW_SHOWNORMAL)));
}

std::u16string reporter() {
    return tests::platform_path(std::string(TESTS_STARTED) + "/launched.exe");
}

// The values that a report gives under a name.
std::vector<std::string> values(const std::string& report, const std::string& name) {
    std::vector<std::string> found;
    std::istringstream lines(report);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(name + "=")) found.push_back(line.substr(name.size() + 1));
    }
    return found;
}

std::string value(const std::string& report, const std::string& name) {
    const auto all = values(report, name);
    return all.size() == 1 ? all[0] : "";
}

TEST(Launch, CommandLinesAreSplitByTheRunTimeLibrarysRules) {
    using List = std::vector<std::u16string>;
    const std::pair<const char16_t*, List> cases[] = {
        {u"", {}},
        {u" \t ", {}},
        {u"-url ssh://a@b/c", {u"-url", u"ssh://a@b/c"}},
        {u":[0] -query host", {u":[0]", u"-query", u"host"}},
        {u"\"a b c\" d e", {u"a b c", u"d", u"e"}},
        {u"\"ab\\\"c\" \"\\\\\" d", {u"ab\"c", u"\\", u"d"}},
        {u"a\\\\b d\"e f\"g h", {u"a\\\\b", u"de fg", u"h"}},
        {u"a\\\\\\\"b c d", {u"a\\\"b", u"c", u"d"}},
        {u"a\\\\\\\\\"b c\" d e", {u"a\\\\b c", u"d", u"e"}},
        {u"\"a b\"\"c d\"", {u"a b\"c d"}},
        {u"\"\" x \"", {u"", u"x", u""}},
        {u"\\\"\\\" \\", {u"\"\"", u"\\"}},
        {u"'a b' $HOME;`x`|&>", {u"'a", u"b'", u"$HOME;`x`|&>"}},
    };
    for (const auto& [text, arguments] : cases) {
        EXPECT_EQ(tvutil2::split_command_line(text), arguments) << tvutil2::to_utf8_lossy(text);
    }
}

TEST(Launch, AQuotedArgumentStaysOne) {
    // Every text of up to five characters that mean something, and one that doesn't.
    constexpr std::u16string_view kUnits = u" \t\\\"x";
    std::vector<std::u16string> texts{u""};
    for (std::size_t i = 0; texts[i].size() < 5; ++i) {
        for (const auto c : kUnits) texts.push_back(texts[i] + c);
    }
    for (const auto& text : texts) {
        const auto line = u"-a " + tvutil2::quoted_argument(text) + u" b";
        EXPECT_EQ(tvutil2::split_command_line(line),
                  (std::vector<std::u16string>{u"-a", text, u"b"}));
    }
    EXPECT_EQ(tvutil2::quoted_argument(u"ssh://D\\alice@host\\"), u"ssh://D\\alice@host\\");
}

TEST(Launch, StartedProgramGetsItsArgumentsAndAFreshStart) {
    const tests::Fifo report;
    setenv("TVUTIL_TEST_REPORT", report.path().c_str(), 1);
    const auto folder = tests::new_folder();
    // What a program mustn't inherit: an open file, a blocked signal, an ignored one.
    const int leak = open("/dev/null", O_RDONLY);
    ASSERT_GE(leak, 3);
    std::signal(SIGPIPE, SIG_IGN);
    sigset_t blocked;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &blocked, nullptr);

    EXPECT_GT(shell_execute(reporter(), u"-url \"a b\" $HOME h\u00E4lt;",
                            tests::platform_path(folder).c_str()),
              32);
    const auto text = report.read_all();
    EXPECT_EQ(values(text, "argument"),
              (std::vector<std::string>{"-url", "a b", "$HOME", "h\xC3\xA4lt;"}));
    EXPECT_EQ(value(text, "folder"), folder);
    EXPECT_EQ(value(text, "files"), "0 1 2 ");
    EXPECT_EQ(value(text, "blocked"), "0000000000000000");
    EXPECT_EQ(value(text, "ignored"), "0000000000000000");
    EXPECT_EQ(value(text, "leader"), "1");

    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child, and in time a zombie, is left";
    EXPECT_EQ(errno, ECHILD);
    sigset_t now{};
    pthread_sigmask(SIG_BLOCK, nullptr, &now);
    EXPECT_EQ(sigismember(&now, SIGTERM), 1);
    EXPECT_EQ(sigismember(&now, SIGINT), 0) << "the caller's mask must come back";
    close(leak);
}

TEST(Launch, PipesOfTheCallerAreNotHeld) {
    const tests::Fifo report;
    setenv("TVUTIL_TEST_REPORT", report.path().c_str(), 1);
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const auto caller = fork();
    if (caller == 0) {
        dup2(ends[1], STDOUT_FILENO);
        dup2(ends[1], STDERR_FILENO);
        close(STDIN_FILENO);
        _exit(shell_execute(reporter(), u"x") > 32 ? 0 : 1);
    }
    close(ends[1]);
    char byte = 0;
    // The started program is waiting for a reader of its report all the while.
    EXPECT_EQ(read(ends[0], &byte, 1), 0) << "the end of the pipe comes with the caller's";
    EXPECT_EQ(value(report.read_all(), "files"), "0 1 2 ");
    int status = -1;
    waitpid(caller, &status, 0);
    EXPECT_EQ(status, 0);
    close(ends[0]);
}

TEST(Launch, NamesWithoutRegardToCaseAndWithSlashes) {
    const tests::Fifo report;
    setenv("TVUTIL_TEST_REPORT", report.path().c_str(), 1);
    const auto name = *tvutil2::to_utf16(std::string(TESTS_STARTED) + "/LAUNCHED.EXE");
    EXPECT_GT(shell_execute(name, nullptr, nullptr, u"open"), 32);
    EXPECT_NE(report.read_all(), "");
}

TEST(Launch, FailuresOfTheStartAreTold) {
    setenv("PATH", "/no/such/folder:relative", 1);
    const auto folder = tests::new_folder();
    const auto make = [&folder](const std::string& name, const char* content, mode_t mode) {
        tests::write_file(folder + "/" + name, content);
        chmod((folder + "/" + name).c_str(), mode);
        return tests::platform_path(folder + "/" + name);
    };
    make("plain", "", 0644);
    struct {
        std::u16string file;
        int result;
        DWORD error;
    } const cases[] = {
        {tests::platform_path(folder + "/none.exe"), SE_ERR_FNF, ERROR_FILE_NOT_FOUND},
        {tests::platform_path(folder + "/no/none.exe"), SE_ERR_PNF, ERROR_PATH_NOT_FOUND},
        {tests::platform_path(folder + "/plain/none.exe"), SE_ERR_PNF, ERROR_PATH_NOT_FOUND},
        {u"Q:\\x.exe", SE_ERR_PNF, ERROR_PATH_NOT_FOUND},
        {u"", SE_ERR_PNF, ERROR_PATH_NOT_FOUND},
        {make("rubbish.exe", "rubbish", 0755), SE_ERR_BAD_FORMAT, ERROR_BAD_FORMAT},
        {make("orphan", "#!/no/such/interpreter\n", 0755), SE_ERR_BAD_FORMAT, ERROR_BAD_FORMAT},
        {make("Forbidden.EXE", "", 0644), SE_ERR_ACCESSDENIED, ERROR_ACCESS_DENIED},
        {make("text.txt", "", 0644), SE_ERR_NOASSOC, ERROR_NO_ASSOCIATION},
    };
    for (const auto& [file, result, error] : cases) {
        SetLastError(0);
        EXPECT_EQ(shell_execute(file, u"x"), result) << tvutil2::to_utf8_lossy(file);
        EXPECT_EQ(GetLastError(), error) << tvutil2::to_utf8_lossy(file);
    }
    EXPECT_EQ(shell_execute(reporter(), nullptr, u"C:\\no\\such\\folder"), SE_ERR_PNF);
    EXPECT_EQ(shell_execute(reporter(), nullptr, nullptr, u"print"), SE_ERR_NOASSOC);
    const char16_t lone[] = {u'a', 0xDC00, 0};
    EXPECT_EQ(shell_execute(reporter(), lone), SE_ERR_BAD_FORMAT);
    const std::u16string huge(std::size_t{1} << 18, u'a');
    EXPECT_EQ(shell_execute(reporter(), huge.c_str()), SE_ERR_OOM);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a failed start leaves nothing either";
}

TEST(Launch, DocumentsGoToTheDesktopsOpener) {
    const auto folder = tests::new_folder();
    const tests::Fifo report;
    tests::write_file(folder + "/xdg-open",
                      "#!/bin/sh\nprintf '%s' \"$#:$1\" > \"$TVUTIL_TEST_REPORT\"\n");
    chmod((folder + "/xdg-open").c_str(), 0755);
    setenv("PATH", (folder + ":/usr/bin:/bin").c_str(), 1);
    setenv("TVUTIL_TEST_REPORT", report.path().c_str(), 1);
    const auto document = folder + "/my $(notes).txt";
    tests::write_file(document, "");
    EXPECT_GT(shell_execute(tests::platform_path(document), u"ignored"), 32);
    EXPECT_EQ(report.read_all(), "1:" + document);
}

TEST(Launch, ManyThreadsStartPrograms) {
    constexpr int kThreads = 8;
    std::vector<std::thread> threads;
    const tests::Fifo report;
    setenv("TVUTIL_TEST_REPORT", report.path().c_str(), 1);
    const int reader = open(report.path().c_str(), O_RDWR);
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([] {
            for (int n = 0; n < 5; ++n) EXPECT_GT(shell_execute(reporter(), u"one"), 32);
        });
    }
    std::string text;
    char block[4096];
    const auto count = [&text] { return values(text, "argument").size(); };
    while (count() < kThreads * 5) {
        const auto size = read(reader, block, sizeof block);
        ASSERT_GT(size, 0);
        text.append(block, static_cast<std::size_t>(size));
    }
    for (auto& thread : threads) thread.join();
    for (const auto& files : values(text, "files")) EXPECT_EQ(files, "0 1 2 ");
    close(reader);
}

}  // namespace
