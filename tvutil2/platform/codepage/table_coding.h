// Text of a page with a table to and from 16-bit text.
#pragma once

#include "tvutil2/platform/codepage/page_table.h"
#include "tvutil2/platform/codepage/sink.h"
#include "tvutil2/platform/codepage/utf8_coding.h"

#include <optional>
#include <string_view>

namespace tvutil2::codepage {

/// The bytes that a unit becomes which the page doesn't hold, and whether there was one.
struct DefaultBytes {
    char bytes[2] = {'?', 0};
    std::size_t size = 1;
    /// Such a unit ends the conversion.
    bool is_refused = false;
    /// Nobody asks whether there was one.
    bool is_untold = false;
    bool used = false;

    template <class Sink>
    Outcome put(Sink& out) {
        if (is_refused) return Outcome::invalid;
        used = true;
        return out.put_run(bytes, size) ? Outcome::done : Outcome::no_room;
    }
};

/// The inner loops: what is plain at the front of a text, whole characters only. They may always
/// take less. What is special (no character, the end of text or room) is left to the functions
/// below.
[[nodiscard]] Progress count_plain_units(const PageTable& page, bool is_strict,
                                         std::string_view bytes);
[[nodiscard]] Progress put_plain_units(const PageTable& page, bool is_strict,
                                       std::string_view bytes, char16_t* to, std::size_t room);
[[nodiscard]] Progress count_plain_bytes(const PageTable& page, const DefaultBytes& unmapped,
                                         std::u16string_view units);
[[nodiscard]] Progress put_plain_bytes(const PageTable& page, std::u16string_view units, char* to,
                                       std::size_t room);

/// The character at the front of a text, FourByteArea::kNoCharacter where there is none, and its
/// bytes. An ill-formed sequence of four counts as one byte: what follows may be plain text.
struct TableFront {
    char32_t character;
    std::size_t size;
};
[[nodiscard]] TableFront table_front(const PageTable& page, std::string_view bytes);

/// The bytes for the front of a text, `size` of them as they stand in memory, and the units they
/// stand for; `size` 0 for none.
struct BytesFront {
    std::uint32_t bytes;
    unsigned int size;
    std::size_t units;
};
[[nodiscard]] BytesFront bytes_front(const PageTable& page, std::u16string_view units);

template <class Sink>
Outcome from_table(const PageTable& page, std::string_view bytes, bool is_strict, Sink& out) {
    while (!bytes.empty()) {
        bytes.remove_prefix(out.take([&] { return count_plain_units(page, is_strict, bytes); },
                                     [&](char16_t* to, std::size_t room) {
                                         return put_plain_units(page, is_strict, bytes, to, room);
                                     }));
        if (bytes.empty()) break;
        const auto front = table_front(page, bytes);
        const bool is_character = front.character != FourByteArea::kNoCharacter;
        if (!is_character && is_strict) return Outcome::invalid;
        if (!put_utf16(is_character ? front.character : page.replacement(), out)) {
            return Outcome::no_room;
        }
        bytes.remove_prefix(front.size);
    }
    return Outcome::done;
}

template <class Sink>
Outcome to_table(const PageTable& page, std::u16string_view units, DefaultBytes& unmapped,
                 Sink& out) {
    while (!units.empty()) {
        units.remove_prefix(out.take(
            [&] { return count_plain_bytes(page, unmapped, units); },
            [&](char* to, std::size_t room) { return put_plain_bytes(page, units, to, room); }));
        if (units.empty()) break;
        const auto front = bytes_front(page, units);
        if (front.size == 0) {
            if (const auto outcome = unmapped.put(out); outcome != Outcome::done) return outcome;
        }
        for (unsigned int i = 0; i < front.size; ++i) {
            if (!out.put(static_cast<char>(front.bytes >> i * 8))) return Outcome::no_room;
        }
        units.remove_prefix(front.units);
    }
    return Outcome::done;
}

}  // namespace tvutil2::codepage
