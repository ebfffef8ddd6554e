#include "tvutil2/framework/text_search.h"

#include <algorithm>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace tvutil2 {
namespace {

constexpr auto kNone = std::u16string_view::npos;

// Eight units at a time where the processor has the instructions: a mask has two bits a unit. The
// plain loops behind each block loop do what is left, or everything.
#if defined(__SSE2__)
constexpr std::size_t kBlock = 8;

__m128i load(const char16_t* units) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(units));
}
__m128i splat(char16_t unit) {
    return _mm_set1_epi16(static_cast<short>(unit));
}
unsigned mask_of(__m128i lanes) {
    return static_cast<unsigned>(_mm_movemask_epi8(lanes));
}
std::size_t first_unit(unsigned mask) {
    return static_cast<std::size_t>(__builtin_ctz(mask)) / 2;
}
#endif

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

// Looks for places where the first and the last unit are right, eight at a time, and compares
// there. A text on which too much is compared in vain is searched with the linear bound from there
// on.
class Finder {
  public:
    // `what` has two units at least.
    Finder(std::u16string_view text, std::u16string_view what)
        : m_text(text),
          m_what(what),
          m_distance(what.size() - 1),
          m_end(text.size() < what.size() ? 0 : text.size() - m_distance) {}

    // The first occurrence at `from` or behind.
    std::size_t next(std::size_t from) {
        while ((from = candidate(from)) != kNone && !is_at(from)) {
            m_wasted += m_what.size();
            ++from;
            if (m_wasted > kPatience * (from + m_what.size())) {
                const auto found = find_text_linear(m_text.substr(from), m_what);
                return found == kNone ? kNone : from + found;
            }
        }
        return from;
    }

  private:
    // Units compared in vain for each unit passed.
    static constexpr std::size_t kPatience = 4;

    [[nodiscard]] bool is_at(std::size_t at) const {
        return same_text(m_text.substr(at, m_what.size()), m_what);
    }

    [[nodiscard]] std::size_t candidate(std::size_t from) const {
        const auto first = m_what.front();
        const auto last = m_what.back();
#if defined(__SSE2__)
        for (; from + kBlock <= m_end; from += kBlock) {
            const auto* const units = m_text.data() + from;
            const auto heads = _mm_cmpeq_epi16(load(units), splat(first));
            const auto tails = _mm_cmpeq_epi16(load(units + m_distance), splat(last));
            const auto mask = mask_of(_mm_and_si128(heads, tails));
            if (mask != 0) return from + first_unit(mask);
        }
#endif
        for (; from < m_end; ++from) {
            if (m_text[from] == first && m_text[from + m_distance] == last) return from;
        }
        return kNone;
    }

    std::u16string_view m_text;
    std::u16string_view m_what;
    std::size_t m_distance;
    std::size_t m_end;
    std::size_t m_wasted = 0;
};

}  // namespace

std::size_t find_unit(std::u16string_view text, char16_t unit) {
    std::size_t i = 0;
#if defined(__SSE2__)
    const auto wanted = splat(unit);
    // Four blocks a turn: the test for a hit is what costs.
    for (; i + 4 * kBlock <= text.size(); i += 4 * kBlock) {
        const auto* const units = text.data() + i;
        const auto a = _mm_cmpeq_epi16(load(units), wanted);
        const auto b = _mm_cmpeq_epi16(load(units + kBlock), wanted);
        const auto c = _mm_cmpeq_epi16(load(units + 2 * kBlock), wanted);
        const auto d = _mm_cmpeq_epi16(load(units + 3 * kBlock), wanted);
        if (mask_of(_mm_or_si128(_mm_or_si128(a, b), _mm_or_si128(c, d))) != 0) break;
    }
    for (; i + kBlock <= text.size(); i += kBlock) {
        const auto mask = mask_of(_mm_cmpeq_epi16(load(text.data() + i), wanted));
        if (mask != 0) return i + first_unit(mask);
    }
#endif
    for (; i < text.size(); ++i) {
        if (text[i] == unit) return i;
    }
    return kNone;
}

std::size_t find_text(std::u16string_view text, std::u16string_view what) {
    if (what.empty()) return 0;
    if (what.size() == 1) return find_unit(text, what.front());
    return Finder(text, what).next(0);
}

std::vector<std::size_t> find_all(std::u16string_view text, std::u16string_view what) {
    std::vector<std::size_t> positions;
    if (what.size() == 1) {
        for (std::size_t i = 0; i < text.size(); ++i) {
            if (text[i] == what.front()) positions.push_back(i);
        }
        return positions;
    }
    Finder finder(text, what);
    for (std::size_t at = 0; (at = finder.next(at)) != kNone; at += what.size()) {
        positions.push_back(at);
    }
    return positions;
}

std::size_t common_length(std::u16string_view a, std::u16string_view b) {
    const auto size = std::min(a.size(), b.size());
    std::size_t i = 0;
#if defined(__SSE2__)
    for (; i + kBlock <= size; i += kBlock) {
        const auto same = mask_of(_mm_cmpeq_epi16(load(a.data() + i), load(b.data() + i)));
        if (same != 0xFFFF) return i + first_unit(~same);
    }
#endif
    while (i < size && a[i] == b[i]) ++i;
    return i;
}

}  // namespace tvutil2
