#include "tvutil2/platform/files/name_pattern.h"

#include "tvutil2/platform/base/wide_text.h"

#include <algorithm>

namespace tvutil2 {
namespace {

// One loop with one saved position: a later "*" makes every earlier one's choice final, so that the
// cost is bounded by the product of the lengths.
bool fits(std::u16string_view pattern, std::u16string_view text) {
    std::size_t p = 0;
    std::size_t t = 0;
    std::size_t saved_p = std::u16string_view::npos;
    std::size_t saved_t = 0;
    while (t < text.size()) {
        if (p < pattern.size() && pattern[p] == u'*') {
            saved_p = ++p;
            saved_t = t;
        } else if (p < pattern.size() && (pattern[p] == u'?' || pattern[p] == text[t])) {
            ++p;
            ++t;
        } else if (saved_p != std::u16string_view::npos) {
            p = saved_p;
            t = ++saved_t;
        } else {
            return false;
        }
    }
    return std::all_of(pattern.begin() + static_cast<std::ptrdiff_t>(p), pattern.end(),
                       [](char16_t c) { return c == u'*'; });
}

}  // namespace

NamePattern::NamePattern(std::u16string_view pattern) : m_pattern(upper_of(pattern)) {}

bool NamePattern::matches(std::u16string_view upper) const {
    std::u16string_view pattern(m_pattern);
    if (fits(pattern, upper)) return true;
    // "*." is for names without an extension, and the folder's own two have none.
    if (pattern.ends_with(u'.')) {
        pattern.remove_suffix(1);
        const bool has_extension =
            upper != u"." && upper != u".." && upper.find(u'.') != upper.npos;
        return !has_extension && fits(pattern, upper);
    }
    while (pattern.ends_with(u".*")) {
        pattern.remove_suffix(2);
        if (fits(pattern, upper)) return true;
    }
    return false;
}

std::u16string upper_of(std::u16string_view text) {
    std::u16string upper(text);
    std::transform(upper.begin(), upper.end(), upper.begin(), to_upper);
    return upper;
}

}  // namespace tvutil2
