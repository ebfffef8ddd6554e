// What "tvutil ini" shares with others, and its parts that are files of their own.
#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace tool {

/// The names of a private-profile file's sections or, if `section` isn't null, its entries as
/// "key=value". Empty, with the last error, when the file can't be read.
[[nodiscard]] std::vector<std::u16string> profile_list(const std::u16string& path,
                                                       const char16_t* section);

/// The names of all sections; Failure{failed} when the file can't be read.
[[nodiscard]] std::vector<std::u16string> sections_of(const std::u16string& path,
                                                      const std::string& shown_name);

void add_ini_convert(CLI::App& ini);
void add_ini_lint(CLI::App& ini);

}  // namespace tool
