// UTF-8 (RFC 3629) to and from 16-bit text, without a table.
#pragma once

#include "tvutil2/platform/codepage/sink.h"
#include "tvutil2/platform/codepage/utf8_kernels.h"

#include <cstddef>
#include <string_view>

namespace tvutil2::codepage {

/// The bytes at the front of a text and their character; when they are ill-formed, `is_valid` is
/// false and `size` counts the maximal subpart that could have begun a character (at least 1).
struct Utf8Front {
    std::size_t size;
    char32_t character;
    bool is_valid;
};
[[nodiscard]] Utf8Front utf8_front(std::string_view bytes);

inline constexpr char16_t kReplacement = 0xFFFD;

[[nodiscard]] constexpr bool is_high_surrogate(char32_t c) {
    return (c & 0xFFFFFC00) == 0xD800;
}
[[nodiscard]] constexpr bool is_surrogate(char32_t c) {
    return (c & 0xFFFFF800) == 0xD800;
}
[[nodiscard]] constexpr bool is_low_surrogate(char32_t c) {
    return (c & 0xFFFFFC00) == 0xDC00;
}

/// The character at the front of a text; a surrogate stands for itself when its other half is
/// missing.
[[nodiscard]] constexpr char32_t utf16_front(std::u16string_view units) {
    const char32_t c = units[0];
    if (!is_high_surrogate(c) || units.size() < 2 || !is_low_surrogate(units[1])) return c;
    return 0x10000 + ((c & 0x3FFU) << 10U) + (units[1] & 0x3FFU);
}

template <class Sink>
bool put_utf16(char32_t c, Sink& out) {
    if (c < 0x10000) return out.put(static_cast<char16_t>(c));
    return out.put(static_cast<char16_t>(0xD7C0 + (c >> 10U))) &&
           out.put(static_cast<char16_t>(0xDC00 | (c & 0x3FFU)));
}

/// How much the careful code takes before it tries the fast one again.
inline constexpr std::size_t kCareful = 64;

template <class Sink>
Outcome from_utf8(std::string_view bytes, bool is_strict, Sink& out) {
    const Utf8Kernel& kernel = utf8_kernels().back();
    while (!bytes.empty()) {
        bytes.remove_prefix(out.take([&] { return kernel.count_units(bytes.data(), bytes.size()); },
                                     [&](char16_t* to, std::size_t room) {
                                         return kernel.to_units(bytes.data(), bytes.size(), to,
                                                                room);
                                     }));
        const std::size_t left = bytes.size() > kCareful ? bytes.size() - kCareful : 0;
        while (bytes.size() > left) {
            const auto plain = ascii_prefix(bytes.data(), bytes.size() - left);
            if (!out.put_run(bytes.data(), plain)) return Outcome::no_room;
            bytes.remove_prefix(plain);
            if (bytes.size() <= left) break;
            const auto front = utf8_front(bytes);
            if (!front.is_valid && is_strict) return Outcome::invalid;
            const char32_t c = front.is_valid ? front.character : kReplacement;
            if (!put_utf16(c, out)) return Outcome::no_room;
            bytes.remove_prefix(front.size);
        }
    }
    return Outcome::done;
}

template <class Sink>
bool put_utf8(char32_t c, Sink& out) {
    const auto tail = [&out, c](unsigned int shift) {
        return out.put(static_cast<char>(0x80 | ((c >> shift) & 0x3F)));
    };
    if (c < 0x80) return out.put(static_cast<char>(c));
    if (c < 0x800) return out.put(static_cast<char>(0xC0 | (c >> 6U))) && tail(0);
    if (c < 0x10000) return out.put(static_cast<char>(0xE0 | (c >> 12U))) && tail(6) && tail(0);
    return out.put(static_cast<char>(0xF0 | (c >> 18U))) && tail(12) && tail(6) && tail(0);
}

/// `on_lone` puts what stands for a surrogate without its other half and says how that went.
template <class Sink, class OnLone>
Outcome to_utf8(std::u16string_view units, Sink& out, OnLone on_lone) {
    const Utf8Kernel& kernel = utf8_kernels().back();
    while (!units.empty()) {
        units.remove_prefix(out.take([&] { return kernel.count_bytes(units.data(), units.size()); },
                                     [&](char* to, std::size_t room) {
                                         return kernel.to_bytes(units.data(), units.size(), to,
                                                                room);
                                     }));
        const std::size_t left = units.size() > kCareful ? units.size() - kCareful : 0;
        while (units.size() > left) {
            const auto plain = ascii_prefix(units.data(), units.size() - left);
            if (!out.put_run(units.data(), plain)) return Outcome::no_room;
            units.remove_prefix(plain);
            if (units.size() <= left) break;
            const char32_t c = utf16_front(units);
            const auto outcome = is_surrogate(c)    ? on_lone(out)
                                 : put_utf8(c, out) ? Outcome::done
                                                    : Outcome::no_room;
            if (outcome != Outcome::done) return outcome;
            units.remove_prefix(c < 0x10000 ? 1 : 2);
        }
    }
    return Outcome::done;
}

}  // namespace tvutil2::codepage
