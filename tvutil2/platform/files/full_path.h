// Full paths, from the text alone.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

/// The full form of a path: with a drive, without "." and "..", whether or not it exists. `size`
/// counts the zero; `name`, if not null, becomes the last part's place in `buffer`, null for a
/// root. Units without the zero, or with a buffer that is too small the room that is needed, the
/// zero included. 0 for an empty path (ERROR_INVALID_NAME) and for one that has no place on the
/// host.
TVUTIL_API DWORD GetFullPathNameW(const char16_t* path, DWORD size, char16_t* buffer,
                                  char16_t** name);
