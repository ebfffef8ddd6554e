// Menus out of templates and resources.
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/resource/resource.h"
#include "tvutil2/platform/window/menus/menu_object.h"
#include "tvutil2/platform/window/menus/menu_template.h"

#include <utility>

namespace tvutil2 {
namespace {

HMENU build(const std::vector<MenuTemplateItem>& items) {
    auto* const menu = CreatePopupMenu();
    if (menu == nullptr) return nullptr;
    for (const auto& each : items) {
        MenuItem item;
        item.type = each.type & kMenuTypes;
        item.state = each.state & kMenuStates;
        item.id = each.id;
        item.text = each.text;
        if (each.is_popup) item.submenu = build(each.items);
        if (each.is_popup && item.submenu == nullptr) {
            DestroyMenu(menu);
            return nullptr;
        }
        insert_menu_item(menu, ~UINT{0}, true, std::move(item));
    }
    return menu;
}

}  // namespace
}  // namespace tvutil2

HMENU LoadMenuIndirectW(const void* menu_template) {
    if (menu_template == nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    constexpr std::size_t kMost = 0x10000;
    const auto known = tvutil2::bytes_in_resource(menu_template);
    const auto items = tvutil2::read_menu_template(
        {static_cast<const std::byte*>(menu_template), known != 0 ? known : kMost});
    if (items) return tvutil2::build(*items);
    SetLastError(ERROR_INVALID_DATA);
    return nullptr;
}

HMENU LoadMenuW(HINSTANCE module, const char16_t* name) {
    auto* const found = FindResourceW(module, name, RT_MENU);
    return found == nullptr ? nullptr
                            : LoadMenuIndirectW(LockResource(LoadResource(module, found)));
}
