// What stands behind a menu's handle.
#pragma once

#include "tvutil2/platform/base/handle_table.h"
#include "tvutil2/platform/window/menus/menu.h"

#include <mutex>
#include <string>
#include <vector>

namespace tvutil2 {

struct MenuItem {
    UINT type = 0;   ///< MFT_ flags
    UINT state = 0;  ///< MFS_ flags
    UINT id = 0;
    HMENU submenu = nullptr;
    std::u16string text;
    std::uintptr_t data = 0;

    [[nodiscard]] bool is_separator() const { return (type & MFT_SEPARATOR) != 0; }
    [[nodiscard]] bool is_disabled() const { return (state & MFS_GRAYED) != 0; }
};

struct MenuObject : HandleObject {
    static constexpr auto kHandleKind = HandleKind::menu;
    MenuObject() : HandleObject(kHandleKind) {}

    std::mutex lock;
    std::vector<MenuItem> items;
};

inline constexpr int kMenuNesting = 16;
inline constexpr std::size_t kMostMenuItems = 10000;

inline constexpr UINT kMenuTypes =
    MFT_SEPARATOR | MFT_RADIOCHECK | MF_OWNERDRAW | MF_MENUBARBREAK | 0x40;
inline constexpr UINT kMenuStates = MFS_GRAYED | MFS_CHECKED | MFS_DEFAULT | MF_HILITE;

/// In front of an item, behind the last one where there is no such; as InsertMenuItemW.
BOOL insert_menu_item(HMENU menu, UINT before, bool by_position, MenuItem item);
/// A copy; none for what is no menu.
[[nodiscard]] std::vector<MenuItem> items_of(HMENU menu);

}  // namespace tvutil2
