// What a person may do with the text of an edit, in a menu: by the secondary button or the key for
// it.
#pragma once

#include "tvutil2/platform/window/controls/edit_input.h"

namespace tvutil2 {

/// `where` is WM_CONTEXTMENU's: a place on the screen, or -1 for the caret. Returns when the person
/// has chosen or gone away; the window may be gone by then.
void show_edit_menu(EditInput& edit, HWND window, LPARAM where);

}  // namespace tvutil2
