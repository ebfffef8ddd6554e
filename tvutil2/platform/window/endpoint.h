// This process's side for others: its listing, and the thread that takes their messages.
#pragma once

namespace tvutil2 {

/// Tells other processes of the titled top-level windows as they are now. The first such window
/// gives the process its place and a thread; a process without one has neither. Where the run-time
/// folder can't be had, others see nothing, and nothing else changes.
void publish_windows();

struct Window;
/// Whether others see it: a top-level window with a title. With the lock of the tree.
[[nodiscard]] bool is_for_others(const Window& window);

}  // namespace tvutil2
