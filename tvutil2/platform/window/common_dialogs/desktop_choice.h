// The choice of files in the desktop's own dialog.
#pragma once

#include "tvutil2/platform/window/common_dialogs/file_dialog.h"

#include <optional>

namespace tvutil2 {

/// As FileDialog, with what the rules say of extensions; the others, and the question, are the
/// desktop's affair. Nothing where the desktop has no such dialog.
[[nodiscard]] std::optional<ChosenNames> ask_desktop(const FileQuestion& question,
                                                     std::u16string folder,
                                                     const FileNameRules& rules);

}  // namespace tvutil2
