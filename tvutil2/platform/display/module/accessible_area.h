// The area of a window that a screen reader finds the program's controls in. For the desktop's
// thread.
#pragma once

#include "tvutil2/platform/display/accessible.h"

#include <gtk/gtk.h>

#include <functional>

namespace tvutil2 {

/// What a screen reader wants of the program.
struct AccessibleWishes {
    std::function<void()> describe;                ///< what is in the windows, from now on
    std::function<void(const RECT& place)> press;  ///< what is there
    std::function<void(HWND control)> focus;       ///< the keyboard in it
    /// Another value in it: a text, or the number of an item or of a position.
    std::function<void(HWND control, std::u16string text, int number)> fill;
};

/// A drawing area whose accessible object has the controls as its children. It has none before it
/// is told of them, and asks for that when somebody looks at it.
[[nodiscard]] GtkWidget* new_accessible_area(AccessibleWishes wishes);

/// What is in the window now. What has changed is said to those who listen.
void describe_area(GtkWidget* area, const Accessible& window);

}  // namespace tvutil2
