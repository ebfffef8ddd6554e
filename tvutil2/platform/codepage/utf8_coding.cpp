#include "tvutil2/platform/codepage/utf8_coding.h"

namespace tvutil2::codepage {
namespace {

// What the lead byte says: how many bytes follow it, and between which bounds the first of them
// lies (which keeps out overlong forms, surrogates and all above U+10FFFF).
struct Lead {
    unsigned int tails;
    unsigned int low;
    unsigned int high;
};

Lead lead_of(unsigned int byte) {
    if (byte < 0xC2 || byte > 0xF4) return {0, 0, 0};
    if (byte < 0xE0) return {1, 0x80, 0xBF};
    if (byte == 0xE0) return {2, 0xA0, 0xBF};
    if (byte == 0xED) return {2, 0x80, 0x9F};
    if (byte < 0xF0) return {2, 0x80, 0xBF};
    if (byte == 0xF0) return {3, 0x90, 0xBF};
    if (byte == 0xF4) return {3, 0x80, 0x8F};
    return {3, 0x80, 0xBF};
}

}  // namespace

Utf8Front utf8_front(std::string_view bytes) {
    const unsigned int first = static_cast<unsigned char>(bytes[0]);
    if (first < 0x80) return {1, first, true};
    auto [tails, low, high] = lead_of(first);
    if (tails == 0) return {1, 0, false};
    char32_t c = first & (0x3FU >> tails);
    for (std::size_t i = 1; i <= tails; ++i) {
        const unsigned int byte = i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : 0;
        if (byte < low || byte > high) return {i, 0, false};
        c = (c << 6U) | (byte & 0x3F);
        low = 0x80;
        high = 0xBF;
    }
    return {tails + 1, c, true};
}

}  // namespace tvutil2::codepage
