// Where a person may want to go in a dialog for files.
#pragma once

#include "tvutil2/platform/window/common_dialogs/folder_entry.h"

#include <vector>

namespace tvutil2 {

/// Home first; the desktop and the other folders of the person as far as they are there; the
/// drives; what is mounted for the person to use: below /media, /mnt and /run/media, and other
/// machines' folders. Asks the disk, but nothing of what is mounted.
[[nodiscard]] std::vector<FolderPlace> places_of_person();

}  // namespace tvutil2
