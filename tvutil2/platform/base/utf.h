// UTF-8 and UTF-16, for the host's side of names and paths.
#pragma once

#include "tvutil2/platform/base/export.h"

#include <optional>
#include <string>
#include <string_view>

namespace tvutil2 {

/// UTF-8 of 16-bit text; nothing when the text holds a surrogate without its other half.
[[nodiscard]] TVUTIL_API std::optional<std::string> to_utf8(std::u16string_view text);

/// UTF-8 of 16-bit text, with U+FFFD for a lone surrogate: for showing, never for naming.
[[nodiscard]] TVUTIL_API std::string to_utf8_lossy(std::u16string_view text);

/// 16-bit text of UTF-8 (RFC 3629: no overlong forms, no surrogates, nothing above U+10FFFF);
/// nothing when it isn't valid.
[[nodiscard]] TVUTIL_API std::optional<std::u16string> to_utf16(std::string_view text);

/// 16-bit text of UTF-8, with one U+FFFD for each byte that doesn't belong.
[[nodiscard]] TVUTIL_API std::u16string to_utf16_lossy(std::string_view text);

}  // namespace tvutil2
