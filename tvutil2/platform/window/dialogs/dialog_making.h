// The way from a template to a dialog's windows.
#pragma once

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/window/dialogs/dialog_template.h"
#include "tvutil2/platform/window/quietly.h"
#include "tvutil2/platform/window/window.h"

#include <optional>

namespace tvutil2 {

/// The template at an address, which is read as CreateDialogIndirectParamW says; nothing with its
/// errors.
[[nodiscard]] std::optional<DialogTemplate> template_at(const void* address);
/// The dialog with its controls, shown if its style says so; null with the last error.
[[nodiscard]] HWND make_dialog(HINSTANCE instance, const DialogTemplate& dialog, HWND parent,
                               DLGPROC procedure, LPARAM parameter);

/// Ends a dialog that couldn't be made as a whole, on every way out.
class EndUnlessMade {
  public:
    explicit EndUnlessMade(HWND dialog) : m_dialog(dialog) {}
    ~EndUnlessMade() {
        if (m_dialog == nullptr || !IsWindow(m_dialog)) return;
        const auto error = GetLastError();
        quietly([this] { DestroyWindow(m_dialog); });
        SetLastError(error);
    }
    EndUnlessMade(const EndUnlessMade&) = delete;
    EndUnlessMade& operator=(const EndUnlessMade&) = delete;
    void keep() { m_dialog = nullptr; }

  private:
    HWND m_dialog;
};

}  // namespace tvutil2
