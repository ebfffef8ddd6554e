// Modules of the process: the executable, the library itself, host shared objects, and the
// platform's system modules, which are tables of functions here.
//
// A module handle counts its references: LoadLibraryW of a module that is loaded gives the same
// handle once more, and FreeLibrary lets go of one. All functions are safe from any thread.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

#include <string_view>

/// Bits of SetDefaultDllDirectories.
inline constexpr DWORD LOAD_LIBRARY_SEARCH_APPLICATION_DIR = 0x0200;
inline constexpr DWORD LOAD_LIBRARY_SEARCH_USER_DIRS = 0x0400;
inline constexpr DWORD LOAD_LIBRARY_SEARCH_SYSTEM32 = 0x0800;
inline constexpr DWORD LOAD_LIBRARY_SEARCH_DEFAULT_DIRS = 0x1000;

/// The platform path of a module's file, the executable's for null: its length without the zero.
/// Links are followed, so that a program started through a link finds what lies beside its file. A
/// system module has no file and gives its name.
/// `size` counts the zero. A path that has no room is cut: the result is then `size`, the buffer
/// ends in a zero and the last error is ERROR_INSUFFICIENT_BUFFER. 0 with ERROR_MOD_NOT_FOUND for
/// a handle that is no module, and with ERROR_INVALID_NAME when the host's path has no form here.
TVUTIL_API DWORD GetModuleFileNameW(HMODULE module, char16_t* buffer, DWORD size);

/// The handle of a loaded module, by file name without regard to case (".dll" is added to a name
/// without a dot); the executable's for null. No reference is taken. Null with
/// ERROR_MOD_NOT_FOUND.
TVUTIL_API HMODULE GetModuleHandleW(const char16_t* name);

/// Loads a module and takes a reference. Names without regard to case; ".dll" is added to a name
/// without a dot, and a dot at the end is dropped. A system module is found by its name alone. A
/// name with a folder is that file. A bare name is looked for beside the executable, unless
/// SetDefaultDllDirectories took that folder out, and then where the host's loader looks.
/// Null with ERROR_MOD_NOT_FOUND, or ERROR_BAD_EXE_FORMAT for a file that is no module.
TVUTIL_API HMODULE LoadLibraryW(const char16_t* name);

/// Lets go of one reference; the last one unloads. The executable and the library itself stay. 0
/// with ERROR_MOD_NOT_FOUND (null included).
TVUTIL_API BOOL FreeLibrary(HMODULE module);

/// A function that the module itself exports, not one of the modules it stands on. Null with
/// ERROR_MOD_NOT_FOUND or ERROR_PROC_NOT_FOUND. An ordinal in the place of a name (ordinal_name) is
/// found in system modules that have them.
TVUTIL_API FARPROC GetProcAddress(HMODULE module, const char* name);

namespace tvutil2 {

/// Whether the name of a program or module says where it lies.
[[nodiscard]] inline bool has_folder(std::u16string_view name) {
    return name.find_first_of(u"\\/:") != std::u16string_view::npos;
}

/// What GetProcAddress gave, under its real type, and the way back.
template <class Function>
[[nodiscard]] Function* as_function(FARPROC address) {
    return reinterpret_cast<Function*>(reinterpret_cast<void (*)()>(address));
}
template <class Function>
[[nodiscard]] FARPROC as_export(Function* function) {
    return reinterpret_cast<FARPROC>(reinterpret_cast<void (*)()>(function));
}

/// An ordinal as GetProcAddress takes it in the place of a name.
[[nodiscard]] inline const char* ordinal_name(WORD ordinal) {
    return reinterpret_cast<const char*>(static_cast<std::uintptr_t>(ordinal));
}

/// The library's own module: its string tables and dialogs are found under it. The same value for
/// the life of the process.
[[nodiscard]] TVUTIL_API HINSTANCE library_instance();

}  // namespace tvutil2
