#include "tvutil2/platform/base/text_length.h"

#if defined(__SSE2__)
#include <emmintrin.h>

#include <bit>
#include <cstdint>
#else
#include <string>
#endif

namespace tvutil2 {

#if defined(__SSE2__)

namespace {

constexpr std::size_t kBlock = 64;

// A bit for each unit of an aligned block, set for a zero.
__attribute__((no_sanitize("address", "thread"))) std::uint32_t zeros_in(const char* block) {
    const auto* const parts = reinterpret_cast<const __m128i*>(block);
    const __m128i zero = _mm_setzero_si128();
    const __m128i first = _mm_packs_epi16(_mm_cmpeq_epi16(parts[0], zero),  //
                                          _mm_cmpeq_epi16(parts[1], zero));
    const __m128i second =
        _mm_packs_epi16(_mm_cmpeq_epi16(parts[2], zero), _mm_cmpeq_epi16(parts[3], zero));
    return static_cast<std::uint32_t>(_mm_movemask_epi8(first)) |
           static_cast<std::uint32_t>(_mm_movemask_epi8(second)) << 16U;
}

}  // namespace

// Reads whole aligned blocks, so beyond both ends of the text but never into a page that the text
// doesn't touch; the sanitizers can't know that this is harmless.
std::size_t text_length(const char16_t* text) {
    const auto before = reinterpret_cast<std::uintptr_t>(text) % kBlock / sizeof *text;
    const auto* block = reinterpret_cast<const char*>(text - before);
    auto zeros = zeros_in(block) >> before << before;
    while (zeros == 0) {
        block += kBlock;
        zeros = zeros_in(block);
    }
    const auto* const end = reinterpret_cast<const char16_t*>(block) + std::countr_zero(zeros);
    return static_cast<std::size_t>(end - text);
}

#else

std::size_t text_length(const char16_t* text) {
    return std::char_traits<char16_t>::length(text);
}

#endif

}  // namespace tvutil2
