// What an application's object is made of: its thread and its name.
#pragma once

#include <string>

namespace tvutil2 {

/// The calling thread is the application's from now on.
void application_starts_here();

/// The running executable's name without folder and extension.
[[nodiscard]] std::u16string executable_name();

}  // namespace tvutil2
