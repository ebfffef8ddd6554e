#include "tvutil2/platform/codepage/four_byte_text.h"

#include "tvutil2/platform/base/x86_intrinsics.h"
#include "tvutil2/platform/codepage/lead_scan.h"
#include "tvutil2/platform/codepage/utf8_coding.h"

#include <bit>
#include <cstring>

namespace tvutil2::codepage {
namespace {

// ---- To 16-bit text ----

// Where the characters of a block begin, those of four bytes by themselves, and how many bytes they
// take. They end in front of a sequence of four that is broken, and of a character that the block
// cuts.
struct Starts {
    std::uint64_t all;
    std::uint64_t longs;
    std::size_t size;
};

Starts starts_of(const PageTable& page, const char* block) {
    const auto leads = leads_among(scan_block(page, block).candidates);
    const auto halves = leads & (digits_in(block) >> 1U);
    const auto firsts = first_halves(halves);
    const auto longs = firsts & (halves >> 2U);
    const auto stop = (leads & (std::uint64_t{1} << 63U)) | (firsts & ~longs);
    const auto front = stop == 0 ? ~std::uint64_t{0} : (stop & (0 - stop)) - 1;
    const auto starts = ~(leads << 1U) & ~(halves & ~firsts);
    return {starts & front, longs & front, static_cast<std::size_t>(std::countr_one(front))};
}

// The tables of a page in one place: of one and two bytes, and of four.
struct Tables {
    const FourByteArea& area;
    std::uint32_t long_count;
    const std::uint8_t* row_of;
    const char16_t* of[2];

