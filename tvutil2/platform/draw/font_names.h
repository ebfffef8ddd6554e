// Which of the host's fonts stand for the platform's.
#pragma once

#include "tvutil2/platform/draw/draw_types.h"
#include "tvutil2/platform/draw/engine.h"

namespace tvutil2 {

/// What to look for on the host for a font of the platform: the family itself, and behind it
/// whatever takes its place.
[[nodiscard]] FontRequest font_request(const LOGFONTW& record);

}  // namespace tvutil2
