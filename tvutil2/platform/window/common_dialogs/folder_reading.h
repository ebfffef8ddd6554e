// Folders read, as threads of the dialogs do it.
#pragma once

#include "tvutil2/platform/window/common_dialogs/folder_entry.h"

#include <functional>

namespace tvutil2 {

using StillWanted = std::function<bool()>;

/// The folders, or all that is there, in the order of the person's language, folders first.
[[nodiscard]] FolderAnswer list_folder_of(const std::u16string& path, bool with_files,
                                          const StillWanted& is_wanted);

/// Called with a folder that is open, before it is read.
using SeeFolder = std::function<void(int folder)>;

/// All that is in a folder, with sizes, times and keys, told as it is read: the first of it after a
/// few milliseconds, later ones less often. Each part is in the order of its keys, folders first;
/// the last has nothing behind it (has_more).
void read_folder(const std::u16string& path, const StillWanted& is_wanted, const SeeFolder& opened,
                 const std::function<void(FolderAnswer)>& put);

}  // namespace tvutil2
