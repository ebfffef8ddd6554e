// Precomposed characters for what is written as a base character and a non-spacing mark.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace tvutil2::codepage {

/// Whether there is any non-spacing mark behind another character: without one there is nothing to
/// compose.
[[nodiscard]] bool has_mark(std::u16string_view text);

/// The text with each base character and mark that has a canonical composition (Unicode Standard
/// Annex 15) written as that character, if the page `holds` it.
[[nodiscard]] std::u16string composed(std::u16string_view text,
                                      const std::function<bool(char32_t)>& holds);

}  // namespace tvutil2::codepage
