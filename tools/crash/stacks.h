// The stacks of another process's threads.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace crash {

struct Frame {
    std::uint64_t address = 0;
    std::string function;  ///< readable name; empty when none is known
    std::string module;    ///< host path; empty outside of all modules
};

struct Stacks {
    std::map<pid_t, std::vector<Frame>> threads;
    std::map<std::string, std::string> build_ids;  ///< by module, in hexadecimal digits
    std::string failure;                           ///< why there are none; else empty
};

/// Stops all threads of a process that may be looked at, for as long as it lives. They go on by
/// themselves when this process ends, however it ends.
class StoppedThreads {
  public:
    explicit StoppedThreads(pid_t process);
    ~StoppedThreads();
    StoppedThreads(const StoppedThreads&) = delete;
    StoppedThreads& operator=(const StoppedThreads&) = delete;

    [[nodiscard]] const std::set<pid_t>& all() const { return m_all; }
    /// Why there are none; else empty.
    [[nodiscard]] const std::string& failure() const { return m_failure; }

  private:
    std::set<pid_t> m_all;
    std::string m_failure;
};

/// At most 256 frames of a thread.
[[nodiscard]] Stacks stacks_of(pid_t process, const StoppedThreads& stopped);

/// The language's readable form of a mangled name, or the name itself.
[[nodiscard]] std::string readable(const char* name);

}  // namespace crash
