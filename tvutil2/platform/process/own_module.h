// The library's own modules: what only some programs need, with the host's libraries that it stands
// on.
#pragma once

namespace tvutil2 {

/// The C function `function` of the module "tvutil2-NAME.so", which lies in the folder "tvutil2"
/// beside the library's file and is nowhere else looked for. A module is loaded when it is first
/// asked for, and stays. Null with ERROR_MOD_NOT_FOUND or ERROR_PROC_NOT_FOUND. Safe from any
/// thread; costs a search each time, so callers keep what they got.
[[nodiscard]] void* own_module_function(const char* name, const char* function);

}  // namespace tvutil2
