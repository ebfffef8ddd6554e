// The code pages that are known: a row a page. A page is added by adding its row.
#pragma once

#include "tvutil2/platform/base/types.h"

#include <span>

namespace tvutil2::codepage {

/// Bytes that begin a two-byte character, both ends included; {0, 0} for none.
struct LeadRange {
    BYTE first = 0;
    BYTE last = 0;
};

struct CatalogueRow {
    UINT number;
    /// ICU's name for the converter with the platform's mapping.
    const char* converter;
    LeadRange leads[2] = {};
    /// What a byte sequence without a character becomes.
    char16_t replacement = u'?';
};

/// A byte for which the platform's page has another character than the converter.
struct Difference {
    UINT number;
    BYTE byte;
    char16_t unit;
};

/// Where the converters of all pages differ from the platform.
[[nodiscard]] std::span<const Difference> differences();

/// The row of a page, or null. UTF-8 has none: it needs no table.
[[nodiscard]] const CatalogueRow* find_row(UINT number);

/// Where that row stands, from 0 to catalogue_size() - 1.
[[nodiscard]] std::size_t row_index(const CatalogueRow& row);
[[nodiscard]] std::size_t catalogue_size();

}  // namespace tvutil2::codepage
