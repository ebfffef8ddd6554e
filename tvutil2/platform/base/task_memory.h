// Memory that one side of an interface gives and the other frees.
#pragma once

#include "tvutil2/platform/base/export.h"

#include <cstddef>

/// Null when there is none. From any thread, and freed on any.
TVUTIL_API void* CoTaskMemAlloc(std::size_t size);
/// Null is passed over.
TVUTIL_API void CoTaskMemFree(void* memory);
