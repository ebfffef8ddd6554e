// Tables of words in the languages of the family.
#pragma once

#include "tvutil2/platform/base/locale.h"

#include <algorithm>
#include <iterator>

namespace tvutil2 {

/// The row whose `language` is that one, or its primary language (low 10 bits): a row for one kind
/// of Chinese goes before the row for all others. The end where there is none.
template <class Row, std::size_t count>
[[nodiscard]] const Row* find_row(const Row (&rows)[count], LANGID language) {
    return std::find_if(std::begin(rows), std::end(rows), [&](const Row& each) {
        return each.language == language || each.language == PRIMARYLANGID(language);
    });
}

/// The same, but the first row, English, for a language that isn't spoken.
template <class Row, std::size_t count>
[[nodiscard]] const Row& row_or_english(const Row (&rows)[count], LANGID language) {
    const auto* const row = find_row(rows, language);
    return row != std::end(rows) ? *row : rows[0];
}

}  // namespace tvutil2
