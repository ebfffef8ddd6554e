// A throw-away profile for a benchmark program.
#pragma once

#include <string>

namespace bench {

/// The profile folder of this process, removed at its end.
const std::string& profile_folder();

}  // namespace bench
