// Blocks of plain ASCII, which every page has as it is.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tvutil2::codepage {

/// How many units are looked at at once. In mixed text there is none, and the question is cheap
/// because its answer is always the same.
inline constexpr std::size_t kAsciiBlock = 32;

[[nodiscard]] inline bool is_ascii_block(const char16_t* units) {
    std::uint64_t words[kAsciiBlock / 4];
    std::memcpy(words, units, sizeof words);
    std::uint64_t all = 0;
    for (const auto word : words) all |= word;
    return (all & 0xFF80FF80FF80FF80U) == 0;
}

/// The lower halves of a block of units.
inline void narrow_block(const char16_t* from, char* to) {
    for (std::size_t i = 0; i < kAsciiBlock; ++i) to[i] = static_cast<char>(from[i]);
}

}  // namespace tvutil2::codepage
