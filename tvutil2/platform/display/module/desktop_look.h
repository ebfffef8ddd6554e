// What the desktop's settings say: monitors, scale, colours and font.
#pragma once

#include "tvutil2/platform/display/monitors.h"
#include "tvutil2/platform/draw/theme.h"

#include <gtk/gtk.h>

#include <string>
#include <vector>

namespace tvutil2 {

/// The primary one first, in pixels.
[[nodiscard]] std::vector<Monitor> desktop_monitors();
/// Dots an inch for what is shown in `scale` pixels for each of the desktop's own units.
[[nodiscard]] UINT desktop_dpi(int scale);
/// The colours of the desktop's theme, and what the person has said to prefer, which goes first.
[[nodiscard]] ThemeMode desktop_theme_mode();
/// Asks the desktop's settings service, on the session's bus, for that preference, and calls
/// `changed` when it is known and when it is another. Nothing where there is no such service.
void watch_colors(void (*changed)(void* data), void* data);
/// The family of the desktop's font; empty for none.
[[nodiscard]] std::u16string desktop_font();

[[nodiscard]] std::u16string utf16_of(const char* text);
[[nodiscard]] std::string utf8_of(const std::u16string& text);

}  // namespace tvutil2
