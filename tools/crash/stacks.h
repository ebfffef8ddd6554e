// The stacks of another process's threads.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <map>
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

/// Stops all threads of the process while it reads them. At most 256 frames of a thread.
[[nodiscard]] Stacks stacks_of(pid_t process);

/// The language's readable form of a mangled name, or the name itself.
[[nodiscard]] std::string readable(const char* name);

}  // namespace crash
