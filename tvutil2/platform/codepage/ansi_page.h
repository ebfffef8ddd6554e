// Which code page this installation calls its ANSI one.
#pragma once

#include "tvutil2/platform/base/types.h"

namespace tvutil2::codepage {

/// Reads the setting: one look into the machine hive. The caller keeps the answer.
[[nodiscard]] UINT installed_ansi_page();

}  // namespace tvutil2::codepage
