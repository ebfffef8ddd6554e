// The inner loops of Base64: one for any machine, others for those with wider registers.
//
// A kernel takes whole groups from the front, as many as it can at its own pace, and says how many
// it took; what is left goes to the portable one, and what that leaves (a padded or spaced group,
// the end) to the plain reader in base64.cpp. All kernels give the same bytes for what they take.
#pragma once

#include "tvutil2/platform/base/export.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace tvutil2 {

struct Base64Kernel {
    const char* name;
    /// Writes four characters for each three bytes taken, and gives the bytes taken (a multiple of
    /// 3). `to` has room for all of `size`.
    std::size_t (*encode)(const unsigned char* from, std::size_t size, char16_t* to);
    /// Writes three bytes for each four characters taken, and gives the characters taken (a
    /// multiple of 4). Stops in front of a block with a character outside the alphabet. `to` has
    /// room for all of `size`.
    std::size_t (*decode)(const char16_t* from, std::size_t size, unsigned char* to);
};

inline constexpr char kBase64Alphabet[] =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// The kernels that this machine can run, the portable one first and the fastest one last.
[[nodiscard]] TVUTIL_API std::span<const Base64Kernel> base64_kernels();

extern const Base64Kernel kPortableBase64;
#if defined(__x86_64__)
extern const Base64Kernel kAvx2Base64;
extern const Base64Kernel kAvx512Base64;
#endif

/// What stands for a character outside the alphabet: no value has this bit.
inline constexpr std::uint8_t kNoBase64Value = 0x80;

/// The value of each character below 0x100.
inline constexpr auto kBase64Values = [] {
    std::array<std::uint8_t, 256> values{};
    values.fill(kNoBase64Value);
    for (std::uint8_t i = 0; i < 64; ++i)
        values[static_cast<unsigned char>(kBase64Alphabet[i])] = i;
    return values;
}();

}  // namespace tvutil2
