#include "tvutil2/platform/draw/module/utf8_text.h"

#include <glib.h>

#include <algorithm>
#include <array>

namespace tvutil2 {

Utf8Text::Utf8Text(std::u16string_view text) : m_units(text.size()) {
    m_bytes.reserve(text.size() + text.size() / 2);
    for (std::size_t i = 0; i < text.size();) {
        const auto unit = text[i];
        if (unit >= u' ' && unit < 0x80 && m_offsets.empty()) {
            m_bytes += static_cast<char>(unit);
            ++i;
        } else {
            i += add(text, i);
        }
    }
}

int Utf8Text::byte_of(std::size_t unit) const {
    if (unit >= m_units) return static_cast<int>(m_bytes.size());
    return m_offsets.empty() ? static_cast<int>(unit) : m_offsets[unit];
}

std::size_t Utf8Text::unit_of(int byte) const {
    if (m_offsets.empty()) return std::min(static_cast<std::size_t>(byte), m_units);
    return static_cast<std::size_t>(std::ranges::lower_bound(m_offsets, byte) - m_offsets.begin());
}

std::size_t Utf8Text::add(std::u16string_view text, std::size_t i) {
    char32_t code = text[i];
    const bool is_pair = code >= 0xD800 && code < 0xDC00 && i + 1 < text.size() &&
                         text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000;
    if (is_pair) {
        code = 0x10000 + ((code - 0xD800) << 10U) + (text[i + 1] - 0xDC00U);
    } else if (code >= 0xD800 && code < 0xE000) {
        code = 0xFFFD;
    } else if (code == 0 || code == u'\n' || code == u'\r' || code == 0x2028 || code == 0x2029) {
        code = u' ';
    }
    if (code >= 0x80 && m_offsets.empty()) {
        m_offsets.reserve(text.size());
        for (std::size_t k = 0; k < i; ++k) m_offsets.push_back(static_cast<int>(k));
    }
    const auto start = static_cast<int>(m_bytes.size());
    if (code >= 0x80 || !m_offsets.empty())
        m_offsets.insert(m_offsets.end(), is_pair ? 2 : 1, start);
    std::array<char, 6> bytes{};
    const auto size = g_unichar_to_utf8(code, bytes.data());
    m_bytes.append(bytes.data(), static_cast<std::size_t>(size));
    return is_pair ? 2 : 1;
}

}  // namespace tvutil2
