// Text of a page with a table to and from 16-bit text.
#pragma once

#include "tvutil2/platform/codepage/page_table.h"
#include "tvutil2/platform/codepage/sink.h"

#include <optional>
#include <string_view>

namespace tvutil2::codepage {

/// The bytes that a unit becomes which the page doesn't hold, and whether there was one.
struct DefaultBytes {
    char bytes[2] = {'?', 0};
    std::size_t size = 1;
    bool used = false;

    template <class Sink>
    Outcome put(Sink& out) {
        used = true;
        return out.put_run(bytes, size) ? Outcome::done : Outcome::no_room;
    }
};

/// The four-byte sequence at the front of a text. An ill-formed one counts as one byte: what
/// follows may be plain text.
struct FourByteFront {
    char32_t character;
    std::size_t size;
};
[[nodiscard]] std::optional<FourByteFront> four_byte_front(const PageTable& page,
                                                           std::string_view bytes);

template <class Sink>
bool put_character(char32_t c, char16_t replacement, Sink& out) {
    if (c == FourByteArea::kNoCharacter) return out.put(replacement);
    if (c < 0x10000) return out.put(static_cast<char16_t>(c));
    return out.put(static_cast<char16_t>(0xD7C0 + (c >> 10U))) &&
           out.put(static_cast<char16_t>(0xDC00 | (c & 0x3FFU)));
}

/// The four-byte sequence for the front of a text, and how many units it stands for; 0 for none.
struct FourByteSequence {
    std::uint32_t bytes;
    std::size_t units;
};
[[nodiscard]] FourByteSequence four_bytes_for(const PageTable& page, std::u16string_view units);

template <class Sink>
bool put_four(std::uint32_t bytes, Sink& out) {
    return out.put(static_cast<char>(bytes >> 24U)) && out.put(static_cast<char>(bytes >> 16U)) &&
           out.put(static_cast<char>(bytes >> 8U)) && out.put(static_cast<char>(bytes));
}

template <class Sink>
Outcome from_table(const PageTable& page, std::string_view bytes, bool is_strict, Sink& out) {
    while (!bytes.empty()) {
        const auto plain = ascii_prefix(bytes.data(), bytes.size());
        if (!out.put_run(bytes.data(), plain)) return Outcome::no_room;
        bytes.remove_prefix(plain);
        while (!bytes.empty() && static_cast<BYTE>(bytes[0]) >= 0x80) {
            const auto first = static_cast<BYTE>(bytes[0]);
            auto unit = page.unit_of(first);
            std::size_t size = 1;
            // A zero ends a text and is no second half, whatever stands before it.
            if (const auto longer = four_byte_front(page, bytes)) {
                if (longer->character == FourByteArea::kNoCharacter && is_strict) {
                    return Outcome::invalid;
                }
                if (!put_character(longer->character, page.replacement(), out)) {
                    return Outcome::no_room;
                }
                bytes.remove_prefix(longer->size);
                continue;
            }
            if (page.is_lead(first) && bytes.size() > 1 && bytes[1] != 0) {
                unit = page.unit_of(first, static_cast<BYTE>(bytes[1]));
                size = 2;
            }
            if (unit == PageTable::kNoUnit) {
                if (is_strict) return Outcome::invalid;
                unit = page.replacement();
            }
            if (!out.put(unit)) return Outcome::no_room;
            bytes.remove_prefix(size);
        }
    }
    return Outcome::done;
}

template <class Sink>
Outcome to_table(const PageTable& page, std::u16string_view units, DefaultBytes& unmapped,
                 Sink& out) {
    while (!units.empty()) {
        const auto plain = ascii_prefix(units.data(), units.size());
        if (!out.put_run(units.data(), plain)) return Outcome::no_room;
        units.remove_prefix(plain);
        for (; !units.empty() && units[0] >= 0x80; units.remove_prefix(1)) {
            const auto bytes = page.bytes_of(units[0]);
            if (bytes == PageTable::kNoBytes) {
                if (const auto longer = four_bytes_for(page, units); longer.bytes != 0) {
                    if (!put_four(longer.bytes, out)) return Outcome::no_room;
                    units.remove_prefix(longer.units - 1);
                    continue;
                }
                if (const auto outcome = unmapped.put(out); outcome != Outcome::done) {
                    return outcome;
                }
                continue;
            }
            if (bytes > 0xFF && !out.put(static_cast<char>(bytes >> 8U))) return Outcome::no_room;
            if (!out.put(static_cast<char>(bytes & 0xFFU))) return Outcome::no_room;
        }
    }
    return Outcome::done;
}

}  // namespace tvutil2::codepage
