// Numbers as a person types them into a field.
#pragma once

#include "tvutil2/platform/base/types.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <string_view>

namespace tvutil2 {

/// A whole number that fits into the type, with nothing around it but blanks.
template <class Number>
[[nodiscard]] std::optional<Number> typed_number(std::u16string_view text) {
    constexpr std::u16string_view kBlanks = u" \t";
    const auto first = text.find_first_not_of(kBlanks);
    if (first == text.npos) return std::nullopt;
    text = text.substr(first, text.find_last_not_of(kBlanks) + 1 - first);
    const bool is_negative = text.front() == u'-';
    if (is_negative) text.remove_prefix(1);
    if (text.empty()) return std::nullopt;
    std::int64_t number = 0;
    for (const auto digit : text) {
        if (digit < u'0' || digit > u'9') return std::nullopt;
        number = std::min(number * 10 + (digit - u'0'), std::int64_t{1} << 40);
    }
    if (is_negative) number = -number;
    using Limits = std::numeric_limits<Number>;
    if (number < Limits::min() || number > std::int64_t{Limits::max()}) return std::nullopt;
    return static_cast<Number>(number);
}

}  // namespace tvutil2
