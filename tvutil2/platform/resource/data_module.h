// Files that are loaded for their resources alone: satellite modules, in the platform's executable
// format or as a `.res` image. No code of them runs.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

inline constexpr DWORD LOAD_LIBRARY_AS_DATAFILE = 0x00000002;
inline constexpr DWORD LOAD_LIBRARY_AS_IMAGE_RESOURCE = 0x00000020;
inline constexpr DWORD LOAD_LIBRARY_AS_DATAFILE_EXCLUSIVE = 0x00000040;

/// Without flags as LoadLibraryW. With one or more of the above, a file's resources become a module
/// of their own, at each call a new one; FreeLibrary ends it, and what was found in it is void from
/// then on. The file's bytes are copied: whoever changes it changes nothing here, so that nobody
/// has to be kept away from it. `reserved` is null.
/// Null with ERROR_INVALID_PARAMETER (another flag, no name), ERROR_BAD_EXE_FORMAT for a file of
/// another format, or with more than 64 MiB of resources, and for a file that can't be read as
/// ReadFile and CreateFileW say. Safe from any thread.
TVUTIL_API HMODULE LoadLibraryExW(const char16_t* name, HANDLE reserved, DWORD flags);
