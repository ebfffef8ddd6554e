// Menus, for somebody who doesn't see them.
#pragma once

#include "tvutil2/platform/display/accessible.h"

namespace tvutil2 {

/// A text without the mark of its mnemonic, and that.
[[nodiscard]] std::u16string without_mnemonic(const std::u16string& text, char16_t& mnemonic);

/// The bar of a window that has one, with its items.
[[nodiscard]] Accessible accessible_menu_bar(HWND window);
/// Adds the items to a menu that is open.
void describe_menu(Accessible& menu);

}  // namespace tvutil2
