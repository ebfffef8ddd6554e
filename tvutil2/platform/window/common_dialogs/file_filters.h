// The string by which a caller says which files its dialog shows.
#pragma once

#include "tvutil2/platform/display/driver.h"

#include <string>
#include <vector>

namespace tvutil2 {

/// Reads name, patterns with ";" between them, name, ..., each ended by a zero, up to an empty
/// name; a name without patterns is the last one. Null has none. Nothing is read behind the first
/// two zeros that follow each other.
[[nodiscard]] TVUTIL_API std::vector<FileQuestion::Filter> filters_in(const char16_t* text);

/// What names get while a filter is in force: the extension of its first pattern, "txt" of
/// "*.txt"; empty where that isn't one.
[[nodiscard]] std::u16string extension_under(const FileQuestion& question, std::size_t filter);

}  // namespace tvutil2
