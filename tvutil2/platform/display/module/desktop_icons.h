// Pictures as the desktop has them. For the desktop's thread.
#pragma once

#include "tvutil2/platform/draw/surface.h"

#include <gtk/gtk.h>

#include <memory>
#include <span>

namespace tvutil2 {

/// Gives a window its icon at the sizes that there are, or none. Wayland has no icons of windows.
void set_window_icons(GtkWindow* window, std::span<const std::shared_ptr<const Surface>> icons);

}  // namespace tvutil2
