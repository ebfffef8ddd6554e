// Runs tests, each in a process of its own: what a process finds out once (its code page, its
// profile) one test mustn't settle for another. A single test runs in this process, as ctest and a
// debugger want it.
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/profile.h"

namespace {

// The framework's own list of the tests that the flags choose, written by a child.
std::string listing() {
    int ends[2];
    std::string text;
    if (pipe(ends) != 0) return text;
    const pid_t child = fork();
    if (child == 0) {
        dup2(ends[1], STDOUT_FILENO);
        testing::GTEST_FLAG(list_tests) = true;
        const int result = RUN_ALL_TESTS();
        std::fflush(stdout);
        _exit(result);
    }
    close(ends[1]);
    char part[4096];
    for (ssize_t size = 0; (size = read(ends[0], part, sizeof part)) > 0;) {
        text.append(part, static_cast<std::size_t>(size));
    }
    close(ends[0]);
    waitpid(child, nullptr, 0);
    return text;
}

// "Suite.", and below it lines of "  Name"; either may have a comment.
std::vector<std::string> chosen_tests() {
    std::vector<std::string> tests;
    std::istringstream lines(listing());
    std::string suite;
    for (std::string line; std::getline(lines, line);) {
        line.resize(std::min(line.size(), line.find('#')));
        if (line.starts_with("  ")) {
            tests.push_back(suite + line.substr(2, line.find(' ', 2) - 2));
        } else {
            suite = line.substr(0, line.find('.') + 1);
        }
    }
    return tests;
}

bool passes(const std::string& test, std::vector<char*> arguments) {
    auto filter = "--gtest_filter=" + test;
    arguments.insert(arguments.end(), {filter.data(), nullptr});
    pid_t child = 0;
    int status = 1;
    return posix_spawn(&child, "/proc/self/exe", nullptr, nullptr, arguments.data(), environ) ==
               0 &&
           waitpid(child, &status, 0) == child && status == 0;
}

}  // namespace

int main(int argc, char** argv) {
    // Nothing is shown to who runs the tests.
    unsetenv("DISPLAY");
    unsetenv("WAYLAND_DISPLAY");
    const std::vector<char*> arguments(argv, argv + argc);
    testing::InitGoogleTest(&argc, argv);
    const std::string filter = testing::GTEST_FLAG(filter);
    const bool is_one = filter.find_first_of("*?:-") == std::string::npos;
    const bool lists = testing::GTEST_FLAG(list_tests);
    const auto tests = is_one || lists ? std::vector<std::string>() : chosen_tests();
    if (tests.size() <= 1) {
        tests::profile_folder();
        return RUN_ALL_TESTS();
    }
    std::vector<std::string> failed;
    for (const auto& test : tests) {
        if (!passes(test, arguments)) failed.push_back(test);
    }
    std::cout << tests.size() - failed.size() << " of " << tests.size() << " tests passed\n";
    for (const auto& test : failed) std::cout << "failed: " << test << '\n';
    return failed.empty() ? 0 : 1;
}
