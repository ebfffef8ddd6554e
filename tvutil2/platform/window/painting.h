// What the loop of a thread does about painting.
#pragma once

#include "tvutil2/platform/window/thread_queue.h"

namespace tvutil2 {

/// Sends WM_NCPAINT to a window of which nothing but the frame is out of date; false for any other.
bool paint_frame_only(HWND window);
/// WM_PAINT for the first window of the thread that is out of date.
bool take_paint(ThreadQueue& queue, MSG& message, const MessageFilter& filter);
/// Presents what the thread's top-level windows have got since the last time.
void present_damage(ThreadQueue& queue);

}  // namespace tvutil2
