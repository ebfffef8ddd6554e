#include "tvutil2/platform/codepage/table_coding.h"

#include "tvutil2/platform/codepage/utf8_coding.h"

namespace tvutil2::codepage {

std::optional<FourByteFront> four_byte_front(const PageTable& page, std::string_view bytes) {
    if (page.four_bytes() == nullptr || bytes.size() < 2) return std::nullopt;
    const auto byte = [bytes](std::size_t i) { return static_cast<BYTE>(bytes[i]); };
    if (!FourByteArea::is_begun_by(byte(0), byte(1))) return std::nullopt;
    if (bytes.size() < 4 || !FourByteArea::is_begun_by(byte(2), byte(3))) {
        return FourByteFront{FourByteArea::kNoCharacter, 1};
    }
    return FourByteFront{page.four_bytes()->character_of(byte(0), byte(1), byte(2), byte(3)), 4};
}

FourByteSequence four_bytes_for(const PageTable& page, std::u16string_view units) {
    if (page.four_bytes() == nullptr) return {0, 0};
    const char32_t c = units[0];
    if (is_high_surrogate(c) && units.size() > 1 && is_low_surrogate(units[1])) {
        const char32_t whole = 0x10000 + ((c & 0x3FFU) << 10U) + (units[1] & 0x3FFU);
        return {page.four_bytes()->bytes_of(whole), 2};
    }
    return {page.four_bytes()->bytes_of(c), 1};
}

}  // namespace tvutil2::codepage
