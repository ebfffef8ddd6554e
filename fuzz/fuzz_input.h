// From the bytes of a fuzz run to what the functions take.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

namespace fuzz {

/// The bytes as 16-bit text, host byte order; an odd last byte is dropped.
inline std::u16string wide_text(const std::uint8_t* data, std::size_t size) {
    std::u16string text(size / 2, u'\0');
    if (!text.empty()) std::memcpy(text.data(), data, text.size() * 2);
    return text;
}

/// Each byte as one unit: lets seeds and dictionaries be plain ASCII.
inline std::u16string widened(std::string_view bytes) {
    std::u16string text;
    for (const char c : bytes) text.push_back(static_cast<unsigned char>(c));
    return text;
}

/// A law of the library that doesn't hold is a finding.
inline void require(bool holds) {
    if (!holds) std::abort();
}

}  // namespace fuzz
