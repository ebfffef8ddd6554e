#include "tests/support/killed.h"

#include <gtest/gtest.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <utility>

namespace tests {
namespace {

// The process, stopped at that call; -1 when it ended before.
pid_t run_to_call(int call, const std::function<void()>& work) {
    const auto child = fork();
    EXPECT_GE(child, 0);
    if (child == 0) {
        ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        raise(SIGSTOP);
        work();
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
    bool is_entry = true;  // stops come in pairs: before a call, and behind it
    for (int signal = 0; call >= 0;) {
        ptrace(PTRACE_SYSCALL, child, nullptr, signal);
        if (waitpid(child, &status, 0) != child || !WIFSTOPPED(status)) return -1;
        const bool is_call = WSTOPSIG(status) == (SIGTRAP | 0x80);
        signal = is_call ? 0 : WSTOPSIG(status);
        if (is_call && std::exchange(is_entry, !is_entry)) --call;
    }
    return child;
}

}  // namespace

bool kill_at_call(int call, const std::function<void()>& work) {
    const auto child = run_to_call(call, work);
    if (child < 0) return false;
    int status = 0;
    kill(child, SIGKILL);
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status));
    return true;
}

bool interrupt_at_call(int call, const std::function<void()>& work,
                       const std::function<void()>& meanwhile) {
    const auto child = run_to_call(call, work);
    if (child < 0) return false;
    meanwhile();
    int status = 0;
    ptrace(PTRACE_DETACH, child, nullptr, 0);
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status));
    return true;
}

}  // namespace tests
