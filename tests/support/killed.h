// Child processes that are killed in the midst of their work.
#pragma once

#include <functional>

namespace tests {

/// Lets `work` run in a process of its own, which is killed as it enters its system call number
/// `call` (0 is the first one). False when it ended before.
bool kill_at_call(int call, const std::function<void()>& work);

/// The same, but it isn't killed: `meanwhile` runs here, and then the process goes on to its end.
bool interrupt_at_call(int call, const std::function<void()>& work,
                       const std::function<void()>& meanwhile);

}  // namespace tests
