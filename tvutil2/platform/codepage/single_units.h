// The inner loop from single-byte pages: a look-up a byte, or 64 at once where the machine can.
#pragma once

#include "tvutil2/platform/base/export.h"

#include <cstddef>
#include <span>

namespace tvutil2::codepage {

struct SingleUnitsKernel {
    const char* name;
    /// Writes the unit of each byte by a table of 256, of which the lower half is ASCII. Takes all.
    void (*put)(const char16_t* units, const char* from, std::size_t size, char16_t* to);
};

/// The kernels that this machine can run, the portable one first and the fastest one last.
[[nodiscard]] TVUTIL_API std::span<const SingleUnitsKernel> single_units_kernels();

}  // namespace tvutil2::codepage
