// Long forms of paths.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

/// The long form of a path, which on this host is the path itself: file systems here keep no
/// second, short names. Writes it with its zero and gives its length without it; gives the room
/// needed, zero included, when `size` units don't hold it; 0 with the last error for a path that
/// isn't there. Both may be the same buffer.
TVUTIL_API DWORD GetLongPathNameW(const char16_t* path, char16_t* buffer, DWORD size);
