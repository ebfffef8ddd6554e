// The string by which a caller says which files its dialog shows.
#pragma once

#include "tvutil2/platform/display/driver.h"

#include <vector>

namespace tvutil2 {

/// Reads name, patterns with ";" between them, name, ..., each ended by a zero, up to an empty
/// name; a name without patterns is the last one. Null has none. Nothing is read behind the first
/// two zeros that follow each other.
[[nodiscard]] TVUTIL_API std::vector<FileQuestion::Filter> filters_in(const char16_t* text);

}  // namespace tvutil2
