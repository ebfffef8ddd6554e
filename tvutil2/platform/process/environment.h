// The process's environment variables as 16-bit text.
//
// A name is looked up exactly first and without regard to case second. Both functions here take one
// lock; code that reads the host's environment by other means isn't covered by it, so variables are
// set while the process is young.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

/// The length without the zero when the value has room in `size` units (the zero included), else
/// the room that it needs, and the buffer is left alone. 0 with ERROR_ENVVAR_NOT_FOUND; an empty
/// value gives 0 and the last error 0. Bytes that aren't UTF-8 come as U+FFFD.
TVUTIL_API DWORD GetEnvironmentVariableW(const char16_t* name, char16_t* buffer, DWORD size);

/// Sets a variable, or removes it for null. 0 with ERROR_INVALID_PARAMETER for a name that is empty
/// or holds "=" or for text that isn't valid UTF-16, and with ERROR_ENVVAR_NOT_FOUND when there is
/// nothing to remove.
TVUTIL_API BOOL SetEnvironmentVariableW(const char16_t* name, const char16_t* value);
