// Languages as they are typed and shown.
#pragma once

#include "tvutil2/platform/base/types.h"

#include <optional>
#include <string>
#include <string_view>

namespace tool {

/// A whole number, decimal or with "0x" before it; nothing for other text.
[[nodiscard]] std::optional<unsigned int> number_of(std::string_view text);

/// "0x0407".
[[nodiscard]] std::string shown_id(LANGID id);
/// "German"; empty for one that lists don't show.
[[nodiscard]] std::string shown_name(LANGID id);

/// Of "de", "zh-TW", "German" or a number; Failure{usage} for what is no language.
[[nodiscard]] LANGID language_id(const std::string& text);

/// Prints all that the family speaks: id, name, and how a product's module for it ends.
void print_languages(bool as_json);

}  // namespace tool
