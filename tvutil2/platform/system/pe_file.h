// Resources out of the platform's executables (the Portable Executable format).
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"
#include "tvutil2/platform/system/pe_headers.h"
#include "tvutil2/platform/system/resource_name.h"

#include <functional>
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

/// A resource, whose texts are good for the length of a visit.
struct PeResource {
    ResourceName type;
    ResourceName name;
    WORD language;
    std::vector<std::byte> data;
};

/// Calls `visit` with each resource in turn; with none for a file that has none. False, with the
/// last error ERROR_BAD_EXE_FORMAT, for a file that is damaged or of another format, and where
/// `visit` wants no more: resources may share their bytes, so that all of them together may be much
/// longer than the file.
[[nodiscard]] TVUTIL_API bool visit_pe_resources(
    const FileBytes& file, const std::function<bool(const PeResource&)>& visit);

}  // namespace tvutil2
