// Dialogs that run in a loop of the caller's.
#pragma once

#include "tvutil2/platform/window/window_types.h"

#include <functional>

namespace tvutil2 {

struct DialogRun {
    HINSTANCE instance;
    const void* dialog_template;
    HWND parent;
    DLGPROC procedure;
    LPARAM parameter;
};

/// As DialogBoxIndirectParamW, but that `pump`, which is given the window, takes and
/// dispatches each message. It gives false for WM_QUIT, and has posted it again then.
[[nodiscard]] INT_PTR run_dialog(const DialogRun& dialog, const std::function<bool(HWND)>& pump);

/// A dialog as a visible child without a frame, whatever its template says; null on failure, as
/// CreateDialogIndirectParamW.
[[nodiscard]] HWND make_child_dialog(const DialogRun& dialog);

/// The pump of a dialog that nobody else has a say in. `takes` sees each message first, and gives
/// true for those that it keeps.
[[nodiscard]] bool pump_dialog(HWND dialog, const std::function<bool(const MSG&)>& takes = {});

}  // namespace tvutil2
