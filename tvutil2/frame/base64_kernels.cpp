#include "tvutil2/frame/base64_kernels.h"

#include <array>
#include <cstdint>

namespace tvutil2 {
namespace {

// Two characters for each 12 bits: half the look-ups of one at a time.
struct Pair {
    char16_t first;
    char16_t second;
};

constexpr auto kPairs = [] {
    std::array<Pair, 4096> pairs{};
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        pairs[i] = {static_cast<char16_t>(kBase64Alphabet[i >> 6U]),
                    static_cast<char16_t>(kBase64Alphabet[i & 63U])};
    }
    return pairs;
}();

std::size_t encode(const unsigned char* from, std::size_t size, char16_t* to) {
    std::size_t taken = 0;
    for (; size - taken >= 3; taken += 3, from += 3, to += 4) {
        const unsigned int first = from[0];
        const unsigned int second = from[1];
        const unsigned int group = first << 16U | second << 8U | from[2];
        const Pair high = kPairs[group >> 12U];
        const Pair low = kPairs[group & 0xFFFU];
        to[0] = high.first;
        to[1] = high.second;
        to[2] = low.first;
        to[3] = low.second;
    }
    return taken;
}

std::size_t decode(const char16_t* from, std::size_t size, unsigned char* to) {
    std::size_t taken = 0;
    for (; size - taken >= 4; taken += 4, from += 4, to += 3) {
        if ((from[0] | from[1] | from[2] | from[3]) > 0xFF) break;
        const std::uint32_t a = kBase64Values[from[0]];
        const std::uint32_t b = kBase64Values[from[1]];
        const std::uint32_t c = kBase64Values[from[2]];
        const std::uint32_t d = kBase64Values[from[3]];
        if (((a | b | c | d) & kNoBase64Value) != 0) break;
        const std::uint32_t group = a << 18U | b << 12U | c << 6U | d;
        to[0] = static_cast<unsigned char>(group >> 16U);
        to[1] = static_cast<unsigned char>(group >> 8U);
        to[2] = static_cast<unsigned char>(group);
    }
    return taken;
}

}  // namespace

const Base64Kernel kPortableBase64{"portable", encode, decode};

std::span<const Base64Kernel> base64_kernels() {
    struct Available {
        Base64Kernel list[3];
        std::size_t count;
    };
    static const auto available = [] {
        Available kernels{{kPortableBase64}, 1};
#if defined(__x86_64__)
        const bool has_avx2 = __builtin_cpu_supports("avx2") != 0;
        if (has_avx2) kernels.list[kernels.count++] = kAvx2Base64;
        if (has_avx2 && __builtin_cpu_supports("avx512bw") != 0 &&
            __builtin_cpu_supports("avx512vbmi") != 0) {
            kernels.list[kernels.count++] = kAvx512Base64;
        }
#endif
        return kernels;
    }();
    return {available.list, available.count};
}

}  // namespace tvutil2
