// The registry key that holds a product's choice of language, for the length of a look.
#pragma once

#include "tvutil2/platform/registry/open_key.h"

#include <optional>

namespace tvutil2 {

class LanguageKey {
  public:
    static constexpr const char16_t* kUser = u"User";
    static constexpr const char16_t* kTemporary = u"Temporary";

    /// To read; of a product's name at most 19 units count, and null has none.
    static LanguageKey open(HKEY root, const char16_t* product);
    static LanguageKey create(HKEY root, const char16_t* product, DWORD access);

    [[nodiscard]] bool is_open() const { return static_cast<bool>(m_key); }
    /// A value of type REG_DWORD; nothing for one of another type, or none.
    [[nodiscard]] std::optional<DWORD> number(const char16_t* value) const;
    void set_number(const char16_t* value, DWORD number) const;
    /// Time 0 for a key that isn't there.
    [[nodiscard]] FILETIME last_write() const;

  private:
    OpenKey m_key;
};

}  // namespace tvutil2
