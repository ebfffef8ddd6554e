// When the library was built.
#pragma once

namespace tvutil2 {

/// Three-letter English month, day, year: "May 12 2026".
[[nodiscard]] const char16_t* build_date();

}  // namespace tvutil2
