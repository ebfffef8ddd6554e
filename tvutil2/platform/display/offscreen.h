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
    void set_capture(bool /*has_it*/) override {}
    void set_caret(HWND /*window*/, const RECT& /*place*/) override {}
    [[nodiscard]] bool wants_descriptions() const override { return false; }
    void describe(HWND /*window*/, Accessible /*content*/) override {}
    [[nodiscard]] bool owns_clipboard() override { return true; }
    void offer_text(std::u16string /*text*/) override {}
    [[nodiscard]] bool offers_text() override { return false; }
    bool read_text(std::u16string& /*text*/) override { return false; }
    [[nodiscard]] bool has_file_dialogs() const override { return false; }
    void choose_files(std::shared_ptr<const FileQuestion> /*question*/) override {}
    void withdraw(std::shared_ptr<const FileQuestion> /*question*/) override {}
};

}  // namespace tvutil2
