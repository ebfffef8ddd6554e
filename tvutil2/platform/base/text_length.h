// The length of zero-terminated 16-bit text, by blocks: it stands before nearly every conversion.
#pragma once

#include <cstddef>

namespace tvutil2 {

/// Units before the zero.
[[nodiscard]] std::size_t text_length(const char16_t* text);

}  // namespace tvutil2
