// What the creation and the end of windows share.
#pragma once

#include "tvutil2/platform/window/window_table.h"

namespace tvutil2 {

[[nodiscard]] inline bool is_child_style(DWORD style) {
    return (style & (WS_CHILD | WS_POPUP)) == WS_CHILD;
}

/// The window's record if it is the calling thread's.
[[nodiscard]] Window* own_window(HWND window);
/// WM_PARENTNOTIFY for all windows that a child is in.
void notify_parents(HWND window, UINT event);
/// WM_NCDESTROY from the children up, and the end of each.
void finish_window(HWND window);
/// Without a message: what is left when a procedure threw, or when the thread has ended.
void end_quietly(HWND window);

/// Ends a window unless it is kept: one that was refused, or whose procedure threw on the way.
class EndUnlessKept {
  public:
    explicit EndUnlessKept(HWND window) : m_window(window) {}
    ~EndUnlessKept() {
        if (m_window != nullptr && own_window(m_window) != nullptr) end_quietly(m_window);
    }
    EndUnlessKept(const EndUnlessKept&) = delete;
    EndUnlessKept& operator=(const EndUnlessKept&) = delete;
    void keep() { m_window = nullptr; }

  private:
    HWND m_window;
};

}  // namespace tvutil2
