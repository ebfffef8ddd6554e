// Where formatted text grows: on the stack as long as it is short, so that the text it ends up in
// is allocated once and to measure, or not at all when it has the room.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

namespace tvutil2 {

class FormatOutput {
  public:
    FormatOutput() = default;
    FormatOutput(const FormatOutput&) = delete;
    FormatOutput& operator=(const FormatOutput&) = delete;

    void put(char16_t unit) { *take(1) = unit; }
    void put(std::u16string_view text) {
        std::char_traits<char16_t>::copy(take(text.size()), text.data(), text.size());
    }
    void put(std::size_t count, char16_t unit) { std::fill_n(take(count), count, unit); }

    /// Room for so many units, which count as text at once.
    char16_t* take(std::size_t count) {
        if (static_cast<std::size_t>(m_end - m_at) < count) grow(count);
        auto* const taken = m_at;
        m_at += count;
        return taken;
    }

    [[nodiscard]] std::u16string_view view() const { return {m_begin, size()}; }

  private:
    [[nodiscard]] std::size_t size() const { return static_cast<std::size_t>(m_at - m_begin); }

    void grow(std::size_t count) {
        const auto kept = size();
        const auto room = 2 * (kept + count);
        if (m_long.empty()) m_long.assign(m_begin, kept);
        m_long.resize(room);
        m_begin = m_long.data();
        m_at = m_begin + kept;
        m_end = m_begin + room;
    }

    char16_t m_short[400];
    std::u16string m_long;
    char16_t* m_begin = m_short;
    char16_t* m_at = m_short;
    char16_t* m_end = m_short + std::size(m_short);
};

}  // namespace tvutil2
