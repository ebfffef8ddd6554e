// The person's choice of folders for documents and the like: "user-dirs.dirs", as xdg-user-dirs
// writes it and shells read it.
//
// The file is anybody's who may write to the home folder, so it is read as data: no variable but a
// $HOME in front is expanded, nothing is carried out, and what isn't plainly a path is passed over.
#pragma once

#include "tvutil2/platform/base/export.h"

#include <optional>
#include <string>
#include <string_view>

namespace tvutil2 {

/// The folder that `content` assigns to `variable` ("XDG_DOCUMENTS_DIR"): an absolute host path
/// without a trailing slash ("/" for the root), with `home` for $HOME. Of several assignments the
/// last valid one counts. Nothing when there is none.
[[nodiscard]] TVUTIL_API std::optional<std::string> user_dir(std::string_view content,
                                                             std::string_view variable,
                                                             std::string_view home);

/// The same from the person's file in config_folder(). Nothing when the file is missing, isn't a
/// regular one, or is larger than 64 KiB.
[[nodiscard]] std::optional<std::string> user_dir(std::string_view variable);

}  // namespace tvutil2
