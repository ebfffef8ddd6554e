#include "tvutil2/platform/codepage/table_coding.h"

#include "tvutil2/platform/codepage/ascii_block.h"
#include "tvutil2/platform/codepage/four_byte_text.h"
#include "tvutil2/platform/codepage/lead_scan.h"
#include "tvutil2/platform/codepage/pair_bytes.h"
#include "tvutil2/platform/codepage/single_units.h"

#include <bit>
#include <cstring>

namespace tvutil2::codepage {
namespace {

BYTE byte_of(char c) {
    return static_cast<BYTE>(c);
}

Progress count_single_units(const PageTable& page, std::string_view bytes) {
    std::size_t i = 0;
    while (i < bytes.size() && page.unit_of(byte_of(bytes[i])) != PageTable::kNoUnit) ++i;
    return {i, i};
}

Progress put_single_units(const PageTable& page, bool is_strict, std::string_view bytes,
                          char16_t* to, std::size_t room) {
    bytes = bytes.substr(0, room);
    const auto size = is_strict ? count_single_units(page, bytes).taken : bytes.size();
    if (page.is_latin1()) {
        for (std::size_t i = 0; i < size; ++i) to[i] = byte_of(bytes[i]);
    } else {
        single_units_kernels().back().put(page.lenient_units(), bytes.data(), size, to);
    }
    return {size, size};
}

// The characters of a block: where they begin, and how many bytes they take. A lead byte at the
// end waits for the next block.
struct Characters {
    std::uint64_t starts;
    std::size_t size;
    bool is_ascii;
    /// A zero ends a text and is no second half, whatever stands before it.
    bool has_zero_trail;
};

Characters characters_of(const PageTable& page, const char* block) {
    const auto scan = scan_block(page, block);
    const auto leads = leads_among(scan.candidates);
    const auto trails = leads << 1U;
    const bool is_cut = leads >> 63U != 0;
    const std::uint64_t last = std::uint64_t{1} << 63U;
    return {is_cut ? ~trails & ~last : ~trails, kScanned - (is_cut ? 1 : 0), scan.above_ascii == 0,
            (scan.zeros & trails) != 0};
}

// Blocks are looked at with one byte more: the last character may ask for it.
bool has_block(std::string_view bytes, std::size_t taken) {
    return bytes.size() - taken > kScanned;
}

Progress count_pair_units(const PageTable& page, std::string_view bytes) {
    Progress progress;
    while (has_block(bytes, progress.taken)) {
        const auto characters = characters_of(page, bytes.data() + progress.taken);
        if (characters.has_zero_trail) break;
        progress.made += static_cast<std::size_t>(std::popcount(characters.starts));
        progress.taken += characters.size;
    }
    return progress;
}

// Stops in front of a sequence without a character.
Progress put_pair_units(const PageTable& page, std::string_view bytes, char16_t* to,
                        std::size_t room) {
    const std::uint8_t* const row_of = page.row_numbers();
    const char16_t* const rows = page.rows();
    Progress progress;
    while (has_block(bytes, progress.taken) && room - progress.made >= kScanned) {
        const char* const from = bytes.data() + progress.taken;
        char16_t* out = to + progress.made;
        const auto characters = characters_of(page, from);
        if (characters.is_ascii) {
            for (std::size_t i = 0; i < kScanned; ++i) out[i] = byte_of(from[i]);
            progress.taken += kScanned;
            progress.made += kScanned;
            continue;
        }
        for (std::uint64_t left = characters.starts; left != 0; left &= left - 1) {
            const auto place = static_cast<std::size_t>(std::countr_zero(left));
            const unsigned int first = byte_of(from[place]);
            const unsigned int second = byte_of(from[place + 1]);
            const unsigned int row = row_of[first];
            const char16_t unit = rows[row << 8U | (row != 0 ? second : first)];
            if (unit == PageTable::kNoUnit) {
                return {progress.taken + place, static_cast<std::size_t>(out - to)};
            }
            *out++ = unit;
        }
        progress.made = static_cast<std::size_t>(out - to);
        progress.taken += characters.size;
    }
    return progress;
}

// One loop where characters are short, another one where they are long, in turns.
Progress put_units_of_all_lengths(const PageTable& page, std::string_view bytes, char16_t* to,
                                  std::size_t room) {
    Progress progress;
    for (bool goes_on = true; goes_on;) {
        progress += put_pair_units(page, bytes.substr(progress.taken), to + progress.made,
                                   room - progress.made);
        const auto part = put_four_byte_units(page, bytes.substr(progress.taken),
                                              to + progress.made, room - progress.made);
        progress += part;
        goes_on = part.taken != 0;
    }
    return progress;
}

Progress put_bytes_of_all_lengths(const PageTable& page, std::u16string_view units, char* to,
                                  std::size_t room) {
    const auto& kernel = pair_bytes_kernels().back();
    Progress progress;
    for (bool goes_on = true; goes_on;) {
        progress += kernel.put(page.bytes(), units.substr(progress.taken), to + progress.made,
                               room - progress.made);
        const auto part = put_four_byte_bytes(page, units.substr(progress.taken),
                                              to + progress.made, room - progress.made);
        progress += part;
        goes_on = part.taken != 0;
    }
    return progress;
}

Progress put_multibyte_units(const PageTable& page, std::string_view bytes, char16_t* to,
                             std::size_t room) {
    return page.four_bytes() != nullptr ? put_units_of_all_lengths(page, bytes, to, room)
                                        : put_pair_units(page, bytes, to, room);
}

// Where only the look at each character tells what there is.
Progress count_known_units(const PageTable& page, std::string_view bytes) {
    char16_t scratch[1024];
    Progress progress;
    for (;;) {
        const auto part = put_multibyte_units(page, bytes.substr(progress.taken), scratch, 1024);
        if (part.taken == 0) break;
        progress += part;
    }
    return progress;
}

// Eight units of a single-byte page by one store; not 0 when one of them has no byte.
std::uint64_t put_eight(const std::uint16_t* bytes_of, const char16_t* from, char* to) {
    std::uint64_t word = 0;
    std::uint64_t has_none = 0;
    for (unsigned int i = 0; i < 8; ++i) {
        const std::uint64_t byte = bytes_of[from[i]];
        word |= byte << i * 8;
        has_none |= byte - 1;  // the highest bit for 0
    }
    std::memcpy(to, &word, sizeof word);
    return has_none >> 63U;
}

Progress put_latin1_bytes(std::u16string_view units, char* to, std::size_t room) {
    units = units.substr(0, room);
    std::size_t i = 0;
    for (; i + kAsciiBlock <= units.size(); i += kAsciiBlock) {
        unsigned int all = 0;
        for (std::size_t j = i; j < i + kAsciiBlock; ++j) all |= units[j];
        if (all > 0xFF) break;
        narrow_block(units.data() + i, to + i);
    }
    for (; i < units.size() && units[i] <= 0xFF; ++i) to[i] = static_cast<char>(units[i]);
    return {i, i};
}

Progress put_single_bytes(const PageTable& page, std::u16string_view units, char* to,
                          std::size_t room) {
    const std::uint16_t* const bytes_of = page.bytes();
    const char16_t* const from = units.data();
    const std::size_t size = std::min(units.size(), room);
    std::size_t i = 0;
    for (; i + kAsciiBlock <= size; i += kAsciiBlock) {
        if (is_ascii_block(from + i)) {
            narrow_block(from + i, to + i);
            continue;
        }
        std::uint64_t has_none = 0;
        for (std::size_t j = i; j < i + kAsciiBlock; j += 8)
            has_none |= put_eight(bytes_of, from + j, to + j);
        if (has_none != 0) break;
    }
    for (; i < size; ++i) {
        const auto byte = bytes_of[from[i]];
        if (byte == PageTable::kNoBytes) break;
        to[i] = static_cast<char>(byte);
    }
    return {i, i};
}

Progress count_single_bytes(const PageTable& page, std::u16string_view units) {
    const std::uint16_t* const bytes_of = page.bytes();
    std::size_t i = 0;
    while (i < units.size() && bytes_of[units[i]] != PageTable::kNoBytes) ++i;
    return {i, i};
}

Progress count_pair_bytes(const PageTable& page, std::u16string_view units) {
    const std::uint16_t* const bytes_of = page.bytes();
    Progress progress;
    for (const char16_t unit : units) {
        const auto bytes = bytes_of[unit];
        if (bytes == PageTable::kNoBytes) break;
        progress.made += bytes > 0xFF ? 2 : 1;
        ++progress.taken;
    }
    return progress;
}

}  // namespace

Progress count_plain_units(const PageTable& page, bool is_strict, std::string_view bytes) {
    if (!page.has_leads()) {
        return is_strict ? count_single_units(page, bytes) : Progress{bytes.size(), bytes.size()};
    }
    const bool looks = is_strict || page.four_bytes() != nullptr;
    return looks ? count_known_units(page, bytes) : count_pair_units(page, bytes);
}

Progress put_plain_units(const PageTable& page, bool is_strict, std::string_view bytes,
                         char16_t* to, std::size_t room) {
    return page.has_leads() ? put_multibyte_units(page, bytes, to, room)
                            : put_single_units(page, is_strict, bytes, to, room);
}

Progress count_plain_bytes(const PageTable& page, const DefaultBytes& unmapped,
                           std::u16string_view units) {
    if (page.four_bytes() != nullptr) return count_four_byte_bytes(page, units);
    if (page.has_leads()) return count_pair_bytes(page, units);
    const bool is_known = unmapped.is_untold && !unmapped.is_refused && unmapped.size == 1;
    return is_known ? Progress{units.size(), units.size()} : count_single_bytes(page, units);
}

Progress put_plain_bytes(const PageTable& page, std::u16string_view units, char* to,
                         std::size_t room) {
    if (page.is_latin1()) return put_latin1_bytes(units, to, room);
    if (page.four_bytes() != nullptr) return put_bytes_of_all_lengths(page, units, to, room);
    return page.has_leads() ? pair_bytes_kernels().back().put(page.bytes(), units, to, room)
                            : put_single_bytes(page, units, to, room);
}

TableFront table_front(const PageTable& page, std::string_view bytes) {
    constexpr auto kNone = FourByteArea::kNoCharacter;
    const auto byte = [bytes](std::size_t i) { return byte_of(bytes[i]); };
    const auto character = [](char16_t unit) {
        return unit == PageTable::kNoUnit ? kNone : char32_t{unit};
    };
    if (!page.is_lead(byte(0)) || bytes.size() < 2 || bytes[1] == 0) {
        return {character(page.unit_of(byte(0))), 1};
    }
    const auto* const area = page.four_bytes();
    if (area != nullptr && FourByteArea::is_begun_by(byte(0), byte(1))) {
        if (bytes.size() < 4 || !FourByteArea::is_begun_by(byte(2), byte(3))) return {kNone, 1};
        return {area->character_of(FourByteArea::number_of(bytes.data())), 4};
    }
    return {character(page.unit_of(byte(0), byte(1))), 2};
}

BytesFront bytes_front(const PageTable& page, std::u16string_view units) {
    if (units[0] == 0) return {0, 1, 1};
    const unsigned int bytes = page.bytes_of(units[0]);
    if (bytes != PageTable::kNoBytes) return {bytes, bytes > 0xFF ? 2U : 1U, 1};
    if (page.four_bytes() == nullptr) return {0, 0, 1};
    const auto character = utf16_front(units);
    if (character >= 0x10000) return {FourByteArea::bytes_above_16_bits(character), 4, 2};
    const auto four = page.four_bytes()->bytes_of_all()[units[0]];
    return {four, four != 0 ? 4U : 0U, 1};
}

}  // namespace tvutil2::codepage
