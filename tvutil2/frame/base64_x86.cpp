// Base64 with AVX2 and with AVX-512 VBMI, after Wojciech Muła and Daniel Lemire, "Faster Base64
// Encoding and Decoding Using AVX2 Instructions" (2018) and "Base64 encoding and decoding at almost
// the speed of a memory copy" (2020), with text of 16-bit units.
#include "tvutil2/frame/base64_kernels.h"
#include "tvutil2/platform/base/x86_intrinsics.h"

#if defined(__x86_64__)

#include <cstdint>

#define TARGET_AVX2 __attribute__((target("avx2")))
#define TARGET_AVX512 __attribute__((target("avx512f,avx512bw,avx512vbmi")))

namespace tvutil2 {
namespace {

TARGET_AVX2 __m256i both_lanes(__m128i lane) {
    return _mm256_broadcastsi128_si256(lane);
}

// The four 6-bit values of each three bytes, a byte each: 12 bytes of each lane become 16.
TARGET_AVX2 __m256i split_groups(__m256i bytes) {
    const __m256i spread = _mm256_shuffle_epi8(
        bytes, both_lanes(_mm_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10)));
    const __m256i first_and_third = _mm256_mulhi_epu16(
        _mm256_and_si256(spread, _mm256_set1_epi32(0x0FC0FC00)), _mm256_set1_epi32(0x04000040));
    const __m256i second_and_fourth = _mm256_mullo_epi16(
        _mm256_and_si256(spread, _mm256_set1_epi32(0x003F03F0)), _mm256_set1_epi32(0x01000010));
    return _mm256_or_si256(first_and_third, second_and_fourth);
}

// The alphabet is five runs; what is to be added to a value is looked up by its run.
TARGET_AVX2 __m256i letters_of(__m256i values) {
    const __m256i offsets = both_lanes(
        _mm_setr_epi8('a' - 26, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52,
                      '0' - 52, '0' - 52, '0' - 52, '0' - 52, '+' - 62, '/' - 63, 'A', 0, 0));
    const __m256i beyond_letters = _mm256_subs_epu8(values, _mm256_set1_epi8(51));
    const __m256i is_upper = _mm256_cmpgt_epi8(_mm256_set1_epi8(26), values);
    const __m256i run =
        _mm256_or_si256(beyond_letters, _mm256_and_si256(is_upper, _mm256_set1_epi8(13)));
    return _mm256_add_epi8(values, _mm256_shuffle_epi8(offsets, run));
}

TARGET_AVX2 std::size_t encode_avx2(const unsigned char* from, std::size_t size, char16_t* to) {
    std::size_t taken = 0;
    // The second lane's load reads four bytes more than it uses.
    for (; size - taken >= 28; taken += 24, from += 24, to += 32) {
        const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
        const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + 12));
        const __m256i text = letters_of(split_groups(_mm256_set_m128i(high, low)));
        auto* const out = reinterpret_cast<__m256i*>(to);
        _mm256_storeu_si256(out, _mm256_cvtepu8_epi16(_mm256_castsi256_si128(text)));
        _mm256_storeu_si256(out + 1, _mm256_cvtepu8_epi16(_mm256_extracti128_si256(text, 1)));
    }
    return taken;
}

// The values of 32 characters; false when one of them is outside the alphabet. Each nibble of a
// character names the faults it can be part of: a fault that both name is one.
TARGET_AVX2 bool values_of(__m256i text, __m256i& values) {
    const __m256i faults_of_low =
        both_lanes(_mm_setr_epi8(0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x13,
                                 0x1A, 0x1B, 0x1B, 0x1B, 0x1A));
    const __m256i faults_of_high =
        both_lanes(_mm_setr_epi8(0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08, 0x10, 0x10, 0x10,
                                 0x10, 0x10, 0x10, 0x10, 0x10));
    const __m256i offsets =
        both_lanes(_mm_setr_epi8(0, 16, 19, 4, -65, -65, -71, -71, 0, 0, 0, 0, 0, 0, 0, 0));
    const __m256i slash = _mm256_set1_epi8(0x2F);
    const __m256i high = _mm256_and_si256(_mm256_srli_epi32(text, 4), slash);
    const __m256i low = _mm256_and_si256(text, slash);
    const __m256i faults_high = _mm256_shuffle_epi8(faults_of_high, high);
    const __m256i faults_low = _mm256_shuffle_epi8(faults_of_low, low);
    if (_mm256_testz_si256(faults_low, faults_high) == 0) return false;
    const __m256i run = _mm256_add_epi8(_mm256_cmpeq_epi8(text, slash), high);
    values = _mm256_add_epi8(text, _mm256_shuffle_epi8(offsets, run));
    return true;
}

// Three bytes of each four values; 24 bytes, followed by zeros.
TARGET_AVX2 __m256i join_groups(__m256i values) {
    const __m256i pairs = _mm256_maddubs_epi16(values, _mm256_set1_epi32(0x01400140));
    const __m256i groups = _mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00011000));
    const __m256i in_lanes = _mm256_shuffle_epi8(
        groups, both_lanes(_mm_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1)));
    return _mm256_permutevar8x32_epi32(in_lanes, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7));
}

TARGET_AVX2 std::size_t decode_avx2(const char16_t* from, std::size_t size, unsigned char* to) {
    std::size_t taken = 0;
    for (; size - taken >= 32; taken += 32, from += 32, to += 24) {
        const auto* const in = reinterpret_cast<const __m256i*>(from);
        // Units above 0xFF saturate to 0x00 or 0xFF, which the alphabet hasn't got.
        const __m256i packed =
            _mm256_packus_epi16(_mm256_loadu_si256(in), _mm256_loadu_si256(in + 1));
        __m256i values;
        if (!values_of(_mm256_permute4x64_epi64(packed, 0xD8), values)) break;
        const __m256i bytes = join_groups(values);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to), _mm256_castsi256_si128(bytes));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(to + 16), _mm256_extracti128_si256(bytes, 1));
    }
    return taken;
}

