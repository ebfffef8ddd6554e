// Text in the ANSI code page, for the framework's narrow arguments and files.
#pragma once

#include "tvutil2/platform/base/export.h"

#include <string>
#include <string_view>

namespace tvutil2 {

/// Bytes without a character come as the page's replacement.
[[nodiscard]] TVUTIL_API std::u16string from_ansi(std::string_view bytes);

/// A base character with a mark goes out as the composed one where the page has it; what the page
/// doesn't hold goes out as "?".
[[nodiscard]] TVUTIL_API std::string to_ansi(std::u16string_view text);

}  // namespace tvutil2
