#include "tvutil2/platform/system/os_version.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/files/host_files.h"

#include <fcntl.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <bit>
#include <compare>

namespace tvutil2 {
namespace {

constexpr DWORD kMajorVersion = 10;
constexpr unsigned kConditionBits = 3;
// The most significant first.
constexpr DWORD kPlaces[] = {VER_MAJORVERSION, VER_MINORVERSION, VER_SERVICEPACKMAJOR,
                             VER_SERVICEPACKMINOR};

BYTE condition_of(ULONGLONG mask, DWORD type) {
    const auto shift = static_cast<unsigned>(std::countr_zero(type)) * kConditionBits;
    return static_cast<BYTE>((mask >> shift) & 7);
}

DWORD asked(const OSVERSIONINFOEXW& version, DWORD type) {
    switch (type) {
        case VER_MAJORVERSION:
            return version.dwMajorVersion;
        case VER_MINORVERSION:
            return version.dwMinorVersion;
        case VER_SERVICEPACKMAJOR:
            return version.wServicePackMajor;
        default:
            return version.wServicePackMinor;
    }
}

bool holds(std::strong_ordering order, BYTE condition) {
    switch (condition) {
        case VER_EQUAL:
            return std::is_eq(order);
        case VER_GREATER:
            return std::is_gt(order);
        case VER_GREATER_EQUAL:
            return std::is_gteq(order);
        case VER_LESS:
            return std::is_lt(order);
        default:
            return std::is_lteq(order);
    }
}

// Two files: the administrator's, and the distribution's own.
std::string os_release() {
    constexpr std::size_t kMost = 65536;
    for (const auto* path : {"/etc/os-release", "/usr/lib/os-release"}) {
        const Descriptor file(open(path, O_RDONLY | O_CLOEXEC));
        std::string content(kMost, '\0');
        const auto size = file ? ::read(file.get(), content.data(), content.size()) : -1;
        if (size < 0) continue;
        content.resize(static_cast<std::size_t>(size));
        return content;
    }
    return {};
}

// The shell's quoting, as far as os-release(5) takes it.
std::string unquoted(std::string_view text) {
    const bool is_quoted = !text.empty() && (text[0] == '"' || text[0] == '\'');
    const char quote = is_quoted ? text[0] : '\0';
    std::string result;
    for (std::size_t i = is_quoted ? 1 : 0; i < text.size() && (!is_quoted || text[i] != quote);
         ++i) {
        if (text[i] == '\\' && quote != '\'' && i + 1 < text.size()) ++i;
        result.push_back(text[i]);
    }
    return result;
}

}  // namespace

std::optional<std::string> os_release_value(std::string_view content, std::string_view name) {
    while (!content.empty()) {
        const auto line = content.substr(0, content.find('\n'));
        content.remove_prefix(line.size() == content.size() ? line.size() : line.size() + 1);
        if (line.starts_with(name) && line.substr(name.size()).starts_with('=')) {
            return unquoted(line.substr(name.size() + 1));
        }
    }
    return std::nullopt;
}

HostFacts host_facts() {
    utsname kernel{};
    uname(&kernel);
    const auto product = os_release_value(os_release(), "PRETTY_NAME");
    return {to_utf16_lossy(product ? *product : kernel.sysname), to_utf16_lossy(kernel.release)};
}

}  // namespace tvutil2

ULONGLONG VerSetConditionMask(ULONGLONG mask, DWORD type, BYTE condition) {
    for (const auto place : tvutil2::kPlaces) {
        const auto shift = static_cast<unsigned>(std::countr_zero(place)) * tvutil2::kConditionBits;
        if ((type & place) != 0) {
            mask = (mask & ~(ULONGLONG{7} << shift)) | (ULONGLONG{condition} & 7) << shift;
        }
    }
    return mask;
}

BOOL VerifyVersionInfoW(const OSVERSIONINFOEXW* version, DWORD types, ULONGLONG mask) {
    using namespace tvutil2;
    DWORD known = 0;
    for (const auto place : kPlaces) known |= place;
    if (version == nullptr || types == 0 || (types & ~known) != 0) {
        return fail_with(ERROR_INVALID_PARAMETER);
    }
    BYTE condition = 0;
    auto order = std::strong_ordering::equal;
    for (const auto place : kPlaces) {
        if ((types & place) == 0) continue;
        const auto own = condition_of(mask, place);
        if (own < VER_EQUAL || own > VER_LESS_EQUAL) return fail_with(ERROR_INVALID_PARAMETER);
        if (condition == 0) condition = own;
        const DWORD actual = place == VER_MAJORVERSION ? tvutil2::kMajorVersion : 0;
        if (std::is_eq(order)) order = actual <=> asked(*version, place);
    }
    return holds(order, condition) || fail_with(ERROR_OLD_WIN_VERSION);
}
