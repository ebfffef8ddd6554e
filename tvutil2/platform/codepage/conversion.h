// Conversion of texts whose size is known, with the room that their page asks for.
//
// WideCharToMultiByte and MultiByteToWideChar leave the room to their callers, count in int, refuse
// the empty text and give 0 for failure, which is easily taken for a length. Who has a text of 16
// bits or of bytes uses these instead.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tvutil2::codepage {

/// Bytes that `units` units of text have room in, whatever they are and whatever stands for those
/// that the page doesn't hold; INT_MAX at most, since no conversion gives more. 0 for a page that
/// isn't known.
[[nodiscard]] TVUTIL_API std::size_t byte_room(UINT page, std::size_t units);

/// The same the other way: no page has more units than bytes.
[[nodiscard]] constexpr std::size_t unit_room(std::size_t bytes) {
    return bytes;
}

/// As WideCharToMultiByte and MultiByteToWideChar, into `out`; the count of bytes or units put, 0
/// of them for an empty text. Nothing, with the last error set, when the conversion fails: then
/// what stands in `out` is none.
[[nodiscard]] TVUTIL_API std::optional<std::size_t> put_bytes(UINT page, DWORD flags,
                                                              std::u16string_view text,
                                                              std::span<char> out,
                                                              const char* default_char = nullptr,
                                                              BOOL* used_default = nullptr);
[[nodiscard]] TVUTIL_API std::optional<std::size_t> put_units(UINT page, DWORD flags,
                                                              std::string_view bytes,
                                                              std::span<char16_t> out);

/// The same as a new text.
[[nodiscard]] TVUTIL_API std::optional<std::string> bytes_in(UINT page, DWORD flags,
                                                             std::u16string_view text,
                                                             const char* default_char = nullptr,
                                                             BOOL* used_default = nullptr);
[[nodiscard]] TVUTIL_API std::optional<std::u16string> units_of(UINT page, DWORD flags,
                                                                std::string_view bytes);

}  // namespace tvutil2::codepage
