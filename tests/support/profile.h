// A throw-away profile for the tests of one process, and the programs they start.
#pragma once

#include <string>

namespace tests {

/// The profile folder of this process: made before the first test, removed after the last one.
/// Everything that the library keeps lives below it (TVUTIL_PROFILE).
const std::string& profile_folder();

/// An empty folder below the profile that no other call got. A host path.
std::string new_folder();

/// The platform's path of a host path ("/x/y" is "C:\x\y").
std::u16string platform_path(const std::string& host);

/// Whole content of a host file; empty if it can't be read.
std::string read_file(const std::string& path);
void write_file(const std::string& path, const std::string& content);

}  // namespace tests
