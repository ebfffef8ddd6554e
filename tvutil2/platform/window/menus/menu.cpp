#include "tvutil2/platform/window/menus/menu.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/window/menus/menu_object.h"

#include <algorithm>
#include <optional>

namespace tvutil2 {
namespace {

std::shared_ptr<MenuObject> menu_of(HMENU handle) {
    auto menu = object_of<MenuObject>(handle);
    if (!menu) SetLastError(ERROR_INVALID_MENU_HANDLE);
    return menu;
}

// Where an item is: in which menu, and at which place there.
struct Found {
    std::shared_ptr<MenuObject> menu;
    std::size_t index = 0;
};

std::optional<Found> find_command(HMENU handle, UINT id, int depth) {
    const auto menu = object_of<MenuObject>(handle);
    if (!menu || depth > kMenuNesting) return std::nullopt;
    for (const auto& item : items_of(handle)) {
        if (item.submenu == nullptr) continue;
        if (auto found = find_command(item.submenu, id, depth + 1)) return found;
    }
    const std::lock_guard guard(menu->lock);
    const auto at = std::ranges::find_if(menu->items, [id](const MenuItem& item) {
        return item.submenu == nullptr && item.id == id;
    });
    if (at == menu->items.end()) return std::nullopt;
    return Found{menu, static_cast<std::size_t>(at - menu->items.begin())};
}

std::optional<Found> find_item(HMENU handle, UINT item, bool by_position) {
    const auto menu = menu_of(handle);
    if (!menu) return std::nullopt;
    if (!by_position) {
        auto found = find_command(handle, item, 1);
        if (!found) SetLastError(ERROR_MENU_ITEM_NOT_FOUND);
        return found;
    }
    const std::lock_guard guard(menu->lock);
    if (item < menu->items.size()) return Found{menu, item};
    SetLastError(ERROR_MENU_ITEM_NOT_FOUND);
    return std::nullopt;
}

// What an item is at the moment; nothing when it has gone meanwhile.
template <class Work>
bool with_item(HMENU handle, UINT item, bool by_position, const Work& work) {
    const auto found = find_item(handle, item, by_position);
    if (!found) return false;
    const std::lock_guard guard(found->menu->lock);
    if (found->index >= found->menu->items.size()) return fail_with(ERROR_MENU_ITEM_NOT_FOUND);
    work(found->menu->items[found->index], *found->menu);
    return true;
}

bool is_by_position(UINT flags) {
    return (flags & MF_BYPOSITION) != 0;
}

MenuItem item_of(UINT flags, UINT_PTR id_or_menu, const char16_t* text) {
    MenuItem item;
    item.type = flags & kMenuTypes;
    item.state = flags & kMenuStates & ~MFS_DEFAULT;
    if ((flags & MF_POPUP) != 0) item.submenu = reinterpret_cast<HMENU>(id_or_menu);
    item.id = static_cast<UINT>(id_or_menu);
    if ((flags & (MF_SEPARATOR | MF_OWNERDRAW)) == 0 && text != nullptr) item.text = text;
    return item;
}

void take_over(const MENUITEMINFOW& info, MenuItem& item) {
    const auto mask = info.fMask;
    if ((mask & (MIIM_TYPE | MIIM_FTYPE)) != 0) item.type = info.fType & kMenuTypes;
    if ((mask & MIIM_STATE) != 0) item.state = info.fState & kMenuStates;
    if ((mask & MIIM_ID) != 0) item.id = info.wID;
    if ((mask & MIIM_SUBMENU) != 0) item.submenu = info.hSubMenu;
    if ((mask & MIIM_DATA) != 0) item.data = info.dwItemData;
    const bool has_text =
        (mask & MIIM_STRING) != 0 || ((mask & MIIM_TYPE) != 0 && (info.fType & MFT_SEPARATOR) == 0);
    if (has_text) item.text = info.dwTypeData != nullptr ? info.dwTypeData : u"";
}

int depth_of(HMENU handle, int so_far) {
    if (so_far > kMenuNesting) return so_far;
    int deepest = so_far;
    for (const auto& item : items_of(handle)) {
        if (item.submenu != nullptr)
            deepest = std::max(deepest, depth_of(item.submenu, so_far + 1));
    }
    return deepest;
}

bool holds(HMENU outer, HMENU wanted, int depth) {
    if (outer == wanted) return true;
    if (depth > kMenuNesting) return false;
    const auto items = items_of(outer);
    return std::ranges::any_of(items, [&](const MenuItem& item) {
        return item.submenu != nullptr && holds(item.submenu, wanted, depth + 1);
    });
}

HMENU take_out(HMENU handle, UINT item, UINT flags, bool& is_done) {
    HMENU submenu = nullptr;
    is_done = with_item(handle, item, is_by_position(flags), [&](MenuItem& one, MenuObject& menu) {
        submenu = one.submenu;
        menu.items.erase(menu.items.begin() + (&one - menu.items.data()));
    });
    return submenu;
}

UINT flags_of(const MenuItem& item) {
    const UINT kind = item.submenu != nullptr ? MF_POPUP : 0;
    return item.type | item.state | kind;
}

}  // namespace

BOOL insert_menu_item(HMENU handle, UINT before, bool by_position, MenuItem item) {
    auto menu = menu_of(handle);
    if (!menu) return FALSE;
    if (item.submenu != nullptr) {
        if (!menu_of(item.submenu)) return FALSE;
        // No menu is a part of itself.
        if (holds(item.submenu, handle, 1) || depth_of(item.submenu, 1) >= kMenuNesting) {
            return fail_with(ERROR_INVALID_PARAMETER);
        }
    }
    auto index = static_cast<std::size_t>(before);
    if (!by_position) {
        const auto found = find_command(handle, before, 1);
        index = found ? found->index : ~std::size_t{0};
        if (found) menu = found->menu;
    }
    const std::lock_guard guard(menu->lock);
    if (menu->items.size() >= kMostMenuItems) return fail_with(ERROR_NOT_ENOUGH_MEMORY);
    index = std::min(index, menu->items.size());
    menu->items.insert(menu->items.begin() + static_cast<std::ptrdiff_t>(index), std::move(item));
    return TRUE;
}

std::vector<MenuItem> items_of(HMENU handle) {
    const auto menu = object_of<MenuObject>(handle);
    if (!menu) return {};
    const std::lock_guard guard(menu->lock);
    return menu->items;
}

}  // namespace tvutil2

