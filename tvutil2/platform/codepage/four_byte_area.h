// The sequences of four bytes of GB18030, page 54936.
//
// The first byte runs from 0x81 to 0xFE, the second from 0x30 to 0x39, the third and the fourth
// again so: written in that mixed base they are plain numbers. The units that have no shorter
// sequence stand at the front of them in their order, the characters above U+FFFF from 0x90308130
// on, without a gap.
#pragma once

#include "tvutil2/platform/base/types.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace tvutil2::codepage {

class FourByteArea {
  public:
    static constexpr char32_t kNoCharacter = 0xFFFFFFFF;
    static constexpr std::uint32_t kNoNumber = 0xFFFFFFFF;

    /// `shorter` has, for each of the 65,536 units, its one or two bytes, or 0.
    explicit FourByteArea(const std::uint16_t* shorter);

    /// Whether these bytes begin a sequence of four.
    [[nodiscard]] static constexpr bool is_begun_by(BYTE first, BYTE second) {
        return first >= 0x81 && first <= 0xFE && second >= 0x30 && second <= 0x39;
    }

    /// The number of the sequence that four bytes are; kNoNumber when they are none.
    [[nodiscard]] static std::uint32_t number_of(const char* bytes) {
        const auto digit = [bytes](std::size_t i, std::uint32_t zero) {
            return static_cast<BYTE>(bytes[i]) - zero;
        };
        const std::uint32_t first = digit(0, 0x81);
        const std::uint32_t second = digit(1, 0x30);
        const std::uint32_t third = digit(2, 0x81);
        const std::uint32_t fourth = digit(3, 0x30);
        // Not one branch each: they are hardly ever out of range.
        const bool is_one = (static_cast<unsigned int>(first < 126) & (second < 10U) &
                             (third < 126U) & (fourth < 10U)) != 0;
        return is_one ? (first * 10 + second) * kHalf + third * 10 + fourth : kNoNumber;
    }
    /// The character of a sequence; kNoCharacter for kNoNumber and for one without a character.
    [[nodiscard]] char32_t character_of(std::uint32_t number) const {
        if (number < m_units.size()) return m_units[number];
        const std::uint32_t above = number - kFirstSupplementary;
        return above < 0x100000 ? 0x10000 + above : kNoCharacter;
    }

    /// character_of for the numbers below unit_count(), as a table for inner loops.
    [[nodiscard]] const char16_t* units() const { return m_units.data(); }
    [[nodiscard]] std::uint32_t unit_count() const {
        return static_cast<std::uint32_t>(m_units.size());
    }

    /// One, two or four bytes as they stand in memory, for each of the 65,536 units; 0 for a
    /// surrogate, and for U+0000, whose byte is 0.
    [[nodiscard]] const std::uint32_t* bytes_of_all() const { return m_bytes.data(); }
    /// The four bytes of a character from U+10000 to U+10FFFF.
    [[nodiscard]] static std::uint32_t bytes_above_16_bits(char32_t character) {
        return sequence_of(kFirstSupplementary + (character - 0x10000));
    }

  private:
    /// Sequences that share their first two bytes.
    static constexpr std::uint32_t kHalf = 1260;
    /// 0x90308130, the sequence of U+10000, as a number.
    static constexpr std::uint32_t kFirstSupplementary = 189000;

    // The first two bytes, and the last two, by their number.
    static constexpr auto kHalves = [] {
        std::array<std::uint16_t, kHalf> halves{};
        for (std::uint32_t i = 0; i < kHalf; ++i) {
            halves[i] = static_cast<std::uint16_t>((0x30 + i % 10) << 8U | (0x81 + i / 10));
        }
        return halves;
    }();

    static std::uint32_t sequence_of(std::uint32_t number) {
        const std::uint32_t last = kHalves[number % kHalf];
        return last << 16U | kHalves[number / kHalf];
    }

    std::vector<char16_t> m_units;
    std::vector<std::uint32_t> m_bytes;
};

}  // namespace tvutil2::codepage
