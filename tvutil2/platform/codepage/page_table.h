// The mapping of one code page, both ways, in tables of our own.
//
// They are built when a page is first used and kept for the life of the process: a conversion then
// is a look-up a character, without a converter object, a lock or an allocation.
#pragma once

#include "tvutil2/platform/codepage/catalogue.h"
#include "tvutil2/platform/codepage/four_byte_area.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>

namespace tvutil2::codepage {

class PageBuilder;

class PageTable {
  public:
    /// A byte sequence without a character (a noncharacter of Unicode: no page maps to it).
    static constexpr char16_t kNoUnit = 0xFFFF;
    /// A unit that the page doesn't hold.
    static constexpr std::uint16_t kNoBytes = 0;

    /// The table of a page; null for a page that isn't in the catalogue, and for one whose
    /// converter this machine's ICU lacks. A few instructions once the page has been used. Safe
    /// from any thread.
    static const PageTable* of(UINT number) {
        const auto* const table = s_tables[slot_of(number)].load(std::memory_order_acquire);
        return table != nullptr && table->m_number == number ? table : built(number);
    }

    PageTable(const PageTable&) = delete;
    PageTable& operator=(const PageTable&) = delete;

    [[nodiscard]] UINT number() const { return m_number; }
    [[nodiscard]] bool has_leads() const { return m_units.size() > 256; }
    [[nodiscard]] const std::array<LeadRange, 2>& leads() const { return m_leads; }
    [[nodiscard]] bool is_lead(BYTE byte) const { return m_row_of_lead[byte] != 0; }
    /// The unit of a byte by itself; kNoUnit for a lead byte.
    [[nodiscard]] char16_t unit_of(BYTE byte) const { return m_units[byte]; }
    /// The unit of a lead byte and what follows it.
    [[nodiscard]] char16_t unit_of(BYTE lead, BYTE trail) const {
        return m_units[static_cast<std::size_t>(m_row_of_lead[lead]) << 8U | trail];
    }
    /// The 256 units of single bytes with the replacement where there is none.
    [[nodiscard]] const char16_t* lenient_units() const { return m_lenient.data(); }
    /// Every byte is the unit of its value.
    [[nodiscard]] bool is_latin1() const { return m_is_latin1; }
    /// One byte, or two with the lead byte in the lower half, as they stand in memory; kNoBytes for
    /// none, and for U+0000, whose byte is 0.
    [[nodiscard]] std::uint16_t bytes_of(char16_t unit) const { return m_bytes[unit]; }
    /// bytes_of as a table of 65,536, for inner loops, whose writes would make them look the
    /// table's members up again and again. Two bytes behind it may be read.
    [[nodiscard]] const std::uint16_t* bytes() const { return m_bytes.get(); }
    /// unit_of in the same way: the units of single bytes, and behind them a row of 256 for each
    /// lead byte; and the number of a lead byte's row, 0 for other bytes.
    [[nodiscard]] const char16_t* rows() const { return m_units.data(); }
    [[nodiscard]] std::size_t row_units() const { return m_units.size(); }
    [[nodiscard]] const std::uint8_t* row_numbers() const { return m_row_of_lead.data(); }
    /// The sequences of four bytes of GB18030; null for every other page.
    [[nodiscard]] const FourByteArea* four_bytes() const { return m_four_bytes.get(); }
    [[nodiscard]] char16_t replacement() const { return m_replacement; }

  private:
    friend class PageBuilder;
    explicit PageTable(const CatalogueRow& row);
    static const PageTable* built(UINT number);

    static std::array<std::atomic<const PageTable*>, kSlots> s_tables;

    UINT m_number;
    char16_t m_replacement;
    bool m_is_latin1 = false;
    std::array<LeadRange, 2> m_leads;
    std::vector<char16_t> m_units;
    std::array<char16_t, 256> m_lenient{};
    std::array<std::uint8_t, 256> m_row_of_lead{};
    struct Release {
        void operator()(std::uint16_t* table) const { std::free(table); }
    };
    /// Memory that comes as zeros: what a page never writes to costs nothing.
    std::unique_ptr<std::uint16_t[], Release> m_bytes;
    std::unique_ptr<const FourByteArea> m_four_bytes;
};

}  // namespace tvutil2::codepage
