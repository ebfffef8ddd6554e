#include "tvutil2/platform/codepage/single_units.h"

#include "tvutil2/platform/base/x86_intrinsics.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tvutil2::codepage {
namespace {

// Eight bytes by one load and two stores: the look-ups themselves are the limit then.
void put_plainly(const char16_t* units, const char* from, std::size_t size, char16_t* to) {
    std::size_t i = 0;
    for (; i + 8 <= size; i += 8) {
        std::uint64_t bytes = 0;
        std::memcpy(&bytes, from + i, sizeof bytes);
        const auto unit = [bytes, units](unsigned int place) -> std::uint64_t {
            return units[bytes >> place * 8U & 0xFFU];
        };
        // Laid down as they stand in memory on a machine with the low byte first, which is the one
        // kind that this library is built for.
        const std::uint64_t words[] = {unit(0) | unit(1) << 16U | unit(2) << 32U | unit(3) << 48U,
                                       unit(4) | unit(5) << 16U | unit(6) << 32U | unit(7) << 48U};
        std::memcpy(to + i, words, sizeof words);
    }
    for (; i < size; ++i) to[i] = units[static_cast<unsigned char>(from[i])];
}

constexpr SingleUnitsKernel kPortableSingleUnits{"portable", put_plainly};

#if defined(__x86_64__)

#define TARGET __attribute__((target("avx512f,avx512bw,avx512vbmi")))

// The upper half of a table, its low and high bytes apart, each in two registers.
struct UpperHalf {
    __m512i low[2];
    __m512i high[2];
};

TARGET UpperHalf split(const char16_t* units) {
    UpperHalf result;
    for (std::size_t i = 0; i < 2; ++i) {
        const auto* const from = units + 0x80 + i * 64;
        const __m512i a = _mm512_loadu_si512(from);
        const __m512i b = _mm512_loadu_si512(from + 32);
        result.low[i] = _mm512_inserti64x4(_mm512_castsi256_si512(_mm512_cvtepi16_epi8(a)),
                                           _mm512_cvtepi16_epi8(b), 1);
        result.high[i] = _mm512_inserti64x4(
            _mm512_castsi256_si512(_mm512_cvtepi16_epi8(_mm512_srli_epi16(a, 8))),
            _mm512_cvtepi16_epi8(_mm512_srli_epi16(b, 8)), 1);
    }
    return result;
}

TARGET __m512i both(__m256i low, __m256i high) {
    return _mm512_or_si512(_mm512_cvtepu8_epi16(low),
                           _mm512_slli_epi16(_mm512_cvtepu8_epi16(high), 8));
}

TARGET void put_by_64(const char16_t* units, const char* from, std::size_t size, char16_t* to) {
    std::size_t i = 0;
    if (size >= 64) {
        const UpperHalf half = split(units);
        for (; i + 64 <= size; i += 64) {
            const __m512i bytes = _mm512_loadu_si512(from + i);
            const __mmask64 is_upper = _mm512_movepi8_mask(bytes);
            const __m512i low = _mm512_mask_blend_epi8(
                is_upper, bytes, _mm512_permutex2var_epi8(half.low[0], bytes, half.low[1]));
            const __m512i high =
                _mm512_maskz_permutex2var_epi8(is_upper, half.high[0], bytes, half.high[1]);
            _mm512_storeu_si512(to + i,
                                both(_mm512_castsi512_si256(low), _mm512_castsi512_si256(high)));
            _mm512_storeu_si512(to + i + 32, both(_mm512_extracti64x4_epi64(low, 1),
                                                  _mm512_extracti64x4_epi64(high, 1)));
        }
    }
    put_plainly(units, from + i, size - i, to + i);
}

constexpr SingleUnitsKernel kVbmiSingleUnits{"AVX-512 VBMI", put_by_64};

#undef TARGET

#endif

}  // namespace

std::span<const SingleUnitsKernel> single_units_kernels() {
    struct Available {
        SingleUnitsKernel list[2];
        std::size_t count;
    };
    static const auto available = [] {
        Available kernels{{kPortableSingleUnits}, 1};
#if defined(__x86_64__)
        if (__builtin_cpu_supports("avx512bw") != 0 && __builtin_cpu_supports("avx512vbmi") != 0) {
            kernels.list[kernels.count++] = kVbmiSingleUnits;
        }
#endif
        return kernels;
    }();
    return {available.list, available.count};
}

}  // namespace tvutil2::codepage
