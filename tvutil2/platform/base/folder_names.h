// Names of a host folder, looked up without regard to case.
//
// Whoever makes a new file asks whether a name that differs in case alone is there already. Read
// from the folder at each question, ten thousand new files in one folder would cost fifty million
// entries read. So a large folder that is asked for a second time is kept in memory and watched:
// inotify queues every change before the call that made it returns, in this process or another, and
// the queue is read before each answer. A folder on a file system whose changes can come from
// elsewhere (a network, a user-space file system) is read each time.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tvutil2 {

/// The entry of a host folder ("" is the root) that equals a name: exactly if there is one, else
/// without regard to case, the first in byte order, so that the answer doesn't hang on the order of
/// the directory. Names that the
/// platform can't express are never found. `is_there`, if given, tells whether the folder is a
/// folder at all. Safe from any thread.
[[nodiscard]] std::optional<std::string> find_without_case(const std::string& folder,
                                                           std::string_view name,
                                                           bool* is_there = nullptr);

}  // namespace tvutil2
