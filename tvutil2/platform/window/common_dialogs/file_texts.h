// What the columns of a list of files say, in a person's language.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/window/common_dialogs/folder_entry.h"

namespace tvutil2 {

/// "1.5 MB": three digits at most, of 1024 of the unit below; bytes as they are.
[[nodiscard]] TVUTIL_API std::u16string size_text(std::uint64_t bytes, LANGID language);
/// Day and time in the process's time zone; empty for a time before 1970.
[[nodiscard]] std::u16string time_text(const FILETIME& time, LANGID language);
/// "Folder", "TXT file".
[[nodiscard]] std::u16string type_text(const FolderEntry& entry, LANGID language);

}  // namespace tvutil2
