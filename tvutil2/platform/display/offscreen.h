// The driver without a screen: all there is to see is in the surfaces. TVUTIL_DISPLAY=offscreen
// chooses it.
#pragma once

#include "tvutil2/platform/display/driver.h"

namespace tvutil2 {

class OffscreenDriver : public Driver {
  public:
    [[nodiscard]] bool has_frames() const override { return false; }
    void show(const Shown& /*window*/, bool /*activates*/) override {}
    void hide(HWND /*window*/) override {}
    void activate(HWND /*window*/) override {}
    void present(HWND /*window*/, std::shared_ptr<Surface> /*surface*/,
                 const Region& /*damage*/) override {}
    void set_cursor(CursorShape /*shape*/) override {}
};

}  // namespace tvutil2
