#include "tvutil2/platform/codepage/lead_scan.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace tvutil2::codepage {

#if defined(__SSE2__)

namespace {

class Range {
  public:
    // No byte is in a range that isn't there, since 0 is none of its own lead bytes.
    explicit Range(LeadRange range)
        : m_first(_mm_set1_epi8(static_cast<char>(range.first))),
          m_width(_mm_set1_epi8(static_cast<char>(range.last - range.first))),
          m_is_there(_mm_set1_epi8(static_cast<char>(range.first == 0 ? 0 : -1))) {}

    [[nodiscard]] __m128i holds(__m128i bytes) const {
        const __m128i place = _mm_sub_epi8(bytes, m_first);
        return _mm_and_si128(_mm_cmpeq_epi8(_mm_min_epu8(place, m_width), place), m_is_there);
    }

  private:
    __m128i m_first;
    __m128i m_width;
    __m128i m_is_there;
};

std::uint64_t bits(__m128i value, std::size_t place) {
    return static_cast<std::uint64_t>(static_cast<std::uint32_t>(_mm_movemask_epi8(value)))
           << place;
}

}  // namespace

LeadScan scan_block(const PageTable& page, const char* bytes) {
    const Range first(page.leads()[0]);
    const Range second(page.leads()[1]);
    LeadScan scan;
    for (std::size_t i = 0; i < kScanned; i += 16) {
        const __m128i part = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + i));
        scan.candidates |= bits(_mm_or_si128(first.holds(part), second.holds(part)), i);
        scan.zeros |= bits(_mm_cmpeq_epi8(part, _mm_setzero_si128()), i);
        scan.above_ascii |= bits(part, i);
    }
    return scan;
}

std::uint64_t digits_in(const char* block) {
    const Range digits(LeadRange{'0', '9'});
    std::uint64_t found = 0;
    for (std::size_t i = 0; i < kScanned; i += 16) {
        found |=
            bits(digits.holds(_mm_loadu_si128(reinterpret_cast<const __m128i*>(block + i))), i);
    }
    return found;
}

#else

LeadScan scan_block(const PageTable& page, const char* bytes) {
    LeadScan scan;
    for (std::size_t i = 0; i < kScanned; ++i) {
        const auto byte = static_cast<BYTE>(bytes[i]);
        const std::uint64_t bit = std::uint64_t{1} << i;
        if (page.is_lead(byte)) scan.candidates |= bit;
        if (byte == 0) scan.zeros |= bit;
        if (byte >= 0x80) scan.above_ascii |= bit;
    }
    return scan;
}

std::uint64_t digits_in(const char* block) {
    std::uint64_t found = 0;
    for (std::size_t i = 0; i < kScanned; ++i) {
        if (block[i] >= '0' && block[i] <= '9') found |= std::uint64_t{1} << i;
    }
    return found;
}

#endif

}  // namespace tvutil2::codepage
