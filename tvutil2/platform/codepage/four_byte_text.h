// The inner loops of a page with sequences of one, two and four bytes, where some of them have
// four.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/codepage/page_table.h"
#include "tvutil2/platform/codepage/sink.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace tvutil2::codepage {

/// Whole characters at the front of a text, whatever their length, of a page that has four_bytes().
/// They stop in front of what has no character or no bytes, near the end of the text or of the
/// room, and at or behind a run of characters without four bytes: other loops are faster in it.
/// The count is what put_four_byte_bytes makes where there is room for all of it.
[[nodiscard]] Progress put_four_byte_units(const PageTable& page, std::string_view bytes,
                                           char16_t* to, std::size_t room);
[[nodiscard]] Progress put_four_byte_bytes(const PageTable& page, std::u16string_view units,
                                           char* to, std::size_t room);
[[nodiscard]] Progress count_four_byte_bytes(const PageTable& page, std::u16string_view units);

/// put_four_byte_bytes, by a table like FourByteArea::bytes_of_all.
struct FourBytesKernel {
    const char* name;
    Progress (*put)(const std::uint32_t* bytes_of, std::u16string_view units, char* to,
                    std::size_t room);
};

/// The kernels that this machine can run, the portable one first and the fastest one last.
[[nodiscard]] TVUTIL_API std::span<const FourBytesKernel> four_bytes_kernels();

}  // namespace tvutil2::codepage
