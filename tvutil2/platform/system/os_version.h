// The platform's version, and what the host says of itself.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

#include <optional>
#include <string>
#include <string_view>

inline constexpr DWORD VER_MINORVERSION = 0x01;
inline constexpr DWORD VER_MAJORVERSION = 0x02;
inline constexpr DWORD VER_SERVICEPACKMINOR = 0x10;
inline constexpr DWORD VER_SERVICEPACKMAJOR = 0x20;

inline constexpr BYTE VER_EQUAL = 1;
inline constexpr BYTE VER_GREATER = 2;
inline constexpr BYTE VER_GREATER_EQUAL = 3;
inline constexpr BYTE VER_LESS = 4;
inline constexpr BYTE VER_LESS_EQUAL = 5;

inline constexpr DWORD ERROR_OLD_WIN_VERSION = 1150;

struct OSVERSIONINFOEXW {
    DWORD dwOSVersionInfoSize;
    DWORD dwMajorVersion;
    DWORD dwMinorVersion;
    DWORD dwBuildNumber;
    DWORD dwPlatformId;
    char16_t szCSDVersion[128];
    WORD wServicePackMajor;
    WORD wServicePackMinor;
    WORD wSuiteMask;
    BYTE wProductType;
    BYTE wReserved;
};

/// `mask` with a condition for the numbers of `type` (VER_ bits).
TVUTIL_API ULONGLONG VerSetConditionMask(ULONGLONG mask, DWORD type, BYTE condition);

/// Whether the platform's version is as asked: major, minor and service pack count as one number of
/// several places, under the condition of the first that takes part. The layer is the platform in
/// its version 10.0 without a service pack. FALSE with ERROR_OLD_WIN_VERSION when it isn't as
/// asked, ERROR_INVALID_PARAMETER for a number without a condition, other `types`, or null.
TVUTIL_API BOOL VerifyVersionInfoW(const OSVERSIONINFOEXW* version, DWORD types, ULONGLONG mask);

namespace tvutil2 {

/// What the installation is, for where the registry doesn't say it.
struct HostFacts {
    std::u16string
        product;           ///< the distribution with its version: "Debian GNU/Linux 12 (bookworm)"
    std::u16string build;  ///< the kernel's release: "6.1.0-18-amd64"
};

/// From os-release(5) and the kernel.
[[nodiscard]] TVUTIL_API HostFacts host_facts();

/// A value of os-release(5) content; nothing when it isn't there.
[[nodiscard]] TVUTIL_API std::optional<std::string> os_release_value(std::string_view content,
                                                                     std::string_view name);

}  // namespace tvutil2
