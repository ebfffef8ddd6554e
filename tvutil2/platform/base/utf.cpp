#include "tvutil2/platform/base/utf.h"

#include <cstdint>

namespace tvutil2 {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool is_high_surrogate(char32_t c) {
    return (c & 0xFFFFFC00) == 0xD800;
}
bool is_low_surrogate(char32_t c) {
    return (c & 0xFFFFFC00) == 0xDC00;
}

void put_utf8(char32_t c, std::string& out) {
    const auto put = [&out](char32_t byte) { out.push_back(static_cast<char>(byte)); };
    if (c < 0x80) {
        put(c);
    } else if (c < 0x800) {
        put(0xC0 | (c >> 6));
        put(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        put(0xE0 | (c >> 12));
        put(0x80 | ((c >> 6) & 0x3F));
        put(0x80 | (c & 0x3F));
    } else {
        put(0xF0 | (c >> 18));
        put(0x80 | ((c >> 12) & 0x3F));
        put(0x80 | ((c >> 6) & 0x3F));
        put(0x80 | (c & 0x3F));
    }
}

void put_utf16(char32_t c, std::u16string& out) {
    if (c < 0x10000) {
        out.push_back(static_cast<char16_t>(c));
    } else {
        out.push_back(static_cast<char16_t>(0xD7C0 + (c >> 10)));
        out.push_back(static_cast<char16_t>(0xDC00 | (c & 0x3FF)));
    }
}

// The bytes of the sequence at the front of a non-empty text and its character; no bytes when the
// front isn't a valid sequence.
struct Sequence {
    std::size_t size = 0;
    char32_t character = 0;
};

Sequence front_sequence(std::string_view text) {
    const auto byte = [&text](std::size_t i) -> char32_t {
        return static_cast<std::uint8_t>(text[i]);
    };
    const char32_t lead = byte(0);
    if (lead < 0x80) return {1, lead};
    const std::size_t size = lead < 0xC2   ? 0
                             : lead < 0xE0 ? 2
                             : lead < 0xF0 ? 3
                             : lead < 0xF5 ? 4
                                           : 0;
    if (size == 0 || text.size() < size) return {};
    char32_t c = lead & (0x7FU >> size);
    for (std::size_t i = 1; i < size; ++i) {
        if ((byte(i) & 0xC0) != 0x80) return {};
        c = (c << 6) | (byte(i) & 0x3F);
    }
    const char32_t smallest = size == 2 ? 0x80 : size == 3 ? 0x800 : 0x10000;
    if (c < smallest || c > 0x10FFFF || (c >= 0xD800 && c < 0xE000)) return {};
    return {size, c};
}

// False as soon as `on_lone` says that a lone surrogate ends it.
template <class OnLone>
bool encode(std::u16string_view text, std::string& out, OnLone on_lone) {
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t c = text[i];
        if (is_high_surrogate(c) && i + 1 < text.size() && is_low_surrogate(text[i + 1])) {
            c = 0x10000 + ((c & 0x3FF) << 10) + (text[++i] & 0x3FFU);
        } else if (is_high_surrogate(c) || is_low_surrogate(c)) {
            if (!on_lone()) return false;
            c = kReplacement;
        }
        put_utf8(c, out);
    }
    return true;
}

template <class OnBad>
bool decode(std::string_view text, std::u16string& out, OnBad on_bad) {
    out.reserve(text.size());
    while (!text.empty()) {
        auto [size, c] = front_sequence(text);
        if (size == 0) {
            if (!on_bad()) return false;
            size = 1;
            c = kReplacement;
        }
        put_utf16(c, out);
        text.remove_prefix(size);
    }
    return true;
}

}  // namespace

std::optional<std::string> to_utf8(std::u16string_view text) {
    std::string out;
    if (!encode(text, out, [] { return false; })) return std::nullopt;
    return out;
}

std::string to_utf8_lossy(std::u16string_view text) {
    std::string out;
    encode(text, out, [] { return true; });
    return out;
}

std::optional<std::u16string> to_utf16(std::string_view text) {
    std::u16string out;
    if (!decode(text, out, [] { return false; })) return std::nullopt;
    return out;
}

std::u16string to_utf16_lossy(std::string_view text) {
    std::u16string out;
    decode(text, out, [] { return true; });
    return out;
}

}  // namespace tvutil2
