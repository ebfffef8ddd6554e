// What this process holds, to be compared before and after.
#pragma once

#include <cstddef>
#include <string>

namespace gallery {

struct Held {
    std::size_t handles = 0;  ///< of the ground floor
    std::size_t windows = 0;  ///< of the calling thread, their children with them
    std::size_t descriptors = 0;
    std::size_t bytes = 0;  ///< lent by malloc; 0 under a sanitizer, which lends by itself
};

[[nodiscard]] Held held_now();
[[nodiscard]] std::string words_of(const Held& held);

}  // namespace gallery
