// Searching and measuring runs of 16-bit units: what the framework's strings stand on.
#pragma once

#include <cstddef>
#include <string_view>

namespace tvutil2 {

/// Position of the first `unit` in `text`; npos when there is none.
[[nodiscard]] std::size_t find_unit(std::u16string_view text, char16_t unit);

/// Position of the first occurrence of `what` in `text`; npos when there is none, 0 for an empty
/// `what`. Time is linear in the length of both, whatever they hold.
[[nodiscard]] std::size_t find_text(std::u16string_view text, std::u16string_view what);

}  // namespace tvutil2
