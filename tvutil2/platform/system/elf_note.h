// The version note of this platform's own executables.
//
// An ELF file tells its version in a note (ELF, "Note Section") that the build puts into it, with
// tvutil_add_version of cmake/version.cmake:
//
//     owner "tvutil2", type 1, descriptor of 8 bytes: four 16-bit numbers, first one first
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/system/file_bytes.h"

#include <array>

namespace tvutil2 {

using VersionNumbers = std::array<std::uint16_t, 4>;

/// Begins with the mark of such a file.
[[nodiscard]] TVUTIL_API bool is_elf_file(const FileBytes& file);

/// The numbers of the note, of an executable or a shared object with 32 or 64 bits, little endian.
/// Of the file only its header and its note segments are read. Nothing, with the last error
/// ERROR_BAD_EXE_FORMAT for a file that is damaged or of another kind, or
/// ERROR_RESOURCE_TYPE_NOT_FOUND for one without the note.
[[nodiscard]] TVUTIL_API std::optional<VersionNumbers> elf_version(const FileBytes& file);

}  // namespace tvutil2
