// Where the ground floor keeps what it keeps, on the host.
//
// With TVUTIL_PROFILE=DIR in the environment everything lives below DIR: tests and demonstrations
// run without touching the person's own data. Environment variables are read at each call, so a
// process may change them before it makes the first call that matters. A program that runs with
// more rights than its caller has (set-user-id) passes over all of them.
#pragma once

#include "tvutil2/platform/base/export.h"

#include <string>

namespace tvutil2 {

/// TVUTIL_PROFILE, without a trailing slash; empty when it isn't set.
[[nodiscard]] TVUTIL_API std::string profile_root();

/// Folder of the user's hive: DIR/user, or $XDG_DATA_HOME/tvutil2 (~/.local/share/tvutil2).
[[nodiscard]] TVUTIL_API std::string user_store();

/// Folder of the machine's hive: DIR/machine, or /var/lib/tvutil2.
[[nodiscard]] TVUTIL_API std::string machine_store();

/// The person's home folder: $HOME if it is absolute, else what the account database says, else
/// "/".
[[nodiscard]] TVUTIL_API std::string home_folder();

/// Where a person's own files begin: DIR/home, or home_folder().
[[nodiscard]] TVUTIL_API std::string person_folder();
/// Base folders below it, after the XDG base directory rules: .config ($XDG_CONFIG_HOME),
/// .local/share ($XDG_DATA_HOME) and .cache ($XDG_CACHE_HOME). A profile has them in DIR/home,
/// whatever those variables say.
[[nodiscard]] TVUTIL_API std::string config_folder();
[[nodiscard]] TVUTIL_API std::string data_folder();
[[nodiscard]] TVUTIL_API std::string cache_folder();

/// Data of the whole machine: DIR/common, or /var/lib.
[[nodiscard]] TVUTIL_API std::string common_folder();

/// Creates a folder and its missing parents (mode 0777 less the umask; 0700 when `is_private`).
/// False with errno set.
bool make_host_folders(const std::string& folder, bool is_private);

}  // namespace tvutil2
