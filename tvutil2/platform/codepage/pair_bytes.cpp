#include "tvutil2/platform/codepage/pair_bytes.h"

#include "tvutil2/platform/base/x86_intrinsics.h"
#include "tvutil2/platform/codepage/ascii_block.h"
#include "tvutil2/platform/codepage/page_table.h"

#include <bit>
#include <cstring>

namespace tvutil2::codepage {
namespace {

// The bytes of a block of units; null in front of a unit without any, `from` then tells where.
// Always two bytes are written, without a branch: whether a character has two can't be foretold.
char* put_block(const std::uint16_t* bytes, const char16_t*& from, char* to) {
    for (const char16_t* const stop = from + kAsciiBlock; from < stop; ++from) {
        const std::uint16_t both = bytes[*from];
        if (both == PageTable::kNoBytes) break;
        std::memcpy(to, &both, sizeof both);
        to += both > 0xFF ? 2 : 1;
    }
    return to;
}

template <class PutBlock>
[[gnu::always_inline]] inline Progress put_blocks(std::u16string_view units, char* to,
                                                  std::size_t room, PutBlock put) {
    const char16_t* from = units.data();
    const char16_t* const end = from + units.size();
    char* const start = to;
    while (static_cast<std::size_t>(end - from) >= kAsciiBlock &&
           room - static_cast<std::size_t>(to - start) >= 2 * kAsciiBlock) {
        if (is_ascii_block(from)) {
            narrow_block(from, to);
            from += kAsciiBlock;
            to += kAsciiBlock;
            continue;
        }
        const char16_t* const next = from + kAsciiBlock;
        to = put(from, to);
        if (from != next) break;
    }
    return {static_cast<std::size_t>(from - units.data()), static_cast<std::size_t>(to - start)};
}

Progress put_plainly(const std::uint16_t* bytes, std::u16string_view units, char* to,
                     std::size_t room) {
    return put_blocks(units, to, room, [bytes](const char16_t*& from, char* place) {
        return put_block(bytes, from, place);
    });
}

constexpr PairBytesKernel kPortablePairBytes{"portable", put_plainly};

#if defined(__x86_64__)

#define TARGET __attribute__((target("avx512f,avx512bw,avx512vl,avx512vbmi,avx512vbmi2,popcnt")))

// The bytes of 16 units: two for each, the second one 0 where there is none.
TARGET inline __m256i look_up(const std::uint16_t* bytes, const char16_t* from) {
    const __m512i units =
        _mm512_cvtepu16_epi32(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(from)));
    return _mm512_cvtepi32_epi16(_mm512_i32gather_epi32(units, bytes, sizeof *bytes));
}

TARGET inline char* put_used(__m256i pairs, char* to) {
    const __mmask32 used = _mm256_test_epi8_mask(pairs, pairs);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), _mm256_maskz_compress_epi8(used, pairs));
    return to + _mm_popcnt_u32(used);
}

TARGET char* put_block_by_16(const std::uint16_t* bytes, const char16_t*& from, char* to) {
    static_assert(kAsciiBlock == 32);
    const __m256i first = look_up(bytes, from);
    const __m256i second = look_up(bytes, from + 16);
    if ((_mm256_testn_epi16_mask(first, first) | _mm256_testn_epi16_mask(second, second)) != 0) {
        return put_block(bytes, from, to);
    }
    from += kAsciiBlock;
    return put_used(second, put_used(first, to));
}

Progress put_by_16(const std::uint16_t* bytes, std::u16string_view units, char* to,
                   std::size_t room) {
    return put_blocks(units, to, room, [bytes](const char16_t*& from, char* place) {
        return put_block_by_16(bytes, from, place);
    });
}

constexpr PairBytesKernel kVbmi2PairBytes{"AVX-512 VBMI2", put_by_16};

#undef TARGET

#endif

}  // namespace

std::span<const PairBytesKernel> pair_bytes_kernels() {
    struct Available {
        PairBytesKernel list[2];
        std::size_t count;
    };
    static const auto available = [] {
        Available kernels{{kPortablePairBytes}, 1};
#if defined(__x86_64__)
        const bool has_all = __builtin_cpu_supports("avx512bw") != 0 &&
                             __builtin_cpu_supports("avx512vl") != 0 &&
                             __builtin_cpu_supports("avx512vbmi2") != 0;
        if (has_all) kernels.list[kernels.count++] = kVbmi2PairBytes;
#endif
        return kernels;
    }();
    return {available.list, available.count};
}

}  // namespace tvutil2::codepage
