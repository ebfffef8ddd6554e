// Names of keys and values as the store keeps them, and sub-key paths taken apart.
#pragma once

#include "tvutil2/platform/base/types.h"

#include <string>
#include <string_view>
#include <vector>

namespace tvutil2 {

/// Big-endian bytes of a name: their order is the order of the units.
[[nodiscard]] std::string stored_name(std::u16string_view name);
/// The same of the name in upper case, by which names are compared.
[[nodiscard]] std::string folded_name(std::u16string_view name);
[[nodiscard]] std::u16string name_of_stored(std::string_view bytes);

/// The parts of a sub-key name; none for an empty one. Repeated and trailing separators are passed
/// over, a leading one isn't. Errors as RegOpenKeyExW tells them.
[[nodiscard]] LONG split_key_path(std::u16string_view path,
                                  std::vector<std::u16string_view>& parts);

}  // namespace tvutil2
