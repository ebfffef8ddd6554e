// The platform's system modules: "KERNEL32.DLL", "user32.DLL" and "shcore.dll" as tables of the
// functions that are looked up at run time, and the process-wide state that those functions set.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

using DPI_AWARENESS_CONTEXT = struct DPI_AWARENESS_CONTEXT__*;

/// The contexts are numbers below zero in the place of a handle.
[[nodiscard]] inline DPI_AWARENESS_CONTEXT dpi_awareness_context(std::intptr_t number) {
    return reinterpret_cast<DPI_AWARENESS_CONTEXT>(number);
}
inline const auto DPI_AWARENESS_CONTEXT_UNAWARE = dpi_awareness_context(-1);
inline const auto DPI_AWARENESS_CONTEXT_SYSTEM_AWARE = dpi_awareness_context(-2);
inline const auto DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE = dpi_awareness_context(-3);
inline const auto DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE_V2 = dpi_awareness_context(-4);
inline const auto DPI_AWARENESS_CONTEXT_UNAWARE_GDISCALED = dpi_awareness_context(-5);

inline constexpr int PROCESS_DPI_UNAWARE = 0;
inline constexpr int PROCESS_SYSTEM_DPI_AWARE = 1;
inline constexpr int PROCESS_PER_MONITOR_DPI_AWARE = 2;

inline constexpr HRESULT E_ACCESSDENIED = static_cast<HRESULT>(0x80070005);

/// KERNEL32.DLL. Which folders LoadLibraryW searches for a bare name, as LOAD_LIBRARY_SEARCH_ bits.
/// 0 with ERROR_INVALID_PARAMETER for no bits or others.
TVUTIL_API BOOL SetDefaultDllDirectories(DWORD flags);

/// user32.DLL. The process's DPI awareness, once for its life: 0 with ERROR_ACCESS_DENIED when it
/// is set already, by whichever function, and with ERROR_INVALID_PARAMETER for no such context.
TVUTIL_API BOOL SetProcessDpiAwarenessContext(DPI_AWARENESS_CONTEXT context);
/// user32.DLL. System awareness; non-zero also when the process has it already.
TVUTIL_API BOOL SetProcessDPIAware();
/// shcore.dll. A PROCESS_ value: S_OK, E_ACCESSDENIED when it is set already, or E_INVALIDARG.
TVUTIL_API HRESULT SetProcessDpiAwareness(int awareness);

namespace tvutil2 {

/// The handle of a system module by its name without regard to case; null when there is none of
/// that name or it was taken away. The last error stays.
[[nodiscard]] HMODULE system_module(const char16_t* name);

/// The process's context: one of DPI_AWARENESS_CONTEXT_, null until it is set.
[[nodiscard]] TVUTIL_API DPI_AWARENESS_CONTEXT process_dpi_awareness();
/// What SetDefaultDllDirectories was given; 0 until then.
[[nodiscard]] TVUTIL_API DWORD default_dll_directories();

/// Puts `function` in the place of a system module's export and gives what was there, so that a
/// test can take an export away (null), watch its calls, and put it back. Look-ups from then on
/// see it; direct calls don't. `name` may be an ordinal_name. Null when there is no such module or
/// export.
TVUTIL_API FARPROC exchange_system_export(const char16_t* module, const char* name,
                                          FARPROC function);
/// Takes a whole system module away from later look-ups, or puts it back. False when there is none
/// of that name.
TVUTIL_API bool set_system_module_present(const char16_t* module, bool present);

}  // namespace tvutil2
