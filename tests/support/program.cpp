#include "tests/support/program.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>

#include "tests/support/profile.h"

namespace tests {
namespace {

std::vector<char*> words_of(const std::string& file, const std::vector<std::string>& arguments) {
    std::vector<char*> list{const_cast<char*>(file.c_str())};
    for (const auto& argument : arguments) list.push_back(const_cast<char*>(argument.c_str()));
    list.push_back(nullptr);
    return list;
}

}  // namespace

std::string copy_program(const std::string& program, const std::string& folder,
                         const std::string& name) {
    auto target = folder + "/" + name;
    std::filesystem::copy_file(program, target);
    return target;
}

std::string output_of(const std::string& file, const std::vector<std::string>& arguments) {
    int ends[2];
    if (pipe(ends) != 0) return "";
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_addclose(&actions, ends[0]);
    posix_spawn_file_actions_addclose(&actions, ends[1]);
    auto list = words_of(file, arguments);
    pid_t child = -1;
    EXPECT_EQ(posix_spawn(&child, file.c_str(), &actions, nullptr, list.data(), environ), 0);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    std::string text;
    char block[4096];
    ssize_t size = 0;
    while ((size = read(ends[0], block, sizeof block)) > 0) {
        text.append(block, static_cast<std::size_t>(size));
    }
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0) << file << " failed";
    return text;
}

// By files, so that no pipe can fill up with nobody reading.
Run run(const std::string& file, const std::vector<std::string>& arguments,
        const std::string& input) {
    const auto folder = new_folder();
    const auto in = folder + "/in";
    const auto out = folder + "/out";
    const auto err = folder + "/err";
    write_file(in, input);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    constexpr int kNew = O_WRONLY | O_CREAT;
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, in.c_str(), O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, out.c_str(), kNew, 0600);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, err.c_str(), kNew, 0600);
    auto list = words_of(file, arguments);
    pid_t child = -1;
    const int failure = posix_spawn(&child, file.c_str(), &actions, nullptr, list.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    EXPECT_EQ(failure, 0) << file;
    int status = 0;
    const bool has_ended = failure == 0 && waitpid(child, &status, 0) == child && WIFEXITED(status);
    return {has_ended ? WEXITSTATUS(status) : -1, read_file(out), read_file(err)};
}

}  // namespace tests
