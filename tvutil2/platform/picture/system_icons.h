// The signs in message boxes, drawn by outlines so that they are crisp at every size.
#pragma once

#include "tvutil2/platform/draw/surface.h"

namespace tvutil2 {

/// The icon of a number (IDI_...) at a size in pixels, in the theme's colours. Null with
/// ERROR_RESOURCE_NAME_NOT_FOUND for another number, or where drawing isn't installed.
[[nodiscard]] std::shared_ptr<Surface> system_icon(unsigned id, int size);

}  // namespace tvutil2
