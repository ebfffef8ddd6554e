// The desktop's own dialog for files and folders, as a dialog of the program's.
#pragma once

#include "tvutil2/platform/display/driver.h"

#include <optional>

namespace tvutil2 {

/// Asks, and goes on with the thread's messages until there is an answer; the owner's top-level
/// window, if any, can't be used meanwhile. Nothing where the display has no such dialog. No path
/// is chosen when the person cancels, and when the owner or the display goes away or the program
/// is to quit. `question.answered` is this function's own.
[[nodiscard]] TVUTIL_API std::optional<FileAnswer> choose_files(FileQuestion question);

}  // namespace tvutil2
