// The code pages that are known: a row a page. A page is added by adding its row.
#pragma once

#include "tvutil2/platform/base/types.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace tvutil2::codepage {

/// Bytes that begin a two-byte character, both ends included; {0, 0} for none.
struct LeadRange {
    BYTE first = 0;
    BYTE last = 0;
};

/// Where a page's characters come from.
enum class PageKind : BYTE {
    /// All that the converter has.
    converter,
    /// Two bytes of 0xA1 to 0xFE each, and nothing private: a national standard in its EUC form.
    standard,
    /// The converter's, and sequences of four bytes.
    four_byte,
    /// Page 932's, under other numbers.
    euc_jp,
    /// `upper_half`.
    text,
};

struct CatalogueRow {
    UINT number;
    /// ICU's name for the converter with the platform's mapping; null where none is asked.
    const char* converter;
    LeadRange leads[2] = {};
    /// What a byte sequence without a character becomes.
    char16_t replacement = u'?';
    PageKind kind = PageKind::converter;
    /// The characters of the bytes from 0x80 to 0xFF, for a page that ICU doesn't know.
    const char16_t* upper_half = nullptr;
};

/// Bytes for which the platform's page has other characters than the converter: `unit` and those
/// that follow it, or none (0xFFFF) for all of them.
struct Difference {
    UINT number;
    BYTE first;
    BYTE last;
    char16_t unit;
};

/// The same for a sequence of two bytes.
struct PairDifference {
    UINT number;
    std::uint16_t pair;
    char16_t unit;
};

[[nodiscard]] std::span<const Difference> differences();
[[nodiscard]] std::span<const PairDifference> pair_differences();

/// All pages with a table, by number. UTF-8 has no row: it needs no table.
[[nodiscard]] std::span<const CatalogueRow> catalogue();

/// The row of a page, or null.
[[nodiscard]] const CatalogueRow* find_row(UINT number);

/// Where a page's table hangs: a place of its own for each page of the catalogue.
inline constexpr std::size_t kSlots = 221;
[[nodiscard]] constexpr std::size_t slot_of(UINT number) {
    return number % kSlots;
}

}  // namespace tvutil2::codepage
