#include "tests/support/ansi_page.h"

#include "tvutil2/platform/base/wide_text.h"
#include "tvutil2/platform/registry/registry.h"

#include <gtest/gtest.h>

namespace tests {

void install_ansi_page(const char16_t* number, DWORD type) {
    HKEY key = nullptr;
    ASSERT_EQ(
        RegCreateKeyExW(HKEY_LOCAL_MACHINE, u"SYSTEM\\CurrentControlSet\\Control\\Nls\\CodePage", 0,
                        nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr),
        0);
    const auto size = static_cast<DWORD>(lstrlenW(number)) * 2;
    ASSERT_EQ(RegSetValueExW(key, u"ACP", 0, type, reinterpret_cast<const BYTE*>(number), size), 0);
    RegCloseKey(key);
}

void install_ansi_page(const char16_t* number) {
    install_ansi_page(number, REG_SZ);
}

}  // namespace tests
