// The part of "tvutil url" that starts a product.
#pragma once

#include <CLI/CLI.hpp>

namespace tool {

/// Adds "launch" to "tvutil url".
void add_url_launch(CLI::App& url);

}  // namespace tool
