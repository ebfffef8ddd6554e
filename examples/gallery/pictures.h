// Pictures of everything, made without a display.
#pragma once

#include <string>

namespace gallery {

/// Writes a PNG file of each dialog: the gallery's in every look and scale, the library's in every
/// language, in the first look or in all that differ. How many; -1 when one can't be written.
int write_pictures(const std::string& folder, bool in_every_look);

}  // namespace gallery
