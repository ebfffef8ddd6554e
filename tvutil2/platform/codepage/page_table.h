// The mapping of one code page, both ways, in tables of our own.
//
// They are built from ICU's converter when a page is first used and kept for the life of the
// process: a conversion then is a look-up a character, without a converter object, a lock or an
// allocation.
#pragma once

#include "tvutil2/platform/codepage/catalogue.h"

#include <array>
#include <cstdint>
#include <vector>

struct UConverter;

namespace tvutil2::codepage {

class PageTable {
  public:
    /// A byte sequence without a character (a noncharacter of Unicode: no page maps to it).
    static constexpr char16_t kNoUnit = 0xFFFF;
    /// A unit that the page doesn't hold.
    static constexpr std::uint16_t kNoBytes = 0;

    /// The table of a page; null for a page that isn't in the catalogue, and for one whose
    /// converter this machine's ICU lacks. Safe from any thread.
    static const PageTable* of(UINT number);

    [[nodiscard]] bool is_lead(BYTE byte) const { return m_row_of_lead[byte] != 0; }
    [[nodiscard]] char16_t unit_of(BYTE byte) const { return m_single[byte]; }
    [[nodiscard]] char16_t unit_of(BYTE lead, BYTE trail) const {
        return m_double[(static_cast<std::size_t>(m_row_of_lead[lead] - 1) << 8U) | trail];
    }
    /// One byte, or two with the lead byte in the upper half; kNoBytes for none. Units below 0x80
    /// are their own byte and aren't looked up here.
    [[nodiscard]] std::uint16_t bytes_of(char16_t unit) const {
        return m_blocks[(static_cast<std::size_t>(m_block_of[unit >> 8U]) << 8U) | (unit & 0xFFU)];
    }
    [[nodiscard]] char16_t replacement() const { return m_replacement; }

  private:
    PageTable(const CatalogueRow& row, UConverter& converter);
    void add_lead(UConverter& converter, BYTE lead);
    std::uint16_t& entry_of(char16_t unit);
    void add_inverse(UConverter& converter, char16_t unit);

    char16_t m_replacement;
    std::array<char16_t, 256> m_single{};
    /// 1 and the number of the lead byte's row in m_double; 0 for bytes that are no lead bytes.
    std::array<std::uint8_t, 256> m_row_of_lead{};
    std::vector<char16_t> m_double;
    /// Block 0 is the empty one, shared by all that have no entry.
    std::array<std::uint16_t, 256> m_block_of{};
    std::vector<std::uint16_t> m_blocks;
};

}  // namespace tvutil2::codepage