    explicit Tables(const PageTable& page)
        : area(*page.four_bytes()),
          long_count(area.unit_count()),
          row_of(page.row_numbers()),
          of{page.rows(), area.units()} {}
};

// The character at the front of at least four bytes. Both lengths are reckoned and one is looked
// up, without a branch: one that can't be foretold costs more than all of this.
inline char32_t front_of(const Tables& tables, const char* from, std::uint32_t is_long) {
    constexpr std::uint32_t kFirst = ((0x81 * 10 + 0x30) * 126 + 0x81) * 10 + 0x30;
    const std::uint32_t first = static_cast<BYTE>(from[0]);
    const std::uint32_t second = static_cast<BYTE>(from[1]);
    const std::uint32_t third = static_cast<BYTE>(from[2]);
    const std::uint32_t fourth = static_cast<BYTE>(from[3]);
    const std::uint32_t mask = 0 - is_long;
    const std::uint32_t number =
        (((first * 10 + second) * 126 + third) * 10 + fourth - kFirst) & mask;
    if (number >= tables.long_count) return tables.area.character_of(number);
    const std::uint32_t row = tables.row_of[first];
    const std::uint32_t is_pair = (0 - row) >> 31U;
    const std::uint32_t pair = row << 8U | (first ^ ((first ^ second) & (0 - is_pair)));
    const char16_t unit = tables.of[is_long][(pair & ~mask) | number];
    if (unit == PageTable::kNoUnit && is_long == 0) return FourByteArea::kNoCharacter;
    return unit;
}

// Writes a character; false for none.
inline bool put(char32_t character, char16_t*& out) {
    if (character < 0x10000) {
        *out++ = static_cast<char16_t>(character);
        return true;
    }
    if (character == FourByteArea::kNoCharacter) return false;
    out[0] = static_cast<char16_t>(0xD7C0 + (character >> 10U));
    out[1] = static_cast<char16_t>(0xDC00 | (character & 0x3FFU));
    out += 2;
    return true;
}

// Whole blocks that have characters of four bytes.
Progress put_blocks(const PageTable& page, std::string_view bytes, char16_t* to, std::size_t room) {
    const Tables tables(page);
    Progress progress;
    // The last character of a block may begin with its last byte, and four are looked at.
    while (bytes.size() - progress.taken >= kScanned + 3 && room - progress.made >= kScanned) {
        const char* const from = bytes.data() + progress.taken;
        char16_t* out = to + progress.made;
        const auto starts = starts_of(page, from);
        if (starts.longs == 0) break;
        for (std::uint64_t left = starts.all; left != 0; left &= left - 1) {
            const auto place = static_cast<std::size_t>(std::countr_zero(left));
            const auto is_long = static_cast<std::uint32_t>(starts.longs >> place & 1U);
            if (!put(front_of(tables, from + place, is_long), out)) {
                return {progress.taken + place, static_cast<std::size_t>(out - to)};
            }
        }
        progress.taken += starts.size;
        progress.made = static_cast<std::size_t>(out - to);
    }
    return progress;
}

}  // namespace

Progress put_four_byte_units(const PageTable& page, std::string_view bytes, char16_t* to,
                             std::size_t room) {
    auto progress = put_blocks(page, bytes, to, room);
    if (bytes.size() - progress.taken >= kScanned + 3 && room - progress.made >= kScanned) {
        return progress;
    }
    const Tables tables(page);
    char16_t* out = to + progress.made;
    char16_t* const out_end = to + room;
    while (bytes.size() - progress.taken >= 4 && out_end - out >= 2) {
        const char* const from = bytes.data() + progress.taken;
        const bool is_lead = page.is_lead(static_cast<BYTE>(from[0]));
        const bool is_long =
            FourByteArea::is_begun_by(static_cast<BYTE>(from[0]), static_cast<BYTE>(from[1]));
        if (is_long && FourByteArea::number_of(from) == FourByteArea::kNoNumber) break;
        if (!put(front_of(tables, from, is_long ? 1 : 0), out)) break;
        progress.taken += is_long ? 4U : is_lead ? 2U : 1U;
    }
    progress.made = static_cast<std::size_t>(out - to);
    return progress;
}

// ---- From 16-bit text ----

namespace {

// So many characters without four bytes in a row are text of another kind.
constexpr std::size_t kCalm = 64;

// `calm` counts them from call to call.
template <bool counts>
Progress to_four_bytes(const std::uint32_t* bytes_of, std::u16string_view units, char* to,
                       std::size_t room, std::size_t& calm) {
    const char16_t* from = units.data();
    const char16_t* const end = from + units.size();
    std::size_t made = 0;
    while (calm < kCalm && end - from >= 2 && room - made >= 4) {
        std::uint32_t bytes = bytes_of[*from];
        std::size_t taken = 1;
        if (bytes == 0) {
            if (!is_high_surrogate(from[0]) || !is_low_surrogate(from[1])) break;
            bytes = FourByteArea::bytes_above_16_bits(utf16_front({from, 2}));
            taken = 2;
        }
        if constexpr (!counts) std::memcpy(to + made, &bytes, sizeof bytes);
        made += 1 + (bytes > 0xFF ? 1U : 0U) + (bytes > 0xFFFF ? 2U : 0U);
        from += taken;
        calm = bytes > 0xFFFF ? 0 : calm + 1;
    }
    return {static_cast<std::size_t>(from - units.data()), made};
}

Progress put_plainly(const std::uint32_t* bytes_of, std::u16string_view units, char* to,
                     std::size_t room) {
    std::size_t calm = 0;
    return to_four_bytes<false>(bytes_of, units, to, room, calm);
}

constexpr FourBytesKernel kPortableFourBytes{"portable", put_plainly};

#if defined(__x86_64__)

#define TARGET __attribute__((target("avx512f,avx512bw,avx512vl,avx512vbmi,avx512vbmi2,popcnt")))

// Sixteen units at once: their sequences have no zeros in them, so what isn't zero is what counts.
TARGET Progress put_by_16(const std::uint32_t* bytes_of, std::u16string_view units, char* to,
                          std::size_t room) {
    constexpr std::size_t kBlock = 16;
    Progress progress;
    std::size_t calm = 0;
    while (calm < kCalm && units.size() - progress.taken > kBlock &&
           room - progress.made >= kBlock * sizeof *bytes_of) {
        const char16_t* const from = units.data() + progress.taken;
        const __m512i block =
            _mm512_cvtepu16_epi32(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(from)));
        const __m512i bytes = _mm512_i32gather_epi32(block, bytes_of, sizeof *bytes_of);
        if (_mm512_testn_epi32_mask(bytes, bytes) != 0) {
            const auto part = to_four_bytes<false>(bytes_of, {from, kBlock + 1}, to + progress.made,
                                                   room - progress.made, calm);
            if (part.taken == 0) break;
            progress += part;
            continue;
        }
        const __mmask64 used = _mm512_test_epi8_mask(bytes, bytes);
        _mm512_storeu_si512(to + progress.made, _mm512_maskz_compress_epi8(used, bytes));
        progress.made += static_cast<std::size_t>(_mm_popcnt_u64(used));
        progress.taken += kBlock;
        const bool has_long = _mm512_cmpgt_epu32_mask(bytes, _mm512_set1_epi32(0xFFFF)) != 0;
        calm = has_long ? 0 : calm + kBlock;
    }
    progress += to_four_bytes<false>(bytes_of, units.substr(progress.taken), to + progress.made,
                                     room - progress.made, calm);
    return progress;
}

constexpr FourBytesKernel kVbmi2FourBytes{"AVX-512 VBMI2", put_by_16};

#undef TARGET

#endif

}  // namespace

std::span<const FourBytesKernel> four_bytes_kernels() {
#if defined(__x86_64__)
    static constexpr FourBytesKernel kAll[] = {kPortableFourBytes, kVbmi2FourBytes};
    static const bool has_all = __builtin_cpu_supports("avx512bw") != 0 &&
                                __builtin_cpu_supports("avx512vl") != 0 &&
                                __builtin_cpu_supports("avx512vbmi2") != 0;
    return {kAll, has_all ? 2U : 1U};
#else
    static constexpr FourBytesKernel kAll[] = {kPortableFourBytes};
    return kAll;
#endif
}

Progress put_four_byte_bytes(const PageTable& page, std::u16string_view units, char* to,
                             std::size_t room) {
    return four_bytes_kernels().back().put(page.four_bytes()->bytes_of_all(), units, to, room);
}

Progress count_four_byte_bytes(const PageTable& page, std::u16string_view units) {
    std::size_t calm = 0;
    return to_four_bytes<true>(page.four_bytes()->bytes_of_all(), units, nullptr, SIZE_MAX, calm);
}

}  // namespace tvutil2::codepage
