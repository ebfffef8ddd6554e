// Guests: windows inside a top-level window of another thread. The pointer's doings come to the
// thread of the top-level window, which hands on what is theirs.
#pragma once

#include "tvutil2/platform/window/input.h"

namespace tvutil2 {

/// Whether an input was handed on: its window isn't a top-level one then.
[[nodiscard]] bool is_handed_on(const RawInput& input);
/// Whether a window is another thread's than the calling one.
[[nodiscard]] bool is_guest(HWND window);
/// Hands a pointer's doings on to a guest.
void hand_on(InputState& state, RawInput input, HWND guest);
/// The pointer isn't over the guest any more that had it last.
void leave_guest(InputState& state, const RawInput& input);

/// The thread's capture is another one now. One that a guest has holds for all of its top-level
/// window.
void note_capture(HWND before, HWND now);
/// The guest inside `top` that has the capture, or null. With the lock of the tree.
[[nodiscard]] Window* capturing_guest(const Window& top);

}  // namespace tvutil2
