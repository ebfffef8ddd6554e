// Names of the disk's, as they may be shown.
#pragma once

#include <string>

namespace tvutil2 {

/// A name on one line, and in the order in which it is stored: without characters that break lines
/// or turn the reading direction.
[[nodiscard]] std::u16string shown_name(std::u16string name);

/// The text with a path, as it is shown, in the place of "%s".
[[nodiscard]] std::u16string text_with_path(std::u16string text, const std::u16string& path);

}  // namespace tvutil2
