// The messages of painting that DefWindowProcW answers.
#pragma once

#include "tvutil2/platform/base/types.h"

namespace tvutil2 {

/// False for any other message.
bool handle_paint_message(HWND window, UINT message, WPARAM wparam, LRESULT& result);
/// The frame is painted anew when the thread has time: another title, another look.
void repaint_frame(HWND window);

}  // namespace tvutil2
