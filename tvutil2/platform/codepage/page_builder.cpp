#include "tvutil2/platform/codepage/page_builder.h"

#include <unicode/ucnv.h>

#include <cstddef>
#include <iterator>

namespace tvutil2::codepage {
namespace {

struct CloseConverter {
    void operator()(UConverter* converter) const { ucnv_close(converter); }
};
using ConverterOwner = std::unique_ptr<UConverter, CloseConverter>;

// A converter that passes over what it has no exact mapping for.
ConverterOwner open_converter(const char* name) {
    UErrorCode status = U_ZERO_ERROR;
    ConverterOwner converter(ucnv_open(name, &status));
    if (U_FAILURE(status)) return nullptr;
    ucnv_setToUCallBack(converter.get(), UCNV_TO_U_CALLBACK_SKIP, nullptr, nullptr, nullptr,
                        &status);
    ucnv_setFromUCallBack(converter.get(), UCNV_FROM_U_CALLBACK_SKIP, nullptr, nullptr, nullptr,
                          &status);
    ucnv_setFallback(converter.get(), 0);
    return U_SUCCESS(status) ? std::move(converter) : nullptr;
}

// The units of the sequences of one lead byte, or of single bytes: one call for all, since a call
// costs as much as a hundred characters.
class Row {
  public:
    /// The sequences are `lead` (when it isn't 0) and each byte from `first` to 0xFE, or to 0xFF
    /// without a lead byte.
    Row(UConverter& converter, BYTE lead, unsigned int first) {
        m_units.fill(PageTable::kNoUnit);
        // A line feed behind each sequence takes a converter out of one that it finds too short.
        char bytes[256 * 3];
        std::int32_t size = 0;
        for (unsigned int byte = first; byte <= (lead == 0 ? 0xFF : 0xFE); ++byte) {
            m_position[static_cast<std::size_t>(size)] = static_cast<std::uint8_t>(byte);
            if (lead != 0) bytes[size++] = static_cast<char>(lead);
            bytes[size++] = static_cast<char>(byte);
            bytes[size++] = '\n';
        }
        char16_t units[256 * 3];
        std::int32_t offsets[256 * 3];
        const char* from = bytes;
        char16_t* to = units;
        UErrorCode status = U_ZERO_ERROR;
        ucnv_toUnicode(&converter, &to, std::end(units), &from, bytes + size, offsets, 1, &status);
        if (U_SUCCESS(status)) keep(units, offsets, to - units);
    }
    [[nodiscard]] char16_t unit_of(unsigned int byte) const { return m_units[byte]; }

  private:
    // A unit counts when it is the only one of its sequence and stems from the whole of it.
    void keep(const char16_t* units, const std::int32_t* offsets, std::ptrdiff_t count) {
        for (std::ptrdiff_t i = 0; i + 1 < count; ++i) {
            const auto byte = m_position[static_cast<std::size_t>(offsets[i])];
            const bool is_whole = (i == 0 || units[i - 1] == '\n') && units[i + 1] == '\n';
            if (byte != 0 && is_whole) m_units[byte] = units[i];
        }
    }

