// Private-profile files on the disk: read once as long as they stay the same, replaced in one step
// (platform/files/replaced_file.h) or, where no other file can take their place, overwritten
// (platform/files/overwritten_file.h).
#pragma once

#include "tvutil2/platform/profile/profile_text.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tvutil2 {

/// What a file says; one that is the same as before, under the name as written, costs one system
/// call. Null, with the last error, when it can't be read or isn't a file.
[[nodiscard]] std::shared_ptr<const ProfileText> read_profile(const char16_t* path);

using ProfileEdit = std::function<std::optional<std::string>(const ProfileText&)>;

/// Puts the content that `edit` makes of the present one (of an empty one when there is no file) in
/// its place. The same content isn't written; no content is ERROR_NO_UNICODE_TRANSLATION. `path` is
/// a host path. False with the last error; the file is then what it was.
bool edit_profile(const std::string& path, const ProfileEdit& edit);

}  // namespace tvutil2
