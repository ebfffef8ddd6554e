// A keyboard and a mouse for tests and demonstrations.
//
// What is typed and clicked here reaches windows as the person's input does, with any driver: keys
// go to the window in front, the pointer's doings to the window of this process under it.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

#include <string_view>

namespace tvutil2 {

/// Presses and releases a virtual key. `writes` is what it types.
TVUTIL_API void type_key(int key, std::u16string_view writes = {});
TVUTIL_API void press_key(int key);
TVUTIL_API void release_key(int key);
/// A key for each character.
TVUTIL_API void type_text(std::u16string_view text);
/// Where the pointer goes, on the screen, and what its buttons and wheel do there. Button 0 is the
/// left one, 1 the right one, 2 the middle one.
TVUTIL_API void move_pointer(POINT point);
TVUTIL_API void press_button(POINT point, int button = 0);
TVUTIL_API void release_button(POINT point, int button = 0);
TVUTIL_API void click(POINT point, int button = 0);
TVUTIL_API void turn_wheel(POINT point, int delta);
/// The display that shows a top-level window goes away.
TVUTIL_API void lose_display(HWND window);

}  // namespace tvutil2
