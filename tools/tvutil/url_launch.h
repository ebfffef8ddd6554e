// The part of "tvutil url" that starts a product.
#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace tool {

/// The URL of an argument; "-" is standard input without its last line end.
[[nodiscard]] std::u16string url_argument(const std::string& argument);

/// Adds "launch" to "tvutil url".
void add_url_launch(CLI::App& url);

}  // namespace tool
