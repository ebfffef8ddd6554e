// What the rooms of files share: descriptors, attributes, errors of host paths.
#pragma once

#include "tvutil2/platform/base/descriptor.h"
#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/base/types.h"

#include <optional>
#include <string>
#include <string_view>

struct stat;

namespace tvutil2 {

/// FILE_ATTRIBUTE_ flags of what a host file is; `name` decides whether it is hidden.
[[nodiscard]] DWORD attributes_of(const struct stat& info, std::string_view name);

/// Neither the owner, nor the group, nor anybody may write.
[[nodiscard]] bool is_read_only(const struct stat& info);

/// The last part of an absolute host path, and the folder it lies in ("" for the root).
[[nodiscard]] std::string_view name_in(std::string_view path);
[[nodiscard]] std::string_view folder_of(std::string_view path);

[[nodiscard]] bool is_folder(const std::string& path);

/// Sets the last error from errno for a path that was to be opened or changed, with
/// ERROR_PATH_NOT_FOUND when the folder is what's missing. Always false.
bool fail_at(const std::string& path);

/// host_path of zero-terminated text; null is ERROR_PATH_NOT_FOUND.
[[nodiscard]] std::optional<std::string> host_path_of(const char16_t* path,
                                                      Lookup lookup = Lookup::all);

/// Host forms of the functions in files.h: false with the last error set.
bool copy_host_file(const std::string& from, const std::string& to, bool fail_if_exists);
bool copy_host_link(const std::string& from, const std::string& to, bool fail_if_exists);
bool delete_host_file(const std::string& path);
bool move_host_file(const std::string& from, const std::string& to, DWORD flags);

/// Opens a file that is about to be deleted or replaced, if it can be opened, and claims it. False
/// with ERROR_SHARING_VIOLATION when a handle forbids that. Hold `claim` until the deed is done.
bool claim_for_deletion(const std::string& path, Descriptor& claim);

/// Gives the source's times of access and last write, and its mode, to an open target.
bool keep_times_and_mode(int target, const struct stat& source);

}  // namespace tvutil2
