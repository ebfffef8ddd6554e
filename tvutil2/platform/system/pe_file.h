// Single resources out of the platform's executables (the Portable Executable format).
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"
#include "tvutil2/platform/system/pe_headers.h"

#include <vector>

namespace tvutil2 {

/// The first `most` bytes of the resource with that type and number, in the first language that it
/// has. Only headers and the directories on the way to it are read, whatever the file's size.
/// Nothing, with the last error ERROR_BAD_EXE_FORMAT for a file that is damaged or of another
/// format, ERROR_RESOURCE_DATA_NOT_FOUND for one without resources, ERROR_RESOURCE_TYPE_NOT_FOUND
/// or ERROR_RESOURCE_NAME_NOT_FOUND.
[[nodiscard]] TVUTIL_API std::optional<std::vector<std::byte>> pe_resource(const FileBytes& file,
                                                                           WORD type, WORD name,
                                                                           std::size_t most);

}  // namespace tvutil2
