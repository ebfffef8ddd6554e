// The library's own resources, one image a language, as parts of its file.
#pragma once

#include <cstddef>
#include <span>

namespace tvutil2 {

[[nodiscard]] std::span<const std::span<const std::byte>> own_images();

}  // namespace tvutil2
