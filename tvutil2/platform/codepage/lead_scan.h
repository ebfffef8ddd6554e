// Which bytes of a text with two-byte characters are lead bytes, 64 at a time.
//
// A byte that could be a lead byte is a trail byte if one stands before it, and so on back to the
// start of a row of such bytes: of each row, it is every second one, beginning with the first. So
// the question is answered for a whole block at once, without following the text from character to
// character.
#pragma once

#include "tvutil2/platform/codepage/page_table.h"

#include <cstddef>
#include <cstdint>

namespace tvutil2::codepage {

inline constexpr std::size_t kScanned = 64;

/// A block of 64 bytes, a bit each, the first byte in the lowest one.
struct LeadScan {
    /// Bytes in the ranges of the page's lead bytes, wherever they stand.
    std::uint64_t candidates = 0;
    std::uint64_t zeros = 0;
    std::uint64_t above_ascii = 0;
};

[[nodiscard]] LeadScan scan_block(const PageTable& page, const char* bytes);

/// Which bytes of a block are decimal digits.
[[nodiscard]] std::uint64_t digits_in(const char* block);

/// Those of the candidates that are lead bytes, if a character begins with the block.
[[nodiscard]] constexpr std::uint64_t leads_among(std::uint64_t candidates) {
    // Adding a row's first bit to the row carries to its end, once for rows that begin at an even
    // place and once for the others; the end of the row says where the count was off by one.
    constexpr std::uint64_t kOdd = 0xAAAAAAAAAAAAAAAA;
    const std::uint64_t after = candidates << 1U;
    const std::uint64_t alternating = ((after | kOdd) - candidates) ^ kOdd;
    return alternating & candidates;
}

/// Halves of sequences of four bytes are lead bytes with a digit behind them. Those that are first
/// halves, if a character begins with the block: of each row of them every second one, beginning
/// with the first.
[[nodiscard]] constexpr std::uint64_t first_halves(std::uint64_t halves) {
    constexpr std::uint64_t kEveryFourth = 0x1111111111111111;
    const std::uint64_t rows = halves | halves << 1U;
    const std::uint64_t begins = halves & ~(halves << 2U);
    std::uint64_t firsts = 0;
    for (unsigned int place = 0; place < 4; ++place) {
        const std::uint64_t same = kEveryFourth << place;
        // A row's first bit, added, carries through the row and clears it.
        firsts |= rows & ~(rows + (begins & same)) & same;
    }
    return firsts;
}

}  // namespace tvutil2::codepage
