#include "tvutil2/framework/string_map.h"

#include <cstring>
#include <random>

namespace tvutil2 {
namespace {

__extension__ using Product = unsigned __int128;

std::uint64_t draw_seed() {
    std::random_device device;
    return (std::uint64_t{device()} << 32) | device();
}

// Both halves of a 128-bit product: each bit of either factor tells on all of the result.
std::uint64_t mix(std::uint64_t a, std::uint64_t b) {
    const auto product = static_cast<Product>(a) * b;
    return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}

// Odd constants with half of their bits set.
constexpr std::uint64_t kFirst = 0xA0761D6478BD642F;
constexpr std::uint64_t kSecond = 0xE7037ED1A0B428DB;

}  // namespace

std::uint64_t hash_of(std::u16string_view text) {
    static const std::uint64_t seed = draw_seed();
    constexpr std::size_t kStep = sizeof(std::uint64_t) / sizeof(char16_t);
    std::uint64_t state = seed ^ (text.size() * kFirst);
    std::uint64_t units = 0;
    for (; text.size() >= kStep; text.remove_prefix(kStep)) {
        std::memcpy(&units, text.data(), sizeof units);
        state = mix(state ^ units, kFirst);
    }
    units = 0;
    for (const auto c : text) units = (units << 16) | c;
    return mix(state ^ units, kSecond ^ seed);
}

}  // namespace tvutil2
