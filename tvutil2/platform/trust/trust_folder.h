// The certificates that the machine trusts for programs.
#pragma once

#include "tvutil2/platform/base/export.h"

#include <string>
#include <vector>

namespace tvutil2 {

/// The folder "trust" beside the machine's hive: files of certificates, PEM or DER, with the
/// extensions ".pem", ".crt", ".cer" and ".der".
[[nodiscard]] TVUTIL_API std::string trust_folder();

/// The content of the files there, in the order of their names. As of the machine's hive, what
/// anybody but the superuser (or the own account, below a profile) owns or may write to isn't
/// trusted and left out, be it the folder; so is what is larger than a megabyte. Safe from any
/// thread.
[[nodiscard]] std::vector<std::string> trusted_certificate_files();

}  // namespace tvutil2
