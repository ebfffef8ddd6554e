// Copies of whole folders that go on behind failures.
#pragma once

#include "tvutil2/platform/base/export.h"

namespace tvutil2 {

/// Copies the files and folders in `from` over those in `to`, which is made with its parents when
/// it is missing. Files are copied as CopyFileW copies them, a link to a folder as the link that it
/// is; what can't be copied is passed over, and so is what is neither file nor folder. A name that
/// is there in another case is the same name, unless `from` has both. A new folder has the mode of
/// the one it is a copy of, less the umask. A folder that was copied into isn't copied itself,
/// whatever name or link leads there, so that a copy into itself has an end.
///
/// False with the last error when `from` is no folder, or `to` can't be one or is the same one.
TVUTIL_API bool copy_folder(const char16_t* from, const char16_t* to);

}  // namespace tvutil2