constexpr __mmask64 kFirst48 = 0x0000FFFFFFFFFFFF;

TARGET_AVX512 std::size_t encode_avx512(const unsigned char* from, std::size_t size, char16_t* to) {
    const __m512i spread =
        _mm512_setr_epi32(0x01020001, 0x04050304, 0x07080607, 0x0A0B090A, 0x0D0E0C0D, 0x10110F10,
                          0x13141213, 0x16171516, 0x191A1819, 0x1C1D1B1C, 0x1F201E1F, 0x22232122,
                          0x25262425, 0x28292728, 0x2B2C2A2B, 0x2E2F2D2E);
    const __m512i shifts = _mm512_set1_epi64(0x3036242A1016040A);
    const __m512i alphabet = _mm512_loadu_si512(kBase64Alphabet);
    std::size_t taken = 0;
    for (; size - taken >= 48; taken += 48, from += 48, to += 64) {
        const __m512i bytes = _mm512_maskz_loadu_epi8(kFirst48, from);
        const __m512i groups = _mm512_permutexvar_epi8(spread, bytes);
        const __m512i values = _mm512_multishift_epi64_epi8(shifts, groups);
        const __m512i text = _mm512_permutexvar_epi8(values, alphabet);
        _mm512_storeu_si512(to, _mm512_cvtepu8_epi16(_mm512_castsi512_si256(text)));
        _mm512_storeu_si512(to + 32, _mm512_cvtepu8_epi16(_mm512_extracti64x4_epi64(text, 1)));
    }
    return taken;
}

// A value for each ASCII character, with the top bit for those outside the alphabet.
struct ValueTable {
    alignas(64) unsigned char values[128];
};

constexpr ValueTable kValueTable = [] {
    ValueTable table{};
    for (auto& value : table.values) value = 0x80;
    for (unsigned char i = 0; i < 64; ++i) {
        table.values[static_cast<unsigned char>(kBase64Alphabet[i])] = i;
    }
    return table;
}();

TARGET_AVX512 __m512i decode_table(std::size_t half) {
    return _mm512_load_si512(kValueTable.values + 64 * half);
}

// The values of 64 characters with the top bit where one is outside the alphabet: units above 0xFF
// saturate to 0xFF, which has it.
TARGET_AVX512 __m512i values_of(__m512i first, __m512i second) {
    const __m512i text = _mm512_inserti64x4(_mm512_castsi256_si512(_mm512_cvtusepi16_epi8(first)),
                                            _mm512_cvtusepi16_epi8(second), 1);
    const __m512i values = _mm512_permutex2var_epi8(decode_table(0), text, decode_table(1));
    return _mm512_or_si512(values, _mm512_and_si512(text, _mm512_set1_epi8(-0x80)));
}

// Three bytes of each four values; 48 bytes, followed by others.
TARGET_AVX512 __m512i join_groups(__m512i values) {
    const __m512i pack = _mm512_setr_epi32(
        0x06000102, 0x090A0405, 0x0C0D0E08, 0x16101112, 0x191A1415, 0x1C1D1E18, 0x26202122,
        0x292A2425, 0x2C2D2E28, 0x36303132, 0x393A3435, 0x3C3D3E38, 0, 0, 0, 0);
    const __m512i pairs = _mm512_maddubs_epi16(values, _mm512_set1_epi32(0x01400140));
    const __m512i groups = _mm512_madd_epi16(pairs, _mm512_set1_epi32(0x00011000));
    return _mm512_permutexvar_epi8(pack, groups);
}

// Up to 64 characters, whole groups in front of the first that is outside the alphabet.
TARGET_AVX512 std::size_t decode_last(const char16_t* from, std::size_t size, unsigned char* to) {
    const std::uint64_t all = size < 64 ? (1ULL << size) - 1 : ~0ULL;
    const __m512i values =
        values_of(_mm512_maskz_loadu_epi16(static_cast<__mmask32>(all), from),
                  _mm512_maskz_loadu_epi16(static_cast<__mmask32>(all >> 32U), from + 32));
    const std::uint64_t outside = _mm512_movepi8_mask(values) | ~all;
    const auto clean = outside == 0 ? 64U : static_cast<unsigned int>(__builtin_ctzll(outside));
    const auto taken = clean / 4 * 4;
    _mm512_mask_storeu_epi8(to, (1ULL << taken / 4 * 3) - 1, join_groups(values));
    return taken;
}

TARGET_AVX512 std::size_t decode_avx512(const char16_t* from, std::size_t size, unsigned char* to) {
    std::size_t taken = 0;
    for (; size - taken >= 64; taken += 64, from += 64, to += 48) {
        const __m512i values = values_of(_mm512_loadu_si512(from), _mm512_loadu_si512(from + 32));
        if (_mm512_movepi8_mask(values) != 0) break;
        _mm512_mask_storeu_epi8(to, kFirst48, join_groups(values));
    }
    return size - taken < 4 ? taken : taken + decode_last(from, size - taken, to);
}

}  // namespace

const Base64Kernel kAvx2Base64{"AVX2", encode_avx2, decode_avx2};
const Base64Kernel kAvx512Base64{"AVX-512 VBMI", encode_avx512, decode_avx512};

}  // namespace tvutil2

#endif
