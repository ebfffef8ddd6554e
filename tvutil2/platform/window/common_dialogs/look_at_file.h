// What is under a path that a person has chosen. Asks the disk.
#pragma once

#include "tvutil2/platform/window/common_dialogs/folder_entry.h"

namespace tvutil2 {

/// The path becomes the entry's name: with the extension, which has no dot, where there is nothing
/// without it and it has none.
[[nodiscard]] FolderEntry look_at_file(const std::u16string& path, const std::u16string& extension);

}  // namespace tvutil2
