// The sequences of four bytes of GB18030, page 54936.
//
// The first byte runs from 0x81 to 0xFE, the second from 0x30 to 0x39, the third and the fourth
// again so: written in that mixed base they are plain numbers. The units that have no shorter
// sequence stand at the front of them in their order, the characters above U+FFFF from 0x90308130
// on, without a gap.
#pragma once

#include "tvutil2/platform/base/types.h"

#include <array>
#include <cstdint>
#include <vector>

namespace tvutil2::codepage {

class FourByteArea {
  public:
    static constexpr char32_t kNoCharacter = 0xFFFFFFFF;

    /// `shorter` has, for each of the 65,536 units, its one or two bytes, or 0.
    explicit FourByteArea(const std::uint16_t* shorter);

    /// Whether these bytes begin a sequence of four.
    [[nodiscard]] static constexpr bool is_begun_by(BYTE first, BYTE second) {
        return first >= 0x81 && first <= 0xFE && second >= 0x30 && second <= 0x39;
    }

    /// The character of a sequence; kNoCharacter for an ill-formed one and for one without a
    /// character.
    [[nodiscard]] char32_t character_of(BYTE first, BYTE second, BYTE third, BYTE fourth) const;

    /// The sequence of a character, its first byte in the highest bits; 0 for a surrogate, for a
    /// unit that has a shorter sequence and for what isn't Unicode.
    [[nodiscard]] std::uint32_t bytes_of(char32_t character) const;

  private:
    std::vector<char16_t> m_units;
    /// The units that are here, a bit each, and how many there are before each 64 of them.
    std::array<std::uint64_t, 1024> m_is_here{};
    std::array<std::uint16_t, 1024> m_before{};
};

}  // namespace tvutil2::codepage
