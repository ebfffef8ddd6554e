#include "tests/support/child.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/profile.h"

namespace tests {
namespace {

int result_of(pid_t child) {
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace

int in_child(const std::function<int()>& work) {
    const auto child = fork();
    if (child == 0) _exit(work());
    return result_of(child);
}

int in_child_alone(const std::function<int()>& work, std::string& printed) {
    const auto file = new_folder() + "/stderr";
    const int result = in_child([&] {
        setsid();
        dup2(open(file.c_str(), O_WRONLY | O_CREAT, 0600), STDERR_FILENO);
        return work();
    });
    printed = read_file(file);
    return result;
}

Terminal::Terminal(const std::function<int()>& work)
    : m_child(forkpty(&m_terminal, nullptr, nullptr, nullptr)) {
    if (m_child == 0) _exit(work());
}

Terminal::~Terminal() {
    if (m_terminal >= 0) close(m_terminal);
}

bool Terminal::read_more() {
    char block[1024];
    const auto size = read(m_terminal, block, sizeof block);
    if (size > 0) m_shown.append(block, static_cast<std::size_t>(size));
    return size > 0;
}

const std::string& Terminal::wait_for(const std::string& text) {
    while (m_shown.find(text, m_seen) == std::string::npos) {
        if (!read_more()) {
            ADD_FAILURE() << "never shown: " << text << "\nshown: " << m_shown;
            return m_shown;
        }
    }
    m_seen = m_shown.find(text, m_seen) + text.size();
    return m_shown;
}

void Terminal::type(const std::string& keys) const {
    EXPECT_EQ(write(m_terminal, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
}

void Terminal::hang_up() {
    close(m_terminal);
    m_terminal = -1;
}

const std::string& Terminal::read_all() {
    while (read_more()) {
    }
    return m_shown;
}

int Terminal::result() const {
    return result_of(m_child);
}

}  // namespace tests
