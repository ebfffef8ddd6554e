// Where a caret may stand: between characters as people see them (grapheme clusters), and at the
// edges of words (Unicode Standard Annex 29, as ICU carries it out).
//
// Positions are in 16-bit units. One character is looked for within 256 units, however long it
// is. All functions are safe from any thread.
#pragma once

#include "tvutil2/platform/base/export.h"

#include <cstddef>
#include <string_view>
#include <utility>

namespace tvutil2 {

[[nodiscard]] inline bool is_line_end(char16_t unit) {
    return unit == u'\r' || unit == u'\n';
}

/// The next place for a caret; the text's size at its end.
[[nodiscard]] TVUTIL_API std::size_t next_character(std::u16string_view text, std::size_t at);
[[nodiscard]] TVUTIL_API std::size_t previous_character(std::u16string_view text, std::size_t at);
/// Where the next word begins, and where the last one does.
[[nodiscard]] TVUTIL_API std::size_t next_word(std::u16string_view text, std::size_t at);
[[nodiscard]] TVUTIL_API std::size_t previous_word(std::u16string_view text, std::size_t at);
/// The word, the gap or the mark that a place is in: its first unit, and the one behind it.
[[nodiscard]] TVUTIL_API std::pair<std::size_t, std::size_t> word_at(std::u16string_view text,
                                                                     std::size_t at);

}  // namespace tvutil2
