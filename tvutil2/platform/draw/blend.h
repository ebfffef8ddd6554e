// Pictures drawn over what is there, as their transparency says.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/draw/draw_types.h"
#include "tvutil2/platform/draw/surface.h"

namespace tvutil2 {

/// Draws a part of some pixels, which nobody changes meanwhile, over what is there, scaled
/// smoothly; a rectangle that stands the wrong way round is mirrored. False with
/// ERROR_INVALID_HANDLE for no context, ERROR_MOD_NOT_FOUND where the drawing module isn't
/// installed.
TVUTIL_API bool draw_surface(HDC context, const RECT& to, const Surface& pixels, const RECT& part);

}  // namespace tvutil2
