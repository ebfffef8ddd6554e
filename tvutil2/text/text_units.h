// Searches in bytes and 16-bit units, sixteen bytes at a time.
#pragma once

#include <cstddef>
#include <string_view>

namespace tvutil2 {

template <class Unit>
[[nodiscard]] constexpr bool is_line_end(Unit unit) {
    return unit == Unit{'\r'} || unit == Unit{'\n'};
}

/// Bytes in front of the first CR or LF.
[[nodiscard]] std::size_t line_prefix(std::string_view bytes);
/// Bytes in front of the first CR, LF or byte above ASCII.
[[nodiscard]] std::size_t ascii_line_prefix(std::string_view bytes);
/// Bytes in front of the first one above ASCII.
[[nodiscard]] std::size_t ascii_prefix(std::string_view bytes);
/// Units in front of the first one above ASCII.
[[nodiscard]] std::size_t ascii_prefix(std::u16string_view units);
/// Units in front of the first CR or LF, in the bytes of 16-bit units of either order; an odd last
/// byte isn't looked at.
[[nodiscard]] std::size_t utf16_line_prefix(std::string_view bytes, bool is_big_endian);
/// The text in front of its first zero.
[[nodiscard]] std::u16string_view before_zero(std::u16string_view text);

}  // namespace tvutil2
