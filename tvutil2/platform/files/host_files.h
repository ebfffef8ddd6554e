// What the rooms of files share: descriptors, attributes, errors of host paths.
#pragma once

#include "tvutil2/platform/base/descriptor.h"
#include "tvutil2/platform/base/host_path.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/types.h"

#include <optional>
#include <string>
#include <string_view>

struct stat;

namespace tvutil2 {

/// FILE_ATTRIBUTE_ flags of what a host file is; `name` decides whether it is hidden.
[[nodiscard]] DWORD attributes_of(const struct stat& info, std::string_view name);

/// The kind and mode of an open file, and nothing else of `info`; false with errno set. Not asked
/// for times: a file system that was asked keeps the next write's exactly, at half of that write's
/// cost.
[[nodiscard]] bool stat_mode(int file, struct stat& info);

/// Neither the owner, nor the group, nor anybody may write.
[[nodiscard]] bool is_read_only(const struct stat& info);

/// The last part of an absolute host path, and the folder it lies in ("" for the root).
[[nodiscard]] std::string_view name_in(std::string_view path);
[[nodiscard]] std::string_view folder_of(std::string_view path);

[[nodiscard]] bool is_folder(const std::string& path);

/// Sets the last error from errno for a path that was to be opened or changed, with
/// ERROR_PATH_NOT_FOUND when the folder is what's missing, or ERROR_INVALID_NAME when wildcards
/// stand in that folder's name. Always false.
bool fail_at(const std::string& path);
/// The last error for a folder that is missing.
[[nodiscard]] DWORD missing_folder_error(std::string_view folder);

/// False with `error` as the last error when the text ends in a separator but `host`, which it
/// names, is there and is no folder.
bool is_folder_if_it_says_so(const char16_t* path, const std::string& host,
                             DWORD error = ERROR_INVALID_NAME);

/// host_path of zero-terminated text; null is ERROR_PATH_NOT_FOUND.
[[nodiscard]] std::optional<std::string> host_path_of(const char16_t* path,
                                                      Lookup lookup = Lookup::all);

/// What the target of a copy may be. `is_new` says that most likely nothing is there, and spares
/// the look.
enum class CopyTarget { any, is_new, must_be_new };

/// Host forms of the functions in files.h: false with the last error set.
bool copy_host_file(const std::string& from, const std::string& to, CopyTarget target);
bool copy_host_link(const std::string& from, const std::string& to, bool fail_if_exists);
bool delete_host_file(const std::string& path);
bool move_host_file(const std::string& from, const std::string& to, DWORD flags);

/// Opens a file that is about to be deleted or replaced, if it can be opened, and claims it. False
/// with ERROR_SHARING_VIOLATION when a handle forbids that. Hold `claim` until the deed is done.
bool claim_for_deletion(const std::string& path, Descriptor& claim);

/// Gives the source's times of access and last write to an open target. False with errno set.
bool keep_times(int target, const struct stat& source);
/// The same with its mode, and with the last error.
bool keep_times_and_mode(int target, const struct stat& source);

}  // namespace tvutil2