    std::array<char16_t, 256> m_units;
    /// The last byte of the sequence that begins at a place in the text; 0 where none does.
    std::array<std::uint8_t, std::size_t{256} * 3> m_position{};
};

// Shift-JIS has the rows of the standard in pairs: two rows of EUC for each lead byte.
struct ShiftJis {
    BYTE lead;
    BYTE trail;
};
ShiftJis shift_jis_of(unsigned int lead, unsigned int trail) {
    const unsigned int half = (lead - 0xA1) / 2;
    const bool is_second = lead % 2 == 0;
    const unsigned int column = trail - 0xA1;
    return {static_cast<BYTE>(half < 31 ? 0x81 + half : 0xC1 + half),
            static_cast<BYTE>(is_second ? 0x9F + column : 0x40 + column + (column >= 63 ? 1 : 0))};
}

bool is_private(char16_t unit) {
    return unit >= 0xE000 && unit <= 0xF8FF;
}

constexpr std::uint16_t pair_of(unsigned int lead, unsigned int trail) {
    return static_cast<std::uint16_t>(trail << 8U | lead);
}

}  // namespace

PageBuilder::PageBuilder(const CatalogueRow& row) : m_row(row), m_table(new PageTable(row)) {}

std::unique_ptr<const PageTable> PageBuilder::build(const CatalogueRow& row) {
    PageBuilder builder(row);
    return builder.fill() ? std::move(builder.m_table) : nullptr;
}

bool PageBuilder::fill() {
    // By definition of the catalogue, whatever a converter does with control characters.
    for (char16_t unit = 0; unit < 0x80; ++unit) {
        m_table->m_units[unit] = unit;
        entry_of(unit) = unit;
    }
    add_leads();
    switch (m_row.kind) {
        case PageKind::text:
            add_upper_half();
            break;
        case PageKind::euc_jp:
            if (!add_euc_jp()) return false;
            break;
        default:
            if (!add_converter()) return false;
    }
    add_differences();
    m_table->m_is_latin1 = true;
    for (unsigned int byte = 0; byte < 0x100; ++byte) {
        const auto unit = m_table->m_units[byte];
        m_table->m_lenient[byte] = unit == PageTable::kNoUnit ? m_row.replacement : unit;
        if (unit != byte) m_table->m_is_latin1 = false;
    }
    if (m_row.kind == PageKind::four_byte) add_four_bytes();
    return true;
}

void PageBuilder::add_leads() {
    unsigned int rows = 0;
    for (const auto range : m_row.leads) {
        if (range.first == 0) continue;
        // At most 126 of them, so that the number fits a byte.
        for (unsigned int lead = range.first; lead <= range.last; ++lead) {
            m_table->m_row_of_lead[lead] = static_cast<std::uint8_t>(++rows);
        }
    }
    m_table->m_units.resize((std::size_t{rows} + 1) * 256, PageTable::kNoUnit);
}

void PageBuilder::put_pair(BYTE lead, BYTE trail, char16_t unit) {
    m_table->m_units[std::size_t{m_table->m_row_of_lead[lead]} * 256 + trail] = unit;
}

bool PageBuilder::add_converter() {
    const auto converter = open_converter(m_row.converter);
    if (!converter) return false;
    const Row singles(*converter, 0, 0x80);
    for (unsigned int byte = 0x80; byte < 0x100; ++byte) {
        if (!m_table->is_lead(static_cast<BYTE>(byte))) {
            m_table->m_units[byte] = singles.unit_of(byte);
        }
    }
    const bool is_standard = m_row.kind == PageKind::standard;
    const unsigned int first_trail = is_standard ? 0xA1 : 0x40;
    for (unsigned int lead = 0x81; lead < 0xFF; ++lead) {
        if (!m_table->is_lead(static_cast<BYTE>(lead))) continue;
        const Row row(*converter, static_cast<BYTE>(lead), first_trail);
        for (unsigned int trail = first_trail; trail < 0xFF; ++trail) {
            const auto unit = row.unit_of(trail);
            if (is_standard && is_private(unit)) continue;
            put_pair(static_cast<BYTE>(lead), static_cast<BYTE>(trail), unit);
        }
    }
    add_inverse_from(*converter);
    return true;
}

// What the converter says of the units that the page has, since several sequences can stand for one
// character and only one of them is the way back.
void PageBuilder::add_inverse_from(UConverter& converter) {
    std::vector<bool> is_held(0x10000, false);
    for (const auto unit : m_table->m_units) is_held[unit] = true;
    for (unsigned int first = 0; first < 0x10000; first += 256) {
        char16_t units[256];
        std::size_t count = 0;
        for (unsigned int unit = std::max(first, 0x80U); unit < first + 256; ++unit) {
            if (is_held[unit] && unit != PageTable::kNoUnit) {
                units[count++] = static_cast<char16_t>(unit);
            }
        }
        if (count == 0) continue;
        char bytes[256 * 4];
        std::int32_t offsets[256 * 4];
        const char16_t* from = units;
        char* to = bytes;
        UErrorCode status = U_ZERO_ERROR;
        ucnv_fromUnicode(&converter, &to, bytes + sizeof bytes, &from, units + count, offsets, 1,
                         &status);
        if (U_FAILURE(status)) continue;
        for (std::ptrdiff_t i = 0, end = to - bytes; i < end;) {
            const auto start = i;
            while (i < end && offsets[i] == offsets[start]) ++i;
            if (i - start > 2) continue;
            const auto lead = static_cast<BYTE>(bytes[start]);
            const auto trail = i - start == 2 ? static_cast<BYTE>(bytes[start + 1]) : BYTE{0};
            entry_of(units[offsets[start]]) = pair_of(lead, trail);
        }
    }
}

// EUC-JP is page 932 under the numbers of the standard's rows and columns, as far as they go, and
// half-width katakana behind 0x8E. The rows that the platform has beyond the standard come along.
bool PageBuilder::add_euc_jp() {
    const auto* const source = PageTable::of(932);
    if (source == nullptr) return false;
    for (unsigned int byte = 0xA1; byte <= 0xDF; ++byte) {
        const auto unit = source->unit_of(static_cast<BYTE>(byte));
        put_pair(0x8E, static_cast<BYTE>(byte), unit);
        entry_of(unit) = pair_of(0x8E, byte);
    }
    for (unsigned int lead = 0xA1; lead <= 0xFE; ++lead) {
        for (unsigned int trail = 0xA1; trail <= 0xFE; ++trail) {
            const auto shifted = shift_jis_of(lead, trail);
            const auto unit = source->unit_of(shifted.lead, shifted.trail);
            put_pair(static_cast<BYTE>(lead), static_cast<BYTE>(trail), unit);
            if (unit == PageTable::kNoUnit) continue;
            // Where 932 prefers a sequence that has no place here, the first one will do.
            auto& entry = entry_of(unit);
            const bool is_preferred =
                source->bytes_of(unit) == pair_of(shifted.lead, shifted.trail);
            if (is_preferred || entry == PageTable::kNoBytes) entry = pair_of(lead, trail);
        }
    }
    return true;
}

void PageBuilder::add_upper_half() {
    for (unsigned int i = 0; i < 0x80; ++i) {
        const auto unit = m_row.upper_half[i];
        m_table->m_units[0x80 + i] = unit;
        entry_of(unit) = static_cast<std::uint16_t>(0x80 + i);
    }
}

void PageBuilder::add_differences() {
    const auto exchange = [this](char16_t& place, std::uint16_t bytes, char16_t unit) {
        if (place != PageTable::kNoUnit) entry_of(place) = PageTable::kNoBytes;
        place = unit;
        if (unit != PageTable::kNoUnit) entry_of(unit) = bytes;
    };
    for (const auto& difference : differences()) {
        if (difference.number != m_row.number) continue;
        for (unsigned int byte = difference.first; byte <= difference.last; ++byte) {
            const bool is_none = difference.unit == PageTable::kNoUnit;
            const auto step = is_none ? 0 : byte - difference.first;
            exchange(m_table->m_units[byte], pair_of(byte, 0),
                     static_cast<char16_t>(difference.unit + step));
        }
    }
    for (const auto& difference : pair_differences()) {
        if (difference.number != m_row.number) continue;
        const unsigned int lead = difference.pair >> 8U;
        const unsigned int trail = difference.pair & 0xFFU;
        const std::size_t row = m_table->m_row_of_lead[lead];
        exchange(m_table->m_units[row * 256 + trail], pair_of(lead, trail), difference.unit);
    }
}

void PageBuilder::add_four_bytes() {
    m_table->m_four_bytes = std::make_unique<FourByteArea>(m_table->bytes());
}

// The way back of a unit, to be written.
std::uint16_t& PageBuilder::entry_of(char16_t unit) {
    return m_table->m_bytes[unit];
}

}  // namespace tvutil2::codepage
