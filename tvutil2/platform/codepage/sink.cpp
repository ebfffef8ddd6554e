#include "tvutil2/platform/codepage/sink.h"

#include <cstdint>
#include <cstring>

namespace tvutil2::codepage {
namespace {

// Eight bytes at a time, then one by one.
template <class Unit>
std::size_t prefix(const Unit* text, std::size_t size, std::uint64_t above_ascii) {
    constexpr auto kStep = sizeof(std::uint64_t) / sizeof(Unit);
    std::size_t i = 0;
    for (; i + kStep <= size; i += kStep) {
        std::uint64_t word = 0;
        std::memcpy(&word, text + i, sizeof word);
        if ((word & above_ascii) != 0) break;
    }
    while (i < size && static_cast<std::make_unsigned_t<Unit>>(text[i]) < 0x80) ++i;
    return i;
}

}  // namespace

std::size_t ascii_prefix(const char* bytes, std::size_t size) {
    return prefix(bytes, size, 0x8080808080808080);
}

std::size_t ascii_prefix(const char16_t* units, std::size_t size) {
    return prefix(units, size, 0xFF80FF80FF80FF80);
}

}  // namespace tvutil2::codepage
