// What the bytes of a stream mean, a look-up a byte: the part of a page that its decoder asks for
// every byte.
#pragma once

#include "tvutil2/platform/base/export.h"

#include <array>

namespace tvutil2 {

/// Pages whose sequences have lengths of their own.
inline constexpr unsigned int kEucJp = 51932;
inline constexpr unsigned int kGb18030 = 54936;

/// In place of a length that the bytes held don't tell yet.
inline constexpr unsigned int kUnsettled = 0xFFFFFFFF;

/// The length of a sequence by its first byte, in every page but GB18030 and UTF-8. Pages that have
/// a rule of their own have it by their number only: 0, the ANSI code page, goes by its lead bytes,
/// whatever it is, so that all that is encoded in it can be decoded.
[[nodiscard]] unsigned int sequence_length(unsigned int page, unsigned char first);

/// Kept for the life of the process once made, and never changed.
struct DecodeTable {
    /// No character, or one that isn't told by one look-up.
    static constexpr char16_t kNoUnit = 0xFFFF;

    /// The number of the page it serves, 0 for the ANSI code page.
    unsigned int page;
    /// The length that is known of a sequence when it begins with a byte that has a row.
    unsigned int begun;
    /// The bytes that a decoder gives aren't those that came in.
    bool is_rewritten;
    /// The row of a byte that begins a pair; 0 for every other byte.
    std::array<unsigned char, 256> row;
    /// The units of single bytes, and from each multiple of 256 on the units of a row.
    const char16_t* units;

    /// Knows nothing, and serves no page.
    TVUTIL_API static const DecodeTable none;
    /// The table of a page; `none` for one that isn't known and for UTF-8. The first time, it makes
    /// it. Safe from any thread.
    static const DecodeTable* of(unsigned int page);
};

}  // namespace tvutil2
