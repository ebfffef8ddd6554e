#include "tvutil2/platform/codepage/four_byte_area.h"

#include <bit>
#include <cstddef>

namespace tvutil2::codepage {
namespace {

// 0x90308130, the sequence of U+10000, as a number.
constexpr std::uint32_t kFirstSupplementary = 189000;

// The units without a shorter sequence.
constexpr std::size_t kUnits = 39420;

// The edition of 2000 gave U+1E3F four bytes and a private character the two bytes that are meant
// for it. The one of 2005 exchanged the two and moved nothing else.
constexpr std::uint32_t kMoved = 0x1E3F;
constexpr std::uint32_t kExchanged = 0xE7C7;

constexpr bool is_in(BYTE byte, BYTE first, BYTE last) {
    return byte >= first && byte <= last;
}

constexpr std::uint32_t sequence_of(std::uint32_t number) {
    const auto fourth = 0x30 + number % 10;
    const auto third = 0x81 + number / 10 % 126;
    const auto second = 0x30 + number / 1260 % 10;
    const auto first = 0x81 + number / 12600;
    return first << 24U | second << 16U | third << 8U | fourth;
}

static_assert(sequence_of(kFirstSupplementary) == 0x90308130);

}  // namespace

FourByteArea::FourByteArea(const std::uint16_t* shorter) {
    m_units.reserve(kUnits);
    for (std::uint32_t unit = 0x80; unit < 0x10000; ++unit) {
        if (unit % 64 == 0) m_before[unit / 64] = static_cast<std::uint16_t>(m_units.size());
        const bool is_surrogate = unit >= 0xD800 && unit <= 0xDFFF;
        const bool is_here = unit == kMoved || shorter[unit] == 0;
        if (is_surrogate || !is_here || unit == kExchanged) continue;
        m_is_here[unit / 64] |= std::uint64_t{1} << unit % 64;
        m_units.push_back(static_cast<char16_t>(unit == kMoved ? kExchanged : unit));
    }
}

char32_t FourByteArea::character_of(BYTE first, BYTE second, BYTE third, BYTE fourth) const {
    if (!is_begun_by(first, second) || !is_in(third, 0x81, 0xFE) || !is_in(fourth, 0x30, 0x39)) {
        return kNoCharacter;
    }
    const std::uint32_t number =
        ((first - 0x81U) * 10 + second - 0x30U) * 1260 + (third - 0x81U) * 10 + fourth - 0x30U;
    if (number < m_units.size()) return m_units[number];
    const bool is_supplementary =
        number >= kFirstSupplementary && number - kFirstSupplementary < 0x100000;
    return is_supplementary ? 0x10000 + (number - kFirstSupplementary) : kNoCharacter;
}

std::uint32_t FourByteArea::bytes_of(char32_t character) const {
    if (character < 0x10000) {
        if (character == kMoved) return 0;
        const std::uint32_t unit = character == kExchanged ? kMoved : character;
        const std::uint64_t bit = std::uint64_t{1} << unit % 64;
        const std::uint64_t here = m_is_here[unit / 64];
        if ((here & bit) == 0) return 0;
        return sequence_of(m_before[unit / 64] +
                           static_cast<std::uint32_t>(std::popcount(here & (bit - 1))));
    }
    return character < 0x110000 ? sequence_of(kFirstSupplementary + (character - 0x10000)) : 0;
}

}  // namespace tvutil2::codepage
