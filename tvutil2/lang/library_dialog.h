// The library's own dialogs, in the language of the thread that asks.
#pragma once

#include "tvutil2/framework/dialog.h"
#include "tvutil2/platform/resource/resource.h"

#include <optional>

namespace tvutil2 {

/// Of a dialog that the library has; null for what isn't there or can't be loaded.
struct LibraryDialog {
    HRSRC resource = nullptr;
    HGLOBAL loaded = nullptr;
};

/// In the calling thread's language, or in whichever the system chooses.
[[nodiscard]] TVUTIL_API LibraryDialog find_library_dialog(WORD id);

/// What DoModal gives, but nothing where there is no display.
[[nodiscard]] std::optional<INT_PTR> run_where_shown(CDialog& dialog);

}  // namespace tvutil2
