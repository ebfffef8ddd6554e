// Text from a code page and to one, for one call: short texts stay in the object.
#pragma once

#include "tvutil2/platform/base/types.h"

#include <string>
#include <string_view>

namespace tvutil2 {

/// Texts of so many units are converted in one pass and without an allocation.
inline constexpr std::size_t kShortText = 1024;

/// 16-bit text of bytes in a code page.
class WideText {
  public:
    /// A zero must stand behind the bytes, as it does in a std::string.
    WideText(std::string_view bytes, UINT page);
    WideText(const WideText&) = delete;
    WideText& operator=(const WideText&) = delete;

    /// Up to the first zero; empty when the platform refused.
    [[nodiscard]] std::u16string_view view() const { return m_view; }

  private:
    char16_t m_short[kShortText];
    std::u16string m_long;
    std::u16string_view m_view;
};

/// Bytes of 16-bit text in a code page.
class NarrowText {
  public:
    /// A zero must stand behind the text. `data_lost`, if not null, is set to true when a
    /// replacement was used; `unknown_char` is that replacement, or 0 for the page's own.
    NarrowText(std::u16string_view text, UINT page, bool* data_lost, char unknown_char);
    NarrowText(const NarrowText&) = delete;
    NarrowText& operator=(const NarrowText&) = delete;

    /// Up to the first zero; empty when the platform refused.
    [[nodiscard]] std::string_view view() const { return m_view; }

  private:
    char m_short[kShortText * 4];
    std::string m_long;
    std::string_view m_view;
};

}  // namespace tvutil2
