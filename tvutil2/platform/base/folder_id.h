// What a folder is, whatever it is called.
//
// One folder has many names: other separators, "." and "..", another case, links, mounts. Whoever
// asks whether two paths lead to the same place compares these and not the text.
#pragma once

#include "tvutil2/platform/base/export.h"

#include <sys/types.h>

#include <compare>
#include <optional>
#include <string>

struct stat;

namespace tvutil2 {

struct FolderId {
    dev_t device = 0;
    ino_t inode = 0;
    // NOLINTNEXTLINE(modernize-use-nullptr): it means the zero in the comparison that is generated
    friend auto operator<=>(const FolderId&, const FolderId&) = default;
};

[[nodiscard]] FolderId folder_id(const struct stat& info);
/// Of what a host path ("" is the root) leads to; nothing when that is no folder.
[[nodiscard]] std::optional<FolderId> folder_id(const std::string& host);
/// The same for a platform path; null and empty lead nowhere.
[[nodiscard]] TVUTIL_API std::optional<FolderId> folder_id(const char16_t* path);

/// Whether a path leads to the root of a drive: "/", or what a letter is mapped to. Such a folder
/// is neither deleted, nor moved, nor emptied.
[[nodiscard]] bool is_drive_root(const std::string& host);
[[nodiscard]] TVUTIL_API bool is_drive_root(const char16_t* path);

}  // namespace tvutil2
