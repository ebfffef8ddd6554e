#include "tvutil2/text/text_units.h"

#include <bit>
#include <cstdint>
#include <cstring>

namespace tvutil2 {
namespace {

using Word = std::uint64_t;

// The same value in each lane of a word.
template <class Unit>
constexpr Word in_all_lanes(Unit value) {
    return (~Word{0} / static_cast<Unit>(~Unit{0})) * value;
}

// Non-zero if a lane is zero (Mycroft's test: exact as a whole, not lane by lane).
template <class Unit>
constexpr Word has_zero(Word word) {
    constexpr auto kTop = static_cast<Unit>(Unit{1} << (sizeof(Unit) * 8 - 1));
    return (word - in_all_lanes(Unit{1})) & ~word & in_all_lanes(kTop);
}

template <class Unit>
constexpr Word has(Word word, Unit value) {
    return has_zero<Unit>(word ^ in_all_lanes(value));
}

// Units in front of the first one that is wanted: whole words as long as they hold none.
template <class Unit, class InWord, class InUnit>
std::size_t search(const void* units, std::size_t count, InWord in_word, InUnit in_unit) {
    constexpr auto kStep = sizeof(Word) / sizeof(Unit);
    const auto* const bytes = static_cast<const char*>(units);
    std::size_t i = 0;
    for (; i + kStep <= count; i += kStep) {
        Word word = 0;
        std::memcpy(&word, bytes + i * sizeof(Unit), sizeof word);
        if (in_word(word) != 0) break;
    }
    for (; i < count; ++i) {
        Unit unit = 0;
        std::memcpy(&unit, bytes + i * sizeof(Unit), sizeof unit);
        if (in_unit(unit)) break;
    }
    return i;
}

constexpr std::uint8_t kCr = '\r';
constexpr std::uint8_t kLf = '\n';
constexpr Word kAboveAscii = in_all_lanes(std::uint8_t{0x80});
constexpr Word kAboveAscii16 = in_all_lanes(std::uint16_t{0xFF80});

}  // namespace

std::size_t line_prefix(std::string_view bytes) {
    return search<std::uint8_t>(
        bytes.data(), bytes.size(), [](Word word) { return has(word, kCr) | has(word, kLf); },
        [](std::uint8_t byte) { return is_line_end(byte); });
}

std::size_t ascii_line_prefix(std::string_view bytes) {
    return search<std::uint8_t>(
        bytes.data(), bytes.size(),
        [](Word word) { return (word & kAboveAscii) | has(word, kCr) | has(word, kLf); },
        [](std::uint8_t byte) { return byte >= 0x80 || is_line_end(byte); });
}

std::size_t ascii_prefix(std::string_view bytes) {
    return search<std::uint8_t>(
        bytes.data(), bytes.size(), [](Word word) { return word & kAboveAscii; },
        [](std::uint8_t byte) { return byte >= 0x80; });
}

std::size_t ascii_prefix(std::u16string_view units) {
    return search<std::uint16_t>(
        units.data(), units.size(), [](Word word) { return word & kAboveAscii16; },
        [](std::uint16_t unit) { return unit >= 0x80; });
}

std::size_t utf16_line_prefix(std::string_view bytes, bool is_big_endian) {
    const bool is_swapped = is_big_endian != (std::endian::native == std::endian::big);
    const auto cr = static_cast<std::uint16_t>(is_swapped ? kCr << 8 : kCr);
    const auto lf = static_cast<std::uint16_t>(is_swapped ? kLf << 8 : kLf);
    return search<std::uint16_t>(
        bytes.data(), bytes.size() / 2,
        [cr, lf](Word word) { return has(word, cr) | has(word, lf); },
        [cr, lf](std::uint16_t unit) { return unit == cr || unit == lf; });
}

std::u16string_view before_zero(std::u16string_view text) {
    return text.substr(
        0, search<std::uint16_t>(
               text.data(), text.size(), [](Word word) { return has_zero<std::uint16_t>(word); },
               [](std::uint16_t unit) { return unit == 0; }));
}

}  // namespace tvutil2
