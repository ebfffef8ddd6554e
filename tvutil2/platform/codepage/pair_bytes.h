// The inner loop to pages of one and two bytes: a look-up a unit, or 16 at once where the machine
// can.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/codepage/sink.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace tvutil2::codepage {

struct PairBytesKernel {
    const char* name;
    /// Writes the bytes of each unit by a table like PageTable::bytes. Stops in front of a unit
    /// without any, and where the rest or the room is less than a block needs.
    Progress (*put)(const std::uint16_t* bytes, std::u16string_view units, char* to,
                    std::size_t room);
};

/// The kernels that this machine can run, the portable one first and the fastest one last.
[[nodiscard]] TVUTIL_API std::span<const PairBytesKernel> pair_bytes_kernels();

}  // namespace tvutil2::codepage