using tvutil2::is_by_position;
using tvutil2::MenuItem;
using tvutil2::MenuObject;
using tvutil2::with_item;

HMENU CreatePopupMenu() {
    return tvutil2::make_handle<HMENU>(std::make_shared<MenuObject>());
}

HMENU CreateMenu() {
    return CreatePopupMenu();
}

BOOL DestroyMenu(HMENU menu) {
    const auto items = tvutil2::items_of(menu);
    const auto removed = tvutil2::handle_table::remove(reinterpret_cast<std::uintptr_t>(menu),
                                                       tvutil2::HandleKind::menu);
    if (!removed) return tvutil2::fail_with(ERROR_INVALID_MENU_HANDLE);
    for (const auto& item : items) {
        if (item.submenu != nullptr) DestroyMenu(item.submenu);
    }
    return TRUE;
}

BOOL IsMenu(HMENU menu) {
    return tvutil2::object_of<MenuObject>(menu) ? TRUE : FALSE;
}

BOOL AppendMenuW(HMENU menu, UINT flags, UINT_PTR id_or_menu, const char16_t* text) {
    return tvutil2::insert_menu_item(menu, ~UINT{0}, true,
                                     tvutil2::item_of(flags, id_or_menu, text));
}

BOOL InsertMenuW(HMENU menu, UINT item, UINT flags, UINT_PTR id_or_menu, const char16_t* text) {
    return tvutil2::insert_menu_item(menu, item, is_by_position(flags),
                                     tvutil2::item_of(flags, id_or_menu, text));
}

BOOL InsertMenuItemW(HMENU menu, UINT item, BOOL by_position, const MENUITEMINFOW* info) {
    if (info == nullptr || info->cbSize != sizeof *info) {
        return tvutil2::fail_with(ERROR_INVALID_PARAMETER);
    }
    MenuItem made;
    tvutil2::take_over(*info, made);
    return tvutil2::insert_menu_item(menu, item, by_position != 0, std::move(made));
}

BOOL SetMenuItemInfoW(HMENU menu, UINT item, BOOL by_position, const MENUITEMINFOW* info) {
    if (info == nullptr || info->cbSize != sizeof *info) {
        return tvutil2::fail_with(ERROR_INVALID_PARAMETER);
    }
    if ((info->fMask & MIIM_SUBMENU) != 0 && info->hSubMenu != nullptr &&
        (!tvutil2::menu_of(info->hSubMenu) || tvutil2::holds(info->hSubMenu, menu, 1) ||
         tvutil2::depth_of(info->hSubMenu, 1) >= tvutil2::kMenuNesting)) {
        return tvutil2::fail_with(ERROR_INVALID_PARAMETER);
    }
    return with_item(menu, item, by_position != 0,
                     [info](MenuItem& one, MenuObject&) { tvutil2::take_over(*info, one); })
               ? TRUE
               : FALSE;
}

BOOL GetMenuItemInfoW(HMENU menu, UINT item, BOOL by_position, MENUITEMINFOW* info) {
    if (info == nullptr || info->cbSize != sizeof *info) {
        return tvutil2::fail_with(ERROR_INVALID_PARAMETER);
    }
    return with_item(menu, item, by_position != 0,
                     [info](const MenuItem& one, MenuObject&) {
                         info->fType = one.type;
                         info->fState = one.state;
                         info->wID = one.id;
                         info->hSubMenu = one.submenu;
                         info->dwItemData = one.data;
                         if ((info->fMask & (MIIM_STRING | MIIM_TYPE)) == 0) return;
                         if (info->dwTypeData != nullptr && info->cch > 0) {
                             const auto size = one.text.copy(info->dwTypeData, info->cch - 1);
                             info->dwTypeData[size] = 0;
                         }
                         info->cch = static_cast<UINT>(one.text.size());
                     })
               ? TRUE
               : FALSE;
}

