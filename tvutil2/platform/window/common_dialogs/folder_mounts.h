// What the host has mounted, as far as dialogs for folders and files care.
#pragma once

#include "tvutil2/platform/base/export.h"

#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tvutil2 {

/// The mount points among the lines of a host's /proc/self/mountinfo that are of use to a person,
/// in their order: below /media, /mnt and /run/media, and other machines' folders.
[[nodiscard]] TVUTIL_API std::vector<std::string> mounts_of_use(std::string_view lines);

/// The names of a host folder at which the host must ask others, machines or programs, and might
/// wait for ever. `folder` has no links in it and no slash at its end; "" is the root.
[[nodiscard]] TVUTIL_API std::set<std::string> asking_mounts(std::string_view lines,
                                                             const std::string& folder);

/// The lines for this process; asks nothing of what is mounted.
[[nodiscard]] std::string mount_lines();

}  // namespace tvutil2
