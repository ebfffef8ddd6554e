// Guests: windows inside a top-level window of another thread, their host. What the person does
// comes to the host's thread, which hands on what is theirs, with the keys that are down.
#pragma once

#include "tvutil2/platform/window/input.h"

namespace tvutil2 {

/// Whether an input was handed on: its window isn't a top-level one then.
[[nodiscard]] bool is_handed_on(const RawInput& input);
/// Whether a window is another thread's than the calling one.
[[nodiscard]] bool is_guest(HWND window);
/// Hands a pointer's doings, or a key, on to a guest.
void hand_on(InputState& state, RawInput input, HWND guest);
/// Has a guest in a window of the calling thread take the focus. False for any other window.
bool offer_focus(HWND guest);
/// The guest that has the focus while the thread's own windows don't, or null.
[[nodiscard]] HWND focused_guest(const InputState& state);
/// The thread's focus has changed: tells hosts of its windows, and the guest that had it.
void tell_focus(InputState& state, HWND before, HWND now);
/// A guest says that it has taken the focus, or that it has it no longer; or the host says so.
void follow_guest_focus(InputState& state, const RawInput& input);
/// The pointer isn't over the guest any more that had it last.
void leave_guest(InputState& state, const RawInput& input);

/// The thread's capture is another one now. One that a guest has holds for all of its top-level
/// window.
void note_capture(HWND before, HWND now);
/// The guest inside `top` that has the capture, or null. With the lock of the tree.
[[nodiscard]] Window* capturing_guest(const Window& top);

}  // namespace tvutil2
