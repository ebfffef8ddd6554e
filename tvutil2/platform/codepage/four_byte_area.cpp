#include "tvutil2/platform/codepage/four_byte_area.h"

namespace tvutil2::codepage {
namespace {

// The units without a shorter sequence.
constexpr std::size_t kUnits = 39420;

// The edition of 2000 gave U+1E3F four bytes and a private character the two bytes that are meant
// for it. The one of 2005 exchanged the two and moved nothing else.
constexpr std::uint32_t kMoved = 0x1E3F;
constexpr std::uint32_t kExchanged = 0xE7C7;

}  // namespace

FourByteArea::FourByteArea(const std::uint16_t* shorter) : m_bytes(shorter, shorter + 0x10000) {
    m_units.reserve(kUnits);
    for (std::uint32_t place = 0x80; place < 0x10000; ++place) {
        const bool is_surrogate = place >= 0xD800 && place <= 0xDFFF;
        const bool is_here = place == kMoved || shorter[place] == 0;
        if (is_surrogate || !is_here || place == kExchanged) continue;
        const auto unit = static_cast<char16_t>(place == kMoved ? kExchanged : place);
        const auto number = static_cast<std::uint32_t>(m_units.size());
        if (shorter[unit] == 0) m_bytes[unit] = sequence_of(number);
        m_units.push_back(unit);
    }
}

}  // namespace tvutil2::codepage