BOOL ModifyMenuW(HMENU menu, UINT item, UINT flags, UINT_PTR id_or_menu, const char16_t* text) {
    const auto fresh = tvutil2::item_of(flags, id_or_menu, text);
    MENUITEMINFOW info{};
    info.cbSize = sizeof info;
    info.fMask = MIIM_FTYPE | MIIM_STATE | MIIM_ID | MIIM_SUBMENU | MIIM_STRING;
    info.fType = fresh.type;
    info.fState = fresh.state;
    info.wID = fresh.id;
    info.hSubMenu = fresh.submenu;
    auto copy = fresh.text;
    info.dwTypeData = copy.data();
    return SetMenuItemInfoW(menu, item, is_by_position(flags) ? TRUE : FALSE, &info);
}

BOOL RemoveMenu(HMENU menu, UINT item, UINT flags) {
    bool is_done = false;
    tvutil2::take_out(menu, item, flags, is_done);
    return is_done ? TRUE : FALSE;
}

BOOL DeleteMenu(HMENU menu, UINT item, UINT flags) {
    bool is_done = false;
    auto* const submenu = tvutil2::take_out(menu, item, flags, is_done);
    if (submenu != nullptr) DestroyMenu(submenu);
    return is_done ? TRUE : FALSE;
}

int GetMenuItemCount(HMENU menu) {
    return tvutil2::menu_of(menu) ? static_cast<int>(tvutil2::items_of(menu).size()) : -1;
}

UINT GetMenuItemID(HMENU menu, int position) {
    UINT id = ~UINT{0};
    with_item(menu, static_cast<UINT>(position), true, [&id](const MenuItem& one, MenuObject&) {
        if (one.submenu == nullptr) id = one.id;
    });
    return id;
}

HMENU GetSubMenu(HMENU menu, int position) {
    HMENU submenu = nullptr;
    with_item(menu, static_cast<UINT>(position), true,
              [&submenu](const MenuItem& one, MenuObject&) { submenu = one.submenu; });
    return submenu;
}

int GetMenuStringW(HMENU menu, UINT item, char16_t* text, int size, UINT flags) {
    int length = 0;
    if (text != nullptr && size > 0) *text = 0;
    with_item(menu, item, is_by_position(flags), [&](const MenuItem& one, MenuObject&) {
        length = static_cast<int>(one.text.size());
        if (text == nullptr || size <= 0) return;
        length = static_cast<int>(one.text.copy(text, static_cast<std::size_t>(size) - 1));
        text[length] = 0;
    });
    return length;
}

UINT GetMenuState(HMENU menu, UINT item, UINT flags) {
    UINT state = ~UINT{0};
    HMENU submenu = nullptr;
    with_item(menu, item, is_by_position(flags), [&](const MenuItem& one, MenuObject&) {
        state = tvutil2::flags_of(one);
        submenu = one.submenu;
    });
    if (submenu == nullptr) return state;
    return (state & 0xFF) | (static_cast<UINT>(GetMenuItemCount(submenu)) & 0xFF) << 8;
}

DWORD CheckMenuItem(HMENU menu, UINT item, UINT flags) {
    DWORD before = ~DWORD{0};
    with_item(menu, item, is_by_position(flags), [&](MenuItem& one, MenuObject&) {
        before = one.state & MF_CHECKED;
        one.state = (one.state & ~MF_CHECKED) | (flags & MF_CHECKED);
    });
    return before;
}

BOOL EnableMenuItem(HMENU menu, UINT item, UINT flags) {
    BOOL before = -1;
    with_item(menu, item, is_by_position(flags), [&](MenuItem& one, MenuObject&) {
        before = static_cast<BOOL>(one.state & MFS_GRAYED);
        one.state = (one.state & ~MFS_GRAYED) | (flags & MFS_GRAYED);
    });
    return before;
}

BOOL CheckMenuRadioItem(HMENU menu, UINT first, UINT last, UINT checked, UINT flags) {
    bool is_done = false;
    for (auto item = first; item <= last && item - first < tvutil2::kMostMenuItems; ++item) {
        with_item(menu, item, is_by_position(flags), [&](MenuItem& one, MenuObject&) {
            one.state = (one.state & ~MFS_CHECKED) | (item == checked ? MFS_CHECKED : 0);
            if (item == checked) one.type |= MFT_RADIOCHECK;
            is_done = is_done || item == checked;
        });
    }
    return is_done ? TRUE : FALSE;
}

BOOL SetMenuDefaultItem(HMENU menu, UINT item, UINT by_position) {
    const auto object = tvutil2::menu_of(menu);
    if (!object) return FALSE;
    const std::lock_guard guard(object->lock);
    for (std::size_t i = 0; i < object->items.size(); ++i) {
        auto& one = object->items[i];
        const bool is_it = by_position != 0 ? i == item : one.id == item;
        one.state = (one.state & ~MFS_DEFAULT) | (is_it && item != ~UINT{0} ? MFS_DEFAULT : 0);
    }
    return TRUE;
}
