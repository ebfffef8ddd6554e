// What a crashed process tells the helper program, in one message of a socket that the helper has
// as its standard input. Both are built from this header.
#pragma once

#include <sys/types.h>

#include <cstdint>

namespace tvutil2 {

struct CrashNote {
    static constexpr std::uint32_t kVersion = 2;
    static constexpr std::size_t kRegisters = 23;  ///< as many as the host's signal frame has

    std::uint32_t version = kVersion;
    pid_t process = 0;
    pid_t thread = 0;
    std::int32_t signal = 0;
    std::int32_t code = 0;      ///< why the host sent the signal (si_code)
    std::uint64_t address = 0;  ///< what a fault was about
    std::uint64_t registers[kRegisters] = {};
    std::uint64_t pictures = 0;        ///< address of the windows' pictures (crash_picture.h)
    std::int32_t picture_quality = 0;  ///< of the one to take, 1 to 100; 0 for none
    bool is_terminate = false;         ///< the language's run-time gave up
    char exception[256] = {};          ///< mangled type of the exception in flight; cut
};

}  // namespace tvutil2
