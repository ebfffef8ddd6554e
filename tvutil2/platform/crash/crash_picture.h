// The pictures of a program's windows, as the helper program finds them in a crashed process. Both
// are built from this header.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace tvutil2 {

/// Pixels of 32 bits, 0xAARRGGBB, the rows from top to bottom without gaps.
struct CrashPicture {
    static constexpr std::uint64_t kMark = 0x3145525554434950;
    static constexpr std::int32_t kLongest = 32767;               ///< pixels in either direction
    static constexpr std::int64_t kMost = std::int64_t{1} << 26;  ///< and in all

    std::int32_t width = 0;
    std::int32_t height = 0;
    std::uint64_t pixels = 0;  ///< their address
    std::uint64_t seal = 0;    ///< seal_of the three: what was written over isn't one

    [[nodiscard]] constexpr std::uint64_t seal_of() const {
        return kMark ^ pixels ^ (std::uint64_t(std::uint32_t(width)) << 32U) ^
               std::uint32_t(height);
    }
};

inline constexpr std::size_t kCrashPictures = 16;

/// Each is null, or a picture that is whole, at any moment at which the process is stopped.
using CrashPictures = std::atomic<const CrashPicture*>[kCrashPictures];

}  // namespace tvutil2
