// Files and resources that hold an icon in several sizes.
//
// Format: a directory of 6 bytes (0, the type 1, the number of images; 16 bits each) and entries:
// width and height (a byte each, 0 for 256), colours, 0, planes and bits a pixel (16 bits each),
// size of the image's data (32), and where it lies in the file (32) or the number of its resource
// (16). The data is a PNG, or a bitmap without its file header and with a mask behind it. Little
// endian.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

#include <optional>
#include <span>
#include <vector>

namespace tvutil2 {

struct IconEntry {
    int width = 0;
    int height = 0;
    DWORD size = 0;
    DWORD place = 0;                  ///< in the file, or the number of the resource
    std::span<const std::byte> head;  ///< the first 12 bytes of the entry
};

/// The image that serves best for a size in pixels: the smallest that isn't smaller, else the
/// largest; of like ones that with the most bits a pixel. None for what is no icon or an empty one.
[[nodiscard]] TVUTIL_API std::optional<IconEntry> best_icon(std::span<const std::byte> directory,
                                                            bool is_resource, int size);

/// A file with that image alone.
[[nodiscard]] std::vector<std::byte> single_icon(const IconEntry& entry,
                                                 std::span<const std::byte> data);

/// Takes an image's data out of the whole file; empty when it isn't in there.
[[nodiscard]] TVUTIL_API std::span<const std::byte> icon_data(const IconEntry& entry,
                                                              std::span<const std::byte> file);

}  // namespace tvutil2
