#include "tvutil2/lang/language_key.h"

#include "tvutil2/frame/product.h"
#include "tvutil2/framework/strings.h"

namespace tvutil2 {
namespace {

CString path_of(const char16_t* product) {
    CString path;
    path.Format(u"Software\\Tolvarine\\%.19s\\%u\\Language", product != nullptr ? product : u"",
                kMajorVersion);
    return path;
}

}  // namespace

LanguageKey LanguageKey::open(HKEY root, const char16_t* product) {
    LanguageKey key;
    key.m_key.open(root, path_of(product), KEY_READ);
    return key;
}

LanguageKey LanguageKey::create(HKEY root, const char16_t* product, DWORD access) {
    LanguageKey key;
    key.m_key.create(root, path_of(product), access);
    return key;
}

std::optional<DWORD> LanguageKey::number(const char16_t* value) const {
    DWORD type = 0, number = 0, size = sizeof number;
    const auto result = RegQueryValueExW(m_key.get(), value, nullptr, &type,
                                         reinterpret_cast<BYTE*>(&number), &size);
    if (result != ERROR_SUCCESS || type != REG_DWORD || size != sizeof number) return std::nullopt;
    return number;
}

void LanguageKey::set_number(const char16_t* value, DWORD number) const {
    RegSetValueExW(m_key.get(), value, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&number),
                   sizeof number);
}

FILETIME LanguageKey::last_write() const {
    FILETIME time{};
    if (is_open()) {
        RegQueryInfoKeyW(m_key.get(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                         nullptr, nullptr, nullptr, &time);
    }
    return time;
}

}  // namespace tvutil2
