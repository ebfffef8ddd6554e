// UTF-8 with AVX2, after John Keiser and Daniel Lemire, "Validating UTF-8 In Less Than One
// Instruction Per Byte" (2021), and Daniel Lemire and Wojciech Muła, "Transcoding Billions of
// Unicode Characters per Second with SIMD Instructions" (2022).
#include "tvutil2/platform/base/x86_intrinsics.h"
#include "tvutil2/platform/codepage/utf8_kernels.h"

#if defined(__x86_64__)

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

#define TARGET __attribute__((target("avx2,bmi,popcnt")))

namespace tvutil2::codepage {
namespace {

constexpr std::size_t kBlock = 64;

TARGET __m256i load(const void* from) {
    return _mm256_loadu_si256(static_cast<const __m256i*>(from));
}
TARGET __m128i load_half(const void* from) {
    return _mm_loadu_si128(static_cast<const __m128i*>(from));
}
TARGET void store_half(void* to, __m128i value) {
    _mm_storeu_si128(static_cast<__m128i*>(to), value);
}

TARGET __m256i all(unsigned int byte) {
    return _mm256_set1_epi8(static_cast<char>(byte));
}
TARGET __m256i all_units(unsigned int unit) {
    return _mm256_set1_epi16(static_cast<short>(unit));
}

TARGET std::uint32_t bits(__m256i value) {
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(value));
}

// ---- Is it well-formed? ----

// What can be wrong with two bytes, a bit each, looked up by three half bytes: an error is there
// when all three agree on it.
constexpr std::uint8_t kTooShort = 1U << 0U;
constexpr std::uint8_t kTooLong = 1U << 1U;
constexpr std::uint8_t kOverlong3 = 1U << 2U;
constexpr std::uint8_t kTooLarge = 1U << 3U;
constexpr std::uint8_t kSurrogate = 1U << 4U;
constexpr std::uint8_t kOverlong2 = 1U << 5U;
constexpr std::uint8_t kTooLarge1000 = 1U << 6U;
constexpr std::uint8_t kOverlong4 = 1U << 6U;
constexpr std::uint8_t kTwoTails = 1U << 7U;
constexpr std::uint8_t kCarried = kTooShort | kTooLong | kTwoTails;
constexpr std::uint8_t kLarge = kCarried | kTooLarge | kTooLarge1000;
constexpr std::uint8_t kTail = kTooLong | kOverlong2 | kTwoTails;

struct Nibbles {
    alignas(16) std::uint8_t of[16];
};
constexpr Nibbles kFirstHigh{
    {kTooLong, kTooLong, kTooLong, kTooLong, kTooLong, kTooLong, kTooLong, kTooLong, kTwoTails,
     kTwoTails, kTwoTails, kTwoTails, kTooShort | kOverlong2, kTooShort,
     kTooShort | kOverlong3 | kSurrogate, kTooShort | kTooLarge | kTooLarge1000 | kOverlong4}};
constexpr Nibbles kFirstLow{{kCarried | kOverlong3 | kOverlong2 | kOverlong4, kCarried | kOverlong2,
                             kCarried, kCarried, kCarried | kTooLarge, kLarge, kLarge, kLarge,
                             kLarge, kLarge, kLarge, kLarge, kLarge, kLarge | kSurrogate, kLarge,
                             kLarge}};
constexpr Nibbles kSecondHigh{
    {kTooShort, kTooShort, kTooShort, kTooShort, kTooShort, kTooShort, kTooShort, kTooShort,
     kTail | kOverlong3 | kTooLarge1000 | kOverlong4, kTail | kOverlong3 | kTooLarge,
     kTail | kSurrogate | kTooLarge, kTail | kSurrogate | kTooLarge, kTooShort, kTooShort,
     kTooShort, kTooShort}};

TARGET __m256i looked_up(const Nibbles& table, __m256i nibbles) {
    return _mm256_shuffle_epi8(_mm256_broadcastsi128_si256(load_half(table.of)), nibbles);
}

TARGET __m256i high_nibbles(__m256i bytes) {
    return _mm256_and_si256(_mm256_srli_epi16(bytes, 4), all(0x0F));
}

// The bytes `Count` places before each one.
template <int Count>
TARGET __m256i before(__m256i bytes, __m256i previous) {
    return _mm256_alignr_epi8(bytes, _mm256_permute2x128_si256(previous, bytes, 0x21), 16 - Count);
}

// Non-zero where a byte and those before it can't stand together.
TARGET __m256i errors_of(__m256i bytes, __m256i previous) {
    const __m256i first = before<1>(bytes, previous);
    const __m256i special =
        _mm256_and_si256(_mm256_and_si256(looked_up(kFirstHigh, high_nibbles(first)),
                                          looked_up(kFirstLow, _mm256_and_si256(first, all(0x0F)))),
                         looked_up(kSecondHigh, high_nibbles(bytes)));
    // The third and fourth bytes must be tails, which the look-up calls two tails in a row.
    const __m256i third = _mm256_subs_epu8(before<2>(bytes, previous), all(0xE0 - 0x80));
    const __m256i fourth = _mm256_subs_epu8(before<3>(bytes, previous), all(0xF0 - 0x80));
    const __m256i must_be_tail = _mm256_and_si256(_mm256_or_si256(third, fourth), all(0x80));
    return _mm256_xor_si256(must_be_tail, special);
}

// Two bytes of a surrogate pair for a sequence of four: one unit for its lead, one more.
TARGET std::size_t units_in(__m256i bytes) {
    const __m256i begins = _mm256_cmpgt_epi8(bytes, all(0xBF));
    const __m256i is_long = _mm256_cmpeq_epi8(_mm256_max_epu8(bytes, all(0xF0)), bytes);
    const int count = std::popcount(bits(begins)) + std::popcount(bits(is_long));
    return static_cast<std::size_t>(count);
}

// Takes back the character at the end that has lost its other bytes to what follows.
Progress whole_characters(const char* from, Progress progress) {
    for (std::size_t back = 1; back <= std::min<std::size_t>(3, progress.taken); ++back) {
        const auto byte = static_cast<unsigned char>(from[progress.taken - back]);
        if ((byte & 0xC0U) == 0x80) continue;
        const std::size_t length = byte < 0xC0 ? 1 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
        if (length > back) {
            progress.taken -= back;
            progress.made -= length == 4 ? 2 : 1;
        }
        break;
    }
    return progress;
}

TARGET Progress count_units(const char* from, std::size_t size) {
    Progress progress;
    __m256i previous = _mm256_setzero_si256();
    for (; size - progress.taken >= kBlock; progress.taken += kBlock) {
        const __m256i low = load(from + progress.taken);
        const __m256i high = load(from + progress.taken + 32);
        // The last bytes before plain text matter, too: they may have promised more.
        const bool is_plain = bits(_mm256_or_si256(_mm256_or_si256(low, high), previous)) == 0;
        if (is_plain) {
            progress.made += kBlock;
        } else {
            const __m256i errors = _mm256_or_si256(errors_of(low, previous), errors_of(high, low));
            if (_mm256_testz_si256(errors, errors) == 0) break;
            progress.made += units_in(low) + units_in(high);
        }
        previous = high;
    }
    return whole_characters(from, progress);
}

// ---- From UTF-8 ----

// How the front of a text is taken apart: by the ends of its characters in twelve bytes, six
// characters of one or two bytes, or four of one to three, or (`count` 0) none, since there is a
// longer one.
struct Window {
    std::uint8_t shuffle;
    std::uint8_t taken;
    std::uint8_t count;
};
struct Windows {
    std::array<Window, 4096> of{};
    // Where in the text each byte of a character comes from: in units of two bytes for the first 64
    // patterns, of four bytes for the other 81.
    alignas(16) std::uint8_t shuffles[64 + 81][16]{};
};

constexpr Windows make_windows() {
    Windows windows;
    for (auto& shuffle : windows.shuffles) {
        for (auto& place : shuffle) place = 0x80;
    }
    for (unsigned int ends = 0; ends < 4096; ++ends) {
        std::array<unsigned int, 12> lengths{};
        unsigned int count = 0;
        for (unsigned int i = 0, start = 0; i < 12; ++i) {
            if ((ends >> i & 1U) == 0) continue;
            lengths[count++] = i + 1 - start;
            start = i + 1;
        }
        const auto fits = [&lengths, count](unsigned int wanted, unsigned int longest) {
            if (count < wanted) return false;
            for (unsigned int i = 0; i < wanted; ++i) {
                if (lengths[i] > longest) return false;
            }
            return true;
        };
        const bool is_short = fits(6, 2);
        if (!is_short && !fits(4, 3)) continue;
        const unsigned int wanted = is_short ? 6 : 4;
        const unsigned int width = is_short ? 2 : 4;
        unsigned int number = 0;
        unsigned int taken = 0;
        for (unsigned int i = 0; i < wanted; ++i) {
            number = number * (is_short ? 2 : 3) + lengths[i] - 1;
        }
        number += is_short ? 0 : 64;
        for (unsigned int i = 0; i < wanted; ++i) {
            taken += lengths[i];
            for (unsigned int j = 0; j < lengths[i]; ++j) {
                windows.shuffles[number][i * width + j] = static_cast<std::uint8_t>(taken - 1 - j);
            }
        }
        windows.of[ends] = {static_cast<std::uint8_t>(number), static_cast<std::uint8_t>(taken),
                            static_cast<std::uint8_t>(wanted)};
    }
    return windows;
}

constexpr Windows kWindows = make_windows();

// Units of two bytes in reverse order: a byte, or a lead and a tail.
TARGET __m128i units_of_two(__m128i pairs) {
    const __m128i low = _mm_and_si128(pairs, _mm_set1_epi16(0x7F));
    const __m128i high = _mm_and_si128(pairs, _mm_set1_epi16(0x1F00));
    return _mm_or_si128(low, _mm_srli_epi16(high, 2));
}

// Four units of one to three bytes in reverse order.
TARGET __m128i units_of_three(__m128i triples) {
    const __m128i low = _mm_and_si128(triples, _mm_set1_epi32(0x7F));
    const __m128i middle = _mm_and_si128(triples, _mm_set1_epi32(0x3F00));
    const __m128i high = _mm_and_si128(triples, _mm_set1_epi32(0x0F0000));
    const __m128i whole =
        _mm_or_si128(_mm_or_si128(low, _mm_srli_epi32(middle, 2)), _mm_srli_epi32(high, 4));
    return _mm_packus_epi32(whole, whole);
}

struct Text {
    const char* from;
    char16_t* to;
};

// A character of four bytes, or a shorter one beside one.
void put_character(Text& text) {
    const auto byte = [&text](int i) {
        return static_cast<std::uint32_t>(static_cast<unsigned char>(text.from[i]));
    };
    const std::uint32_t first = byte(0);
    if (first < 0x80) {
        *text.to++ = static_cast<char16_t>(first);
        text.from += 1;
    } else if (first < 0xE0) {
        *text.to++ = static_cast<char16_t>((first & 0x1FU) << 6U | (byte(1) & 0x3FU));
        text.from += 2;
    } else if (first < 0xF0) {
        *text.to++ =
            static_cast<char16_t>(first << 12U | (byte(1) & 0x3FU) << 6U | (byte(2) & 0x3FU));
        text.from += 3;
    } else {
        const std::uint32_t c = (first & 7U) << 18U | (byte(1) & 0x3FU) << 12U |
                                (byte(2) & 0x3FU) << 6U | (byte(3) & 0x3FU);
        *text.to++ = static_cast<char16_t>(0xD7C0 + (c >> 10U));
        *text.to++ = static_cast<char16_t>(0xDC00 | (c & 0x3FFU));
        text.from += 4;
    }
}

// Takes the characters that end where `ends` has its lowest twelve bits.
TARGET void put_window(Text& text, std::uint64_t ends) {
    const __m128i bytes = load_half(text.from);
    if ((ends & 0xFFFU) == 0x924) {  // four of three bytes
        store_half(text.to,
                   units_of_three(_mm_shuffle_epi8(bytes, _mm_setr_epi8(2, 1, 0, -1, 5, 4, 3, -1, 8,
                                                                        7, 6, -1, 11, 10, 9, -1))));
        text.from += 12;
        text.to += 4;
        return;
    }
    if ((ends & 0xFFFFU) == 0xAAAA) {  // eight of two bytes
        store_half(text.to,
                   units_of_two(_mm_shuffle_epi8(bytes, _mm_setr_epi8(1, 0, 3, 2, 5, 4, 7, 6, 9, 8,
                                                                      11, 10, 13, 12, 15, 14))));
        text.from += 16;
        text.to += 8;
        return;
    }
    const Window window = kWindows.of[ends & 0xFFFU];
    if (window.count == 0) {
        // At least the one that is too long: put what stands before it one by one.
        put_character(text);
        return;
    }
    const __m128i parts = _mm_shuffle_epi8(bytes, load_half(kWindows.shuffles[window.shuffle]));
    store_half(text.to, window.count == 6 ? units_of_two(parts) : units_of_three(parts));
    text.from += window.taken;
    text.to += window.count;
}

TARGET std::uint64_t tails(__m256i bytes) {
    return bits(_mm256_cmpgt_epi8(all(0xC0), bytes));
}

// Converts well-formed text, up to the last 64 bytes or units.
TARGET Text put_units(Text text, const char* end, const char16_t* to_end) {
    while (end - text.from >= static_cast<std::ptrdiff_t>(kBlock) &&
           to_end - text.to >= static_cast<std::ptrdiff_t>(kBlock) + 8) {
        const __m256i low = load(text.from);
        const __m256i high = load(text.from + 32);
        if (bits(_mm256_or_si256(low, high)) == 0) {
            for (std::size_t i = 0; i < kBlock; i += 16) {
                const __m256i units = _mm256_cvtepu8_epi16(load_half(text.from + i));
                _mm256_storeu_si256(reinterpret_cast<__m256i*>(text.to + i), units);
            }
            text.from += kBlock;
            text.to += kBlock;
            continue;
        }
        // A character ends in front of each byte that is no tail.
        std::uint64_t ends = ~(tails(low) | tails(high) << 32U) >> 1U;
        const char* const last_window = text.from + kBlock - 17;
        while (text.from <= last_window) {
            const char* const before = text.from;
            if ((ends & 0xFFFFU) == 0xFFFF) {
                const __m256i units = _mm256_cvtepu8_epi16(load_half(text.from));
                _mm256_storeu_si256(reinterpret_cast<__m256i*>(text.to), units);
                text.from += 16;
                text.to += 16;
            } else {
                put_window(text, ends);
            }
            ends >>= static_cast<unsigned int>(text.from - before);
        }
    }
    return text;
}

Progress to_units(const char* from, std::size_t size, char16_t* to, std::size_t room) {
    // Slices that stay in the nearest cache between the look at them and the conversion.
    constexpr std::size_t kSlice = 8192;
    Text text{from, to};
    for (;;) {
        const auto left = size - static_cast<std::size_t>(text.from - from);
        const auto good = count_units(text.from, std::min(left, kSlice)).taken;
        const char* const before = text.from;
        text = put_units(text, text.from + good, to + room);
        if (text.from == before) break;
    }
    return {static_cast<std::size_t>(text.from - from), static_cast<std::size_t>(text.to - to)};
}

// ---- To UTF-8 ----

// A high surrogate stands at the end without its other half, which may follow.
bool ends_in_high(const char16_t* from, std::size_t size) {
    return size > 0 && (from[size - 1] & 0xFC00U) == 0xD800;
}

TARGET Progress count_bytes(const char16_t* from, std::size_t size) {
    Progress progress;
    std::uint32_t carried = 0;  // a high surrogate at the end of the block before
    for (; size - progress.taken >= 16; progress.taken += 16) {
        const __m256i units = load(from + progress.taken);
        const __m256i zero = _mm256_setzero_si256();
        const auto below_80 =
            bits(_mm256_cmpeq_epi16(_mm256_and_si256(units, all_units(0xFF80)), zero));
        if (below_80 == 0xFFFFFFFF && carried == 0) {
            progress.made += 16;
            continue;
        }
        const auto below_800 =
            bits(_mm256_cmpeq_epi16(_mm256_and_si256(units, all_units(0xF800)), zero));
        const __m256i kind = _mm256_and_si256(units, all_units(0xFC00));
        const auto high = bits(_mm256_cmpeq_epi16(kind, all_units(0xD800)));
        const auto low = bits(_mm256_cmpeq_epi16(kind, all_units(0xDC00)));
        if (low != (high << 2U | carried)) break;
        carried = high >> 30U;
        // Three bytes, less one for each unit that has fewer or is half of a pair; two bits a unit.
        const auto less =
            std::popcount(below_80) + std::popcount(below_800) + std::popcount(high | low);
        progress.made += 48 - static_cast<std::size_t>(less) / 2;
    }
    if (ends_in_high(from, progress.taken)) {
        --progress.taken;
        progress.made -= 2;
    }
    return progress;
}

// The bytes to be kept of four units of three each, by which units reach 0x80 (low half of the
// number) and 0x800 (high half).
struct Packing {
    alignas(16) std::uint8_t places[256][16];
    std::uint8_t size[256];
};
constexpr Packing make_packing() {
    Packing packing{};
    for (unsigned int number = 0; number < 256; ++number) {
        std::uint8_t size = 0;
        for (auto& place : packing.places[number]) place = 0x80;
        for (unsigned int unit = 0; unit < 4; ++unit) {
            const bool is_two = (number >> unit & 1U) != 0;
            const bool is_three = (number >> (unit + 4) & 1U) != 0;
            const unsigned int first = is_three ? 0 : is_two ? 1 : 2;
            for (unsigned int i = first; i < 3; ++i) {
                packing.places[number][size++] = static_cast<std::uint8_t>(unit * 4 + i);
            }
        }
        packing.size[number] = size;
    }
    return packing;
}
constexpr Packing kPacking = make_packing();

// Four units, a lane each, none of them a surrogate; gives the bytes written. Writes 16.
TARGET std::size_t put_four(__m128i units, char* to) {
    const __m128i is_two = _mm_cmpgt_epi32(units, _mm_set1_epi32(0x7F));
    const __m128i is_three = _mm_cmpgt_epi32(units, _mm_set1_epi32(0x7FF));
    const __m128i six = _mm_set1_epi32(0x3F);
    const __m128i last = _mm_blendv_epi8(
        units, _mm_or_si128(_mm_and_si128(units, six), _mm_set1_epi32(0x80)), is_two);
    const __m128i upper = _mm_srli_epi32(units, 6);
    const __m128i middle =
        _mm_blendv_epi8(_mm_or_si128(upper, _mm_set1_epi32(0xC0)),
                        _mm_or_si128(_mm_and_si128(upper, six), _mm_set1_epi32(0x80)), is_three);
    const __m128i first = _mm_or_si128(_mm_srli_epi32(units, 12), _mm_set1_epi32(0xE0));
    const __m128i whole =
        _mm_or_si128(first, _mm_or_si128(_mm_slli_epi32(middle, 8), _mm_slli_epi32(last, 16)));
    const auto number = static_cast<unsigned int>(_mm_movemask_ps(_mm_castsi128_ps(is_two))) |
                        static_cast<unsigned int>(_mm_movemask_ps(_mm_castsi128_ps(is_three)))
                            << 4U;
    store_half(to, _mm_shuffle_epi8(whole, load_half(kPacking.places[number])));
    return kPacking.size[number];
}

// Up to eight units with surrogates among them; stops at one without its other half.
bool put_pairs(const char16_t*& from, const char16_t* end, char*& to) {
    const auto tail = [](std::uint32_t c, unsigned int shift) {
        return static_cast<char>(0x80U | (c >> shift & 0x3FU));
    };
    for (const char16_t* const stop = from + 8; from < stop;) {
        std::uint32_t c = *from;
        if ((c & 0xF800U) == 0xD800) {
            const bool is_pair =
                (c & 0xFC00U) == 0xD800 && from + 1 < end && (from[1] & 0xFC00U) == 0xDC00;
            if (!is_pair) return false;
            c = 0x10000 + ((c & 0x3FFU) << 10U) + (from[1] & 0x3FFU);
            const std::uint32_t bytes = 0x808080F0U | c >> 18U | (c >> 12U & 0x3FU) << 8U |
                                        (c >> 6U & 0x3FU) << 16U | (c & 0x3FU) << 24U;
            std::memcpy(to, &bytes, sizeof bytes);
            to += sizeof bytes;
            from += 2;
            continue;
        }
        if (c >= 0x800) {
            *to++ = static_cast<char>(0xE0U | c >> 12U);
            *to++ = tail(c, 6);
        } else if (c >= 0x80) {
            *to++ = static_cast<char>(0xC0U | c >> 6U);
        }
        *to++ = c < 0x80 ? static_cast<char>(c) : tail(c, 0);
        ++from;
    }
    return true;
}

TARGET Progress to_bytes(const char16_t* start, std::size_t size, char* out, std::size_t room) {
    const char16_t* from = start;
    const char16_t* const end = start + size;
    char* to = out;
    // Sixteen units become 48 bytes at most, of which the last are written with four too many.
    while (end - from >= 16 && out + room - to >= 64) {
        const __m256i units = load(from);
        if (_mm256_testz_si256(units, all_units(0xFF80)) != 0) {
            store_half(to, _mm_packus_epi16(_mm256_castsi256_si128(units),
                                            _mm256_extracti128_si256(units, 1)));
            from += 16;
            to += 16;
            continue;
        }
        const __m128i half = _mm256_castsi256_si128(units);
        const __m128i kind = _mm_and_si128(half, _mm_set1_epi16(static_cast<short>(0xF800)));
        const __m128i surrogates =
            _mm_cmpeq_epi16(kind, _mm_set1_epi16(static_cast<short>(0xD800)));
        if (_mm_testz_si128(surrogates, surrogates) == 0) {
            if (!put_pairs(from, end, to)) break;
            continue;
        }
        const __m256i lanes = _mm256_cvtepu16_epi32(half);
        to += put_four(_mm256_castsi256_si128(lanes), to);
        to += put_four(_mm256_extracti128_si256(lanes, 1), to);
        from += 8;
    }
    return {static_cast<std::size_t>(from - start), static_cast<std::size_t>(to - out)};
}

}  // namespace

const Utf8Kernel kAvx2Utf8{"AVX2", count_units, to_units, count_bytes, to_bytes};

}  // namespace tvutil2::codepage

#undef TARGET

#endif
