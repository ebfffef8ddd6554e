// The capture of a loop that follows the pointer.
#pragma once

#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/quietly.h"

namespace tvutil2 {

/// A window has it until release(), or until a handler has raised something.
class HeldCapture {
  public:
    explicit HeldCapture(HWND window) : m_window(window) { SetCapture(window); }
    ~HeldCapture() {
        quietly([this] { release(); });
    }
    HeldCapture(const HeldCapture&) = delete;
    HeldCapture& operator=(const HeldCapture&) = delete;

    void release() const {
        if (is_held()) ReleaseCapture();
    }
    /// Nobody else has taken it.
    [[nodiscard]] bool is_held() const { return GetCapture() == m_window; }

  private:
    HWND m_window;
};

}  // namespace tvutil2
