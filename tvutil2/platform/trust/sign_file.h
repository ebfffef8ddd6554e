// Putting a signature on an ELF file.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/trust/trust_module.h"

#include <string>

namespace tvutil2 {

/// Signs the ELF file at a host path, in its own place or as the new content of `target`, which may
/// be the same: the old file or the signed one is there at any time, whatever fails; owner, group
/// and mode stay (a new target has the source's mode). A signature that it has is replaced. Links
/// are followed. A program that runs goes on with the old file.
///
/// Empty for success, else what is wrong; with the last error when that is the system's, else
/// ERROR_INVALID_DATA: what can't be signed, or not with that key.
[[nodiscard]] TVUTIL_API std::string sign_elf_file(const std::string& path,
                                                   const std::string& target,
                                                   const SigningIdentity& identity);

}  // namespace tvutil2
