// The inner loops of UTF-8: for any machine, and for those with wider registers.
//
// A kernel takes well-formed text from the front, as much as it can at its own pace, and says how
// much it took and made: whole characters only. Ill-formed text, the end and what has no room left
// is for the careful code in utf8_coding.h, so a kernel may always take less, or nothing.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/codepage/sink.h"

#include <cstddef>
#include <span>

namespace tvutil2::codepage {

struct Utf8Kernel {
    const char* name;
    /// The 16-bit units that bytes become.
    Progress (*count_units)(const char* from, std::size_t size);
    Progress (*to_units)(const char* from, std::size_t size, char16_t* to, std::size_t room);
    /// The bytes that units become.
    Progress (*count_bytes)(const char16_t* from, std::size_t size);
    Progress (*to_bytes)(const char16_t* from, std::size_t size, char* to, std::size_t room);
};

/// The kernels that this machine can run, the portable one first and the fastest one last.
[[nodiscard]] TVUTIL_API std::span<const Utf8Kernel> utf8_kernels();

extern const Utf8Kernel kPortableUtf8;
#if defined(__x86_64__)
extern const Utf8Kernel kAvx2Utf8;
#endif

}  // namespace tvutil2::codepage
