#include "tvutil2/platform/process/environment.h"

#include "tvutil2/platform/base/fork_lock.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/utf.h"
#include "tvutil2/platform/base/wide_text.h"

#include <unistd.h>

#include <cstdlib>
#include <mutex>
#include <optional>
#include <string>

namespace {

constinit std::mutex g_environment_lock;
const tvutil2::ForkLock g_fork_safe(g_environment_lock, tvutil2::ForkRank::area);

// The name under which the host has the variable.
std::optional<std::string> host_name(const std::u16string& name) {
    auto exact = tvutil2::to_utf8(name);
    if (!exact) return std::nullopt;
    if (std::getenv(exact->c_str()) != nullptr) return exact;
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
        const std::string_view text(*entry);
        const auto candidate = text.substr(0, text.find('='));
        const auto wide = tvutil2::to_utf16(candidate);
        if (wide && _wcsicmp(wide->c_str(), name.c_str()) == 0) return std::string(candidate);
    }
    return std::nullopt;
}

bool is_valid_name(const char16_t* name) {
    return name != nullptr && *name != 0 &&
           std::u16string_view(name).find(u'=') == std::u16string_view::npos;
}

}  // namespace

DWORD GetEnvironmentVariableW(const char16_t* name, char16_t* buffer, DWORD size) {
    std::u16string value;
    {
        const std::lock_guard guard(g_environment_lock);
        const auto found = is_valid_name(name) ? host_name(name) : std::nullopt;
        const char* text = found ? std::getenv(found->c_str()) : nullptr;
        if (text == nullptr) return tvutil2::fail_with(ERROR_ENVVAR_NOT_FOUND);
        value = tvutil2::to_utf16_lossy(text);
    }
    if (buffer == nullptr || value.size() >= size) return static_cast<DWORD>(value.size() + 1);
    value.copy(buffer, value.size());
    buffer[value.size()] = 0;
    if (value.empty()) SetLastError(ERROR_SUCCESS);
    return static_cast<DWORD>(value.size());
}

BOOL SetEnvironmentVariableW(const char16_t* name, const char16_t* value) {
    if (!is_valid_name(name)) return tvutil2::fail_with(ERROR_INVALID_PARAMETER);
    const std::lock_guard guard(g_environment_lock);
    const auto found = host_name(name);
    if (value == nullptr) {
        if (!found) return tvutil2::fail_with(ERROR_ENVVAR_NOT_FOUND);
        return unsetenv(found->c_str()) == 0 || tvutil2::fail_with_errno();
    }
    const auto new_name = found ? found : tvutil2::to_utf8(name);
    const auto text = tvutil2::to_utf8(value);
    if (!new_name || !text) return tvutil2::fail_with(ERROR_INVALID_PARAMETER);
    return setenv(new_name->c_str(), text->c_str(), 1) == 0 || tvutil2::fail_with_errno();
}
