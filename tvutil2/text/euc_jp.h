// EUC-JP and Shift-JIS: the same rows and cells of JIS X 0208, numbered in two ways. In the header,
// since it is done for every character of a stream.
#pragma once

namespace tvutil2 {
namespace euc_jp {

inline constexpr unsigned char kBad = '.';
inline constexpr unsigned char kHalfWidth = 0x8E;
inline constexpr unsigned char kSupplement = 0x8F;

inline unsigned char byte_of(unsigned int value) {
    return static_cast<unsigned char>(value);
}

inline bool is_between(unsigned char byte, unsigned char first, unsigned char last) {
    return byte >= first && byte <= last;
}

inline unsigned int bad(unsigned char* bytes) {
    bytes[0] = kBad;
    return 1;
}

}  // namespace euc_jp

/// Bytes of EUC-JP, up to three, become those of Shift-JIS in the same place; their count, 1 or 2.
/// What can't be rewritten becomes ".". The third byte of a sequence of three is dropped.
inline unsigned int to_shift_jis(unsigned char* bytes) {
    using namespace euc_jp;
    const auto row = bytes[0];
    const auto cell = bytes[1];
    if (row <= 0x7E) return 1;
    if (row == kSupplement) return 2;
    if (row == kHalfWidth) {
        bytes[0] = cell;
        return 1;
    }
    if (!is_between(row, 0xA1, 0xFE)) return bad(bytes);
    // Two rows share a lead byte: the odd one lies in the lower half of the trail bytes, which
    // leave 0x7F out.
    bytes[0] = byte_of((row - 0x9FU) / 2 + (row > 0xDE ? 0xC0 : 0x80));
    if (row % 2 == 0) {
        bytes[1] = byte_of(cell - 2U);
    } else {
        bytes[1] = byte_of(cell + (cell > 0xDF ? 0xA0U : 0x9FU));
    }
    return 2;
}

/// One or two bytes of Shift-JIS, by `size`, become one or two of EUC-JP in the same place; their
/// count. What can't be rewritten becomes ".".
inline unsigned int to_euc_jp(unsigned char* bytes, unsigned int size) {
    using namespace euc_jp;
    const auto lead = bytes[0];
    if (size == 1) {
        if (lead < 0x7F) return 1;
        if (!is_between(lead, 0xA0, 0xDF)) return bad(bytes);
        bytes[1] = lead;
        bytes[0] = kHalfWidth;
        return 2;
    }
    if (size != 2) return bad(bytes);
    const auto trail = bytes[1];
    const bool is_double = is_between(lead, 0x81, 0x9F) || is_between(lead, 0xE0, 0xEF);
    if (!is_double || !is_between(trail, 0x40, 0xFC) || trail == 0x7F) return bad(bytes);
    const auto rows = byte_of((lead >= 0xE0 ? lead - 0x40U : lead) * 2U);
    if (trail >= 0x9F) {
        bytes[0] = byte_of(rows - 0x60U);
        bytes[1] = byte_of(trail + 2U);
    } else {
        bytes[0] = byte_of(rows - 0x61U);
        bytes[1] = byte_of(trail + (trail >= 0x80 ? 0x60U : 0x61U));
    }
    return 2;
}

}  // namespace tvutil2
