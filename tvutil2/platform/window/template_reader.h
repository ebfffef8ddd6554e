// The units and numbers of a dialog's or a menu's template, one after the other.
#pragma once

#include "tvutil2/platform/base/types.h"

#include <cstddef>
#include <cstring>
#include <span>
#include <string>

namespace tvutil2 {

/// Reads on until something is missing; from then on gives zeros.
class TemplateReader {
  public:
    explicit TemplateReader(std::span<const std::byte> bytes) : m_bytes(bytes) {}

    [[nodiscard]] bool is_whole() const { return m_is_whole; }

    template <class T>
    T number() {
        T value{};
        const auto part = take(sizeof value);
        if (!part.empty()) std::memcpy(&value, part.data(), sizeof value);
        return value;
    }
    std::u16string text() {
        std::u16string text;
        while (const auto unit = number<char16_t>()) text += unit;
        return text;
    }
    std::span<const std::byte> take(std::size_t size) {
        if (size > m_bytes.size() - m_at) {
            m_is_whole = false;
            m_at = m_bytes.size();
            return {};
        }
        m_at += size;
        return m_bytes.subspan(m_at - size, size);
    }
    /// On to a multiple of 4.
    void align() { take((4 - m_at % 4) % 4); }

  private:
    std::span<const std::byte> m_bytes;
    std::size_t m_at = 0;
    bool m_is_whole = true;
};

}  // namespace tvutil2
