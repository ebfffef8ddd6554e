// The index of one `.res` image.
//
// Format: a sequence of resources, each a header and its data, both padded to a multiple of 4. A
// header is the data's size and its own (32 bits each), type and name (0xFFFF and a 16-bit number,
// or zero-terminated 16-bit text), padding to a multiple of 4, data version (32), memory flags
// (16), language (16), version (32) and characteristics (32). The first resource is empty, with
// type and name 0: it tells the format from its 16-bit forerunner. Little endian.
#pragma once

#include "tvutil2/platform/base/types.h"
#include "tvutil2/platform/system/resource_name.h"

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace tvutil2 {

struct Resource {
    ResourceName type;
    ResourceName name;
    WORD language = 0;
    std::span<const std::byte> data;
};

/// Negative, 0 or positive: texts without regard to case, and all of them before the numbers.
[[nodiscard]] int compare(const ResourceName& a, const ResourceName& b);

/// What an image holds, in the order of the file; nothing when it is malformed. All of it points
/// into the image, which has to lie at a multiple of 4.
[[nodiscard]] std::optional<std::vector<Resource>> read_image(std::span<const std::byte> image);

}  // namespace tvutil2
