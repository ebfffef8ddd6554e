// What is under a path that a person has chosen. Asks the disk.
#pragma once

#include "tvutil2/platform/window/common_dialogs/folder_entry.h"

namespace tvutil2 {

/// What names stand for.
struct NameReading {
    std::u16string extension;    ///< of names without one; without a dot
    bool follows_links = false;  ///< a shortcut stands for what it leads to
};

/// By its name: nobody's file is read without need.
[[nodiscard]] bool may_be_link(const std::u16string& path);

/// The path becomes the entry's name: with the extension where there is nothing without it and it
/// has none, or that of what a shortcut leads to.
[[nodiscard]] FolderEntry look_at_file(const std::u16string& path, const NameReading& reading);

}  // namespace tvutil2
