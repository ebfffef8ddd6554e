// Keys as the desktop names them, and as the platform does.
#pragma once

#include <gdk/gdk.h>

namespace tvutil2 {

struct Key {
    int key = 0;  ///< virtual key; 0 for one that programs don't hear of
    bool is_extended = false;
};

/// By what a key is on the keyboard, whatever the modifiers make of it. A letter is found by its
/// place in a Latin layout of the person where the layout in use has other letters.
[[nodiscard]] Key key_of(const GdkEventKey& event);

}  // namespace tvutil2
