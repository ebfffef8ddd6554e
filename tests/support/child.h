// Work in a child process, with and without a person at its terminal.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>

namespace tests {

/// Runs `work` in a child process and gives what it returned; -1 when it was killed.
int in_child(const std::function<int()>& work);

/// The same without a controlling terminal; `printed` is its standard error.
int in_child_alone(const std::function<int()>& work, std::string& printed);

/// A child process on a terminal of its own.
class Terminal {
  public:
    explicit Terminal(const std::function<int()>& work);
    ~Terminal();
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    /// Reads until the terminal has shown `text` once more; all that was shown.
    const std::string& wait_for(const std::string& text);
    void type(const std::string& keys) const;
    void hang_up();
    /// Reads to the end, all that was shown.
    const std::string& read_all();
    /// What `work` returned; -1 when it was killed.
    [[nodiscard]] int result() const;

  private:
    bool read_more();

    int m_terminal = -1;
    pid_t m_child;
    std::string m_shown;
    std::size_t m_seen = 0;
};

}  // namespace tests
