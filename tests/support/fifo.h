// A named pipe on which a test waits for what a started program writes.
#pragma once

#include <string>

namespace tests {

class Fifo {
  public:
    /// Makes the pipe in a folder of its own.
    Fifo();
    [[nodiscard]] const std::string& path() const { return m_path; }
    /// Waits for a writer and gives all that it writes.
    [[nodiscard]] std::string read_all() const;

  private:
    std::string m_path;
};

}  // namespace tests
