// Searching and comparing runs of 16-bit units: what the framework's strings stand on.
#pragma once

#include "tvutil2/platform/base/export.h"

#include <cstddef>
#include <cstring>
#include <string_view>
#include <vector>

namespace tvutil2 {

/// Position of the first `unit` in `text`; npos when there is none.
[[nodiscard]] std::size_t find_unit(std::u16string_view text, char16_t unit);

/// Position of the first occurrence of `what` in `text`; npos when there is none, 0 for an empty
/// `what`. Time is linear in the length of both, whatever they hold.
[[nodiscard]] std::size_t find_text(std::u16string_view text, std::u16string_view what);

/// Positions of all occurrences of a `what` that isn't empty, from the left, none overlapping
/// another. Time is linear in the length of both.
[[nodiscard]] std::vector<std::size_t> find_all(std::u16string_view text, std::u16string_view what);

/// How many units at the front of `a` and `b` are the same.
[[nodiscard]] TVUTIL_API std::size_t common_length(std::u16string_view a, std::u16string_view b);

/// Order by code unit.
[[nodiscard]] inline int compare_units(std::u16string_view a, std::u16string_view b) {
    const auto common = common_length(a, b);
    if (common == a.size() || common == b.size()) return (a.size() > common) - (b.size() > common);
    return a[common] < b[common] ? -1 : 1;
}

/// Faster than the standard library's comparison, which looks at one unit at a time.
[[nodiscard]] inline bool same_text(std::u16string_view a, std::u16string_view b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), 2 * a.size()) == 0;
}

}  // namespace tvutil2
