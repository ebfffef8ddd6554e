// Pictures of everything, made without a display.
#pragma once

#include <string>

namespace gallery {

/// Writes a PNG file of each dialog: the gallery's in every look and scale, the library's in every
/// language. How many; -1 when one can't be written.
int write_pictures(const std::string& folder);

}  // namespace gallery
