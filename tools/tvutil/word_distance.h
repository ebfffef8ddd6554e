// Which of some words a mistyped one was meant to be.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tool {

/// The candidate with the fewest letters to put in, leave out, exchange or swap with their
/// neighbours (optimal string alignment); empty when none is near enough to be meant.
[[nodiscard]] std::string nearest(std::string_view word,
                                  const std::vector<std::string>& candidates);

}  // namespace tool
