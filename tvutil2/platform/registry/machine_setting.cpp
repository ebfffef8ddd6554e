#include "tvutil2/platform/registry/machine_setting.h"

#include "tvutil2/platform/registry/open_key.h"

namespace tvutil2 {

std::optional<std::u16string> machine_setting(const char16_t* key, const char16_t* value) {
    constexpr DWORD kMostUnits = 16;
    OpenKey opened;
    if (opened.open(HKEY_LOCAL_MACHINE, key, KEY_READ) != ERROR_SUCCESS) return std::nullopt;
    char16_t text[kMostUnits + 1] = {};
    DWORD type = 0;
    DWORD size = kMostUnits * sizeof(char16_t);
    const auto error =
        RegQueryValueExW(opened.get(), value, nullptr, &type, reinterpret_cast<BYTE*>(text), &size);
    if (error != ERROR_SUCCESS || type != REG_SZ) return std::nullopt;
    return std::u16string(text);
}

}  // namespace tvutil2
