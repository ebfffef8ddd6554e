// The gallery's pages of controls.
#pragma once

#include <memory>

#include "examples/gallery/dialogs.h"

namespace gallery {

std::unique_ptr<CDialog> make_fields();
std::unique_ptr<CDialog> make_lists();
std::unique_ptr<CDialog> make_views();
std::unique_ptr<CDialog> make_bars();
std::unique_ptr<CDialog> make_menus();
std::unique_ptr<CDialog> make_animation();
std::unique_ptr<CDialog> make_directions();
/// The library's dialog of features, with a plain list of switches in it.
std::unique_ptr<CDialog> make_features();

/// The pop-up of the page of menus, with its item "Arrange" chosen.
void open_menu(CDialog& page);

}  // namespace gallery
