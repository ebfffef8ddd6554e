// Fork and exec, with nothing of the caller's in the new program but what is meant for it.
#pragma once

#include <sys/types.h>

namespace tvutil2 {

/// A program to start. It gets default signal actions, an empty mask, and none of the caller's open
/// files but the standard ones.
struct Program {
    const char* file;
    char* const* arguments;  ///< the first one is the program's name; null behind the last
    const char* folder;      ///< null for the current one
    bool has_own_session = false;
    /// Else there is no input, and an output that is a pipe isn't kept: whoever reads its other end
    /// would wait for the end of a program that nobody is to wait for.
    bool keeps_standard_files = false;
};

/// Starts a program that is nobody's child and has a session of its own: it isn't waited for and
/// leaves no zombie. 0, or the errno that kept it from running. Safe from any thread.
[[nodiscard]] int start_for_nobody(const Program& program);

/// Starts a program as a child, which the caller waits for. `child` is its number on success.
[[nodiscard]] int start_child(const Program& program, pid_t& child);

}  // namespace tvutil2
