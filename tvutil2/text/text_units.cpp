#include "tvutil2/text/text_units.h"

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

namespace tvutil2 {
namespace {

// Sixteen bytes of units, each in a lane of its own. What is asked of a unit is asked of all lanes
// together in the same words; the answer is then all ones in a lane.
template <class Unit>
using Lanes __attribute__((vector_size(16))) = Unit;

// Units in front of the first one that is wanted.
template <class Unit, class Wanted>
std::size_t search(const void* units, std::size_t count, Wanted is_wanted) {
    constexpr auto kLanes = 16 / sizeof(Unit);
    constexpr auto kLaneBits = sizeof(Unit) * 8;
    const auto* const bytes = static_cast<const char*>(units);
    std::size_t i = 0;
    for (; i + kLanes <= count; i += kLanes) {
        Lanes<Unit> lanes;
        std::memcpy(&lanes, bytes + i * sizeof(Unit), sizeof lanes);
        const auto found = std::bit_cast<std::array<std::uint64_t, 2>>(is_wanted(lanes));
        if ((found[0] | found[1]) == 0) continue;
        // The first unit of a word stands in its lowest bits: a machine with the low byte first is
        // the one kind that this library is built for.
        if (found[0] != 0)
            return i + static_cast<std::size_t>(std::countr_zero(found[0])) / kLaneBits;
        return i + kLanes / 2 + static_cast<std::size_t>(std::countr_zero(found[1])) / kLaneBits;
    }
    for (; i < count; ++i) {
        Unit unit = 0;
        std::memcpy(&unit, bytes + i * sizeof(Unit), sizeof unit);
        if (is_wanted(unit)) break;
    }
    return i;
}

constexpr std::uint8_t kCr = '\r';
constexpr std::uint8_t kLf = '\n';
constexpr std::uint8_t kAboveAscii = 0x80;
constexpr std::uint16_t kAboveAscii16 = 0xFF80;

}  // namespace

std::size_t line_prefix(std::string_view bytes) {
    return search<std::uint8_t>(bytes.data(), bytes.size(),
                                [](auto byte) { return (byte == kCr) | (byte == kLf); });
}

std::size_t ascii_line_prefix(std::string_view bytes) {
    return search<std::uint8_t>(bytes.data(), bytes.size(), [](auto byte) {
        return (byte == kCr) | (byte == kLf) | ((byte & kAboveAscii) != 0);
    });
}

std::size_t ascii_prefix(std::string_view bytes) {
    return search<std::uint8_t>(bytes.data(), bytes.size(),
                                [](auto byte) { return (byte & kAboveAscii) != 0; });
}

std::size_t ascii_prefix(std::u16string_view units) {
    return search<std::uint16_t>(units.data(), units.size(),
                                 [](auto unit) { return (unit & kAboveAscii16) != 0; });
}

std::size_t utf16_line_prefix(std::string_view bytes, bool is_big_endian) {
    const bool is_swapped = is_big_endian != (std::endian::native == std::endian::big);
    const auto cr = static_cast<std::uint16_t>(is_swapped ? kCr << 8 : kCr);
    const auto lf = static_cast<std::uint16_t>(is_swapped ? kLf << 8 : kLf);
    return search<std::uint16_t>(bytes.data(), bytes.size() / 2,
                                 [cr, lf](auto unit) { return (unit == cr) | (unit == lf); });
}

std::u16string_view before_zero(std::u16string_view text) {
    return text.substr(
        0, search<std::uint16_t>(text.data(), text.size(), [](auto unit) { return unit == 0; }));
}

}  // namespace tvutil2
