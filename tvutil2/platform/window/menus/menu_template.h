// Menu templates as resource compilers write them (MENU and MENUEX), read into plain values.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tvutil2 {

struct MenuTemplateItem {
    UINT type = 0, state = 0, id = 0;
    std::u16string text;
    bool is_popup = false;
    std::vector<MenuTemplateItem> items;  ///< of a pop-up
};

/// None for what isn't one as a whole, nests deeper than 16 or has more than 10,000 items.
[[nodiscard]] TVUTIL_API std::optional<std::vector<MenuTemplateItem>> read_menu_template(
    std::span<const std::byte> bytes);

}  // namespace tvutil2
