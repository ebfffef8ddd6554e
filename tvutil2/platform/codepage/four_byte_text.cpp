#include "tvutil2/platform/codepage/four_byte_text.h"

#include "tvutil2/platform/codepage/utf8_coding.h"

#include <cstring>

namespace tvutil2::codepage {
namespace {

// So many characters without four bytes in a row are text of another kind.
constexpr std::size_t kCalm = 64;

// The character at the front of a text of at least four bytes: all its lengths are looked at in one
// way, since a branch that can't be foretold costs more than both of its sides.
struct Front {
    char32_t character;
    unsigned int size;
};

inline Front front_of(const PageTable& page, const FourByteArea& area, const char* from) {
    const unsigned int first = static_cast<BYTE>(from[0]);
    const unsigned int second = static_cast<BYTE>(from[1]);
    const bool is_lead = first - 0x81 < 126;
    const bool is_long = static_cast<unsigned int>(is_lead) & (second - 0x30 < 10 ? 1U : 0U);
    const unsigned int row = page.row_numbers()[first];
    const char16_t unit = page.rows()[row << 8U | (is_lead ? second : first)];
    const char32_t short_one = unit == PageTable::kNoUnit ? FourByteArea::kNoCharacter : unit;
    const char32_t long_one = area.character_of(FourByteArea::number_of(from));
    return {is_long ? long_one : short_one, is_long ? 4U : is_lead ? 2U : 1U};
}

}  // namespace

Progress put_four_byte_units(const PageTable& page, std::string_view bytes, char16_t* to,
                             std::size_t room) {
    const FourByteArea& area = *page.four_bytes();
    const char* from = bytes.data();
    const char* const end = from + bytes.size();
    char16_t* out = to;
    char16_t* const out_end = to + room;
    for (std::size_t calm = 0; calm < kCalm && end - from >= 4 && out_end - out >= 2;) {
        const auto [character, size] = front_of(page, area, from);
        if (character >= 0x10000) {
            if (character == FourByteArea::kNoCharacter) break;
            out[0] = static_cast<char16_t>(0xD7C0 + (character >> 10U));
            out[1] = static_cast<char16_t>(0xDC00 | (character & 0x3FFU));
            out += 2;
        } else {
            *out++ = static_cast<char16_t>(character);
        }
        from += size;
        calm = size == 4 ? 0 : calm + 1;
    }
    return {static_cast<std::size_t>(from - bytes.data()), static_cast<std::size_t>(out - to)};
}

namespace {

template <bool counts>
Progress to_four_bytes(const PageTable& page, std::u16string_view units, char* to,
                       std::size_t room) {
    const std::uint32_t* const bytes_of = page.four_bytes()->bytes_of_all();
    const char16_t* from = units.data();
    const char16_t* const end = from + units.size();
    std::size_t made = 0;
    for (std::size_t calm = 0; calm < kCalm && end - from >= 2 && room - made >= 4;) {
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

}  // namespace

Progress put_four_byte_bytes(const PageTable& page, std::u16string_view units, char* to,
                             std::size_t room) {
    return to_four_bytes<false>(page, units, to, room);
}

Progress count_four_byte_bytes(const PageTable& page, std::u16string_view units) {
    return to_four_bytes<true>(page, units, nullptr, SIZE_MAX);
}

}  // namespace tvutil2::codepage
