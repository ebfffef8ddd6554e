// Blocks of memory by handle.
//
// A fixed block's handle is its address; a movable one has a handle of the handle table and is
// reached through GlobalLock. Any thread; who uses a block keeps others from freeing it.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/base/types.h"

#include <cstddef>

using SIZE_T = std::size_t;

inline constexpr UINT GMEM_FIXED = 0x0;
inline constexpr UINT GMEM_MOVEABLE = 0x2;
inline constexpr UINT GMEM_ZEROINIT = 0x40;
inline constexpr UINT GPTR = GMEM_FIXED | GMEM_ZEROINIT;
inline constexpr UINT GHND = GMEM_MOVEABLE | GMEM_ZEROINIT;

/// Null with ERROR_NOT_ENOUGH_MEMORY.
TVUTIL_API HGLOBAL GlobalAlloc(UINT flags, SIZE_T size);
/// The block's first byte; null with ERROR_INVALID_HANDLE, or for a block of no bytes.
TVUTIL_API void* GlobalLock(HGLOBAL memory);
/// 0 once nobody has it locked any more, with NO_ERROR; for a block that wasn't, with
/// ERROR_NOT_LOCKED. Fixed blocks give 1.
TVUTIL_API BOOL GlobalUnlock(HGLOBAL memory);
/// Bytes that were asked for; 0 with ERROR_INVALID_HANDLE.
TVUTIL_API SIZE_T GlobalSize(HGLOBAL memory);
/// Null when it is freed, the handle with ERROR_INVALID_HANDLE when it isn't one.
TVUTIL_API HGLOBAL GlobalFree(HGLOBAL memory);
