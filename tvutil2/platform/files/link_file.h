// The content of a shortcut, and its form as a desktop entry.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

#include <optional>
#include <string>
#include <string_view>

namespace tvutil2 {

struct LinkFields {
    std::u16string path;
    std::u16string description;
    std::u16string arguments;
    std::u16string icon;
    int icon_index = 0;
    WORD hot_key = 0;
};

/// The file's text (UTF-8). `name` is shown by file managers. Fields of any content come back.
[[nodiscard]] TVUTIL_API std::string link_text(const LinkFields& fields, std::string_view name);

/// Nothing for a text that isn't a link: no "[Desktop Entry]" in front, no path, a number out of
/// its range, a broken escape.
[[nodiscard]] TVUTIL_API std::optional<LinkFields> parse_link(std::string_view text);

}  // namespace tvutil2
