// Private-profile files on the disk: read once as long as they stay the same, replaced in one step
// (platform/files/replaced_file.h).
#pragma once

#include "tvutil2/platform/profile/profile_text.h"

#include <functional>
#include <memory>
#include <string>

namespace tvutil2 {

/// What a host file says. Null, with the last error, when it can't be read or isn't a file.
[[nodiscard]] std::shared_ptr<const ProfileText> read_profile(const std::string& path);

/// Puts the content that `edit` makes of the present one (of an empty one when there is no file) in
/// its place. The same content isn't written. False with the last error; the file is then what it
/// was.
bool edit_profile(const std::string& path,
                  const std::function<std::string(const ProfileText&)>& edit);

}  // namespace tvutil2
