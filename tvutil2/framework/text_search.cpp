#include "tvutil2/framework/text_search.h"

#include <cstring>
#include <vector>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace tvutil2 {
namespace {

constexpr auto kNone = std::u16string_view::npos;

// How many units the quick search may compare in vain, for each unit that it has passed, before the
// text counts as adversarial and the search with the linear bound takes over.
constexpr std::size_t kPatience = 4;

bool same_units(const char16_t* a, const char16_t* b, std::size_t count) {
    return std::memcmp(a, b, count * sizeof(char16_t)) == 0;
}

// Knuth, Morris and Pratt: never looks at a unit of the text twice.
std::size_t find_text_linear(std::u16string_view text, std::u16string_view what) {
    std::vector<std::size_t> fallback(what.size(), 0);
    for (std::size_t i = 1, length = 0; i < what.size(); ++i) {
        while (length > 0 && what[i] != what[length]) length = fallback[length - 1];
        if (what[i] == what[length]) ++length;
        fallback[i] = length;
    }
    for (std::size_t i = 0, matched = 0; i < text.size(); ++i) {
        while (matched > 0 && text[i] != what[matched]) matched = fallback[matched - 1];
        if (text[i] == what[matched]) ++matched;
        if (matched == what.size()) return i + 1 - matched;
    }
    return kNone;
}

// Positions, from `from` on, where both the first and the last unit of `what` are in place.
class Candidates {
  public:
    Candidates(std::u16string_view text, std::u16string_view what)
        : m_text(text),
          m_first(what.front()),
          m_last(what.back()),
          m_distance(what.size() - 1),
          m_end(text.size() - what.size() + 1) {}

    // kNone when there is no further one.
    [[nodiscard]] std::size_t next(std::size_t from) const {
#if defined(__SSE2__)
        const auto first = _mm_set1_epi16(static_cast<short>(m_first));
        const auto last = _mm_set1_epi16(static_cast<short>(m_last));
        for (; from + 8 <= m_end; from += 8) {
            const auto heads = _mm_cmpeq_epi16(load(from), first);
            const auto tails = _mm_cmpeq_epi16(load(from + m_distance), last);
            const auto mask = static_cast<unsigned>(_mm_movemask_epi8(_mm_and_si128(heads, tails)));
            if (mask != 0) return from + static_cast<std::size_t>(__builtin_ctz(mask)) / 2;
        }
#endif
        for (; from < m_end; ++from) {
            if (m_text[from] == m_first && m_text[from + m_distance] == m_last) return from;
        }
        return kNone;
    }

  private:
#if defined(__SSE2__)
    [[nodiscard]] __m128i load(std::size_t position) const {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(m_text.data() + position));
    }
#endif

    std::u16string_view m_text;
    char16_t m_first;
    char16_t m_last;
    std::size_t m_distance;
    std::size_t m_end;
};

}  // namespace

std::size_t find_unit(std::u16string_view text, char16_t unit) {
    std::size_t i = 0;
#if defined(__SSE2__)
    const auto wanted = _mm_set1_epi16(static_cast<short>(unit));
    for (; i + 8 <= text.size(); i += 8) {
        const auto units = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text.data() + i));
        const auto mask = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi16(units, wanted)));
        if (mask != 0) return i + static_cast<std::size_t>(__builtin_ctz(mask)) / 2;
    }
#endif
    for (; i < text.size(); ++i) {
        if (text[i] == unit) return i;
    }
    return kNone;
}

std::size_t find_text(std::u16string_view text, std::u16string_view what) {
    if (what.empty()) return 0;
    if (what.size() > text.size()) return kNone;
    if (what.size() == 1) return find_unit(text, what.front());
    const Candidates candidates(text, what);
    std::size_t wasted = 0;
    for (auto at = candidates.next(0); at != kNone; at = candidates.next(at + 1)) {
        if (same_units(text.data() + at, what.data(), what.size())) return at;
        wasted += what.size();
        if (wasted > kPatience * (at + what.size())) {
            const auto found = find_text_linear(text.substr(at + 1), what);
            return found == kNone ? kNone : at + 1 + found;
        }
    }
    return kNone;
}

}  // namespace tvutil2
