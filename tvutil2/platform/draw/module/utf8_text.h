// Text in UTF-8, and where each 16-bit unit is in it. What would end a line or the text is a blank.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tvutil2 {

class Utf8Text {
  public:
    explicit Utf8Text(std::u16string_view text);

    [[nodiscard]] const std::string& bytes() const { return m_bytes; }
    [[nodiscard]] std::size_t units() const { return m_units; }
    [[nodiscard]] int byte_of(std::size_t unit) const;
    [[nodiscard]] std::size_t unit_of(int byte) const;

  private:
    std::size_t add(std::u16string_view text, std::size_t i);

    std::string m_bytes;
    std::vector<int> m_offsets;  // none while every unit is one byte
    std::size_t m_units;
};

}  // namespace tvutil2
