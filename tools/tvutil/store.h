// The files behind the registry's roots, for what is said about them.
#pragma once

#include "tvutil2/platform/registry/registry.h"

#include <string>

namespace tool {

/// Failure{failed}, naming the file, when the store behind a root can't be looked at: to the
/// registry it is as if it weren't there.
void check_store(HKEY root);
/// "what, in FILE".
[[nodiscard]] std::string in_store(const std::string& what, HKEY root);

}  // namespace tool
