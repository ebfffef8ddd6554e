#include "tvutil2/platform/codepage/page_table.h"

#include "tvutil2/platform/codepage/page_builder.h"

#include <mutex>
#include <new>

namespace tvutil2::codepage {

// The tables are never destroyed: other modules' static objects convert text after ours are gone.
constinit std::array<std::atomic<const PageTable*>, kSlots> PageTable::s_tables{};

PageTable::PageTable(const CatalogueRow& row)
    : m_number(row.number),
      m_replacement(row.replacement),
      m_leads{row.leads[0], row.leads[1]},
      m_units(256, kNoUnit),
      m_bytes(static_cast<std::uint16_t*>(std::calloc(0x10001, sizeof(std::uint16_t)))) {
    if (!m_bytes) throw std::bad_alloc();
}

const PageTable* PageTable::built(UINT number) {
    static std::recursive_mutex building;  // one page may be made of another
    const auto* const row = find_row(number);
    if (row == nullptr) return nullptr;
    const std::lock_guard guard(building);
    auto& slot = s_tables[slot_of(number)];
    if (const auto* const table = slot.load(std::memory_order_relaxed)) return table;
    const auto* const table = PageBuilder::build(*row).release();
    slot.store(table, std::memory_order_release);
    return table;
}

}  // namespace tvutil2::codepage
