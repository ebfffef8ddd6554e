// The text that is on its way from one control to another.
#pragma once

#include "tvutil2/platform/base/types.h"

#include <string>
#include <string_view>

namespace tvutil2 {

/// False when it can't be put there.
bool put_clipboard_text(HWND owner, std::u16string_view text);
/// Empty where there is none.
[[nodiscard]] std::u16string clipboard_text(HWND owner);

}  // namespace tvutil2
