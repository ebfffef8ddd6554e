// How a process tells others of its windows: one small file, read as a whole.
//
// All numbers are little-endian: "TVW1", then for each window its handle (8 bytes), its thread (4),
// its style (4), the units of its class's name and of its title (4 each), and both texts in UTF-16.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tvutil2 {

struct ListedWindow {
    std::uint64_t handle;
    DWORD thread;
    DWORD style;
    std::u16string class_name;
    std::u16string title;
};

[[nodiscard]] std::string encode_listing(const std::vector<ListedWindow>& windows);
/// Nothing for what is no listing.
[[nodiscard]] TVUTIL_API std::optional<std::vector<ListedWindow>> decode_listing(
    std::string_view bytes);

}  // namespace tvutil2
