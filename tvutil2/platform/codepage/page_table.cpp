#include "tvutil2/platform/codepage/page_table.h"

#include <unicode/ucnv.h>

#include <atomic>
#include <memory>
#include <mutex>

namespace tvutil2::codepage {
namespace {

struct CloseConverter {
    void operator()(UConverter* converter) const { ucnv_close(converter); }
};
using ConverterOwner = std::unique_ptr<UConverter, CloseConverter>;

// A converter that refuses what it has no exact mapping for.
ConverterOwner open_converter(const char* name) {
    UErrorCode status = U_ZERO_ERROR;
    ConverterOwner converter(ucnv_open(name, &status));
    if (U_FAILURE(status)) return nullptr;
    ucnv_setToUCallBack(converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr,
                        &status);
    ucnv_setFromUCallBack(converter.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr,
                          &status);
    ucnv_setFallback(converter.get(), 0);
    return U_SUCCESS(status) ? std::move(converter) : nullptr;
}

// The one unit that these bytes stand for.
char16_t converted(UConverter& converter, const char* bytes, int size) {
    char16_t units[4];
    UErrorCode status = U_ZERO_ERROR;
    const auto count = ucnv_toUChars(&converter, units, 4, bytes, size, &status);
    return U_SUCCESS(status) && count == 1 ? units[0] : PageTable::kNoUnit;
}

}  // namespace

const PageTable* PageTable::of(UINT number) {
    // Never destroyed: other modules' static objects convert text after ours are gone.
    static auto* const tables = new std::vector<std::atomic<const PageTable*>>(catalogue_size());
    static std::mutex building;
    const auto* const row = find_row(number);
    if (row == nullptr) return nullptr;
    auto& slot = (*tables)[row_index(*row)];
    if (const auto* const table = slot.load(std::memory_order_acquire)) return table;

    const std::lock_guard guard(building);
    if (const auto* const table = slot.load(std::memory_order_relaxed)) return table;
    const auto converter = open_converter(row->converter);
    if (!converter) return nullptr;
    const auto* const table = new PageTable(*row, *converter);
    slot.store(table, std::memory_order_release);
    return table;
}

PageTable::PageTable(const CatalogueRow& row, UConverter& converter)
    : m_replacement(row.replacement), m_blocks(256, kNoBytes) {
    for (unsigned int byte = 0; byte < 256; ++byte) {
        // By definition of the catalogue, whatever a converter does with control characters.
        if (byte < 0x80) {
            m_single[byte] = static_cast<char16_t>(byte);
            continue;
        }
        const char single = static_cast<char>(byte);
        m_single[byte] = converted(converter, &single, 1);
    }
    for (const auto range : row.leads) {
        if (range.first == 0) continue;
        for (unsigned int lead = range.first; lead <= range.last; ++lead) {
            add_lead(converter, static_cast<BYTE>(lead));
        }
    }
    for (const auto unit : m_single) add_inverse(converter, unit);
    for (const auto unit : m_double) add_inverse(converter, unit);
    for (const auto& difference : differences()) {
        if (difference.number != row.number) continue;
        if (m_single[difference.byte] != kNoUnit) entry_of(m_single[difference.byte]) = kNoBytes;
        m_single[difference.byte] = difference.unit;
        entry_of(difference.unit) = difference.byte;
    }
}

void PageTable::add_lead(UConverter& converter, BYTE lead) {
    // A row for each lead byte: at most 126 of them, so that the number fits a byte.
    m_double.resize(m_double.size() + 256, kNoUnit);
    m_row_of_lead[lead] = static_cast<std::uint8_t>(m_double.size() / 256);
    m_single[lead] = kNoUnit;
    char16_t* const units = &m_double[m_double.size() - 256];
    for (unsigned int trail = 0x31; trail < 0xFF; ++trail) {
        const char pair[] = {static_cast<char>(lead), static_cast<char>(trail)};
        units[trail] = converted(converter, pair, 2);
    }
}

// The way back of a unit, to be written.
std::uint16_t& PageTable::entry_of(char16_t unit) {
    auto& block = m_block_of[unit >> 8U];
    if (block == 0) {
        block = static_cast<std::uint16_t>(m_blocks.size() / 256);
        m_blocks.resize(m_blocks.size() + 256, kNoBytes);
    }
    return m_blocks[static_cast<std::size_t>(block) * 256 + (unit & 0xFFU)];
}

// What the converter says of the unit, since several byte sequences can stand for one character and
// only one of them is the way back.
void PageTable::add_inverse(UConverter& converter, char16_t unit) {
    if (unit < 0x80 || unit == kNoUnit) return;
    char bytes[8];
    UErrorCode status = U_ZERO_ERROR;
    const auto count = ucnv_fromUChars(&converter, bytes, 8, &unit, 1, &status);
    if (U_FAILURE(status) || count < 1 || count > 2) return;
    const auto byte = [&bytes](int i) {
        return static_cast<unsigned int>(static_cast<BYTE>(bytes[i]));
    };
    entry_of(unit) = static_cast<std::uint16_t>(count == 1 ? byte(0) : byte(0) << 8U | byte(1));
}

}  // namespace tvutil2::codepage
