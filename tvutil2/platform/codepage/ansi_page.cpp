#include "tvutil2/platform/codepage/ansi_page.h"

#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/codepage/codepage.h"
#include "tvutil2/platform/codepage/page_table.h"
#include "tvutil2/platform/registry/registry.h"

#include <optional>
#include <string>

namespace tvutil2::codepage {
namespace {

constexpr const char16_t* kKey = u"SYSTEM\\CurrentControlSet\\Control\\Nls\\CodePage";
constexpr DWORD kMostUnits = 16;

std::optional<std::u16string> setting() {
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, kKey, 0, KEY_READ, &key) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    char16_t text[kMostUnits + 1] = {};
    DWORD type = 0;
    DWORD size = kMostUnits * sizeof(char16_t);
    const auto error =
        RegQueryValueExW(key, u"ACP", nullptr, &type, reinterpret_cast<BYTE*>(text), &size);
    RegCloseKey(key);
    if (error != ERROR_SUCCESS || type != REG_SZ) return std::nullopt;
    return std::u16string(text);
}

// The library's own texts and formats count on ASCII being itself.
bool keeps_ascii(const PageTable& page) {
    for (BYTE byte = 0; byte < 0x80; ++byte) {
        if (page.unit_of(byte) != byte) return false;
    }
    return true;
}

}  // namespace

UINT installed_ansi_page() {
    const auto text = setting();
    const auto number = text ? _wtoi(text->c_str()) : 0;
    if (number <= 0) return CP_UTF8;
    const auto* page = PageTable::of(static_cast<UINT>(number));
    return page != nullptr && keeps_ascii(*page) ? static_cast<UINT>(number) : CP_UTF8;
}

}  // namespace tvutil2::codepage
