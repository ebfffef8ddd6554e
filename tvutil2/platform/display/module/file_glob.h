// Patterns for names of files, as the desktop's dialogs take them.
#pragma once

#include <string>

namespace tvutil2 {

/// The pattern for the desktop's glob, which knows case, and a dot as any other character: "*.*"
/// finds every file here.
[[nodiscard]] std::string caseless_glob(const std::u16string& pattern);

}  // namespace tvutil2
