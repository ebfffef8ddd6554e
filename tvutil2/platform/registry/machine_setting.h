// Settings of the installation, read by the ground floor itself.
#pragma once

#include <optional>
#include <string>

namespace tvutil2 {

/// A text value below HKEY_LOCAL_MACHINE; nothing when it isn't there, isn't text (REG_SZ) or has
/// more than 16 units: numbers and names are short. Safe from any thread. The caller keeps the
/// answer.
[[nodiscard]] std::optional<std::u16string> machine_setting(const char16_t* key,
                                                            const char16_t* value);

}  // namespace tvutil2
