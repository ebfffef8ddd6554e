// The frame that fields share: edits, lists, trees.
#pragma once

#include "tvutil2/platform/base/types.h"

namespace tvutil2 {

/// Whether the pointer is over a field; part of a control's state.
struct FieldLook {
    bool is_hot = false;
    UINT color_message = 0;  ///< WM_CTLCOLOR..., by which the parent is asked for its inside
};

/// The size and the look of the frame, and what changes it. False for what the control has to
/// handle, which may have changed the look all the same.
bool handle_field_message(HWND window, FieldLook& look, UINT message, WPARAM wparam, LPARAM lparam,
                          LRESULT& result);

}  // namespace tvutil2
