// Small files that are read whole and replaced in one step.
//
// A reader, a crash or a full disk meets the old content or the new one. Writers of all processes,
// and of one, take turns by a lock on the file's folder (flock), which leaves nothing behind and
// holds whatever file a name stands for by then. A symbolic link stays, and what it leads to is
// replaced; mode, owner, group and access list stay too, and where they can't be kept the file
// becomes narrower. A process that has the file open goes on with the old content, and a hard link
// parts company. What a killed writer leaves is deleted by a later one (draft.h).
#pragma once

#include "tvutil2/platform/base/export.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>

struct stat;

namespace tvutil2 {

/// The most bytes of a file that is read whole.
inline constexpr std::size_t kLargestContent = std::size_t{1} << 30;

/// The content of a host file that is no folder, pipe or device, that no handle keeps from being
/// read and that has at most `kLargestContent`, and what stat tells of it. False with the last
/// error.
bool read_whole_file(const std::string& path, struct stat& info, std::string& bytes);

/// What is to stand in the place of the content; nothing leaves the file as it is.
using ContentEdit = std::function<std::optional<std::string>(std::string bytes)>;

/// Puts what `edit` makes of the present content in its place; with `may_be_new` a missing file
/// counts as empty. `path` is absolute. On the disk when this returns. False with the last error;
/// the file is then what it was. ERROR_LOCK_VIOLATION when others had the folder's lock for all of
/// `longest_wait`.
TVUTIL_API bool replace_content(const std::string& path, bool may_be_new, const ContentEdit& edit,
                                std::chrono::milliseconds longest_wait = std::chrono::seconds(10));

}  // namespace tvutil2
