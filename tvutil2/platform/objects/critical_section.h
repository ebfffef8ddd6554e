// Critical sections: a recursive lock inside one process that costs one atomic operation when
// nobody else wants it.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

/// Zero-filled memory will do before InitializeCriticalSection. Mustn't be copied or moved while
/// it is in use.
struct CRITICAL_SECTION {
    DWORD state;           ///< 0 free, 1 taken, 2 taken and somebody waits
    DWORD recursion;       ///< times the owner has entered
    std::uintptr_t owner;  ///< identity of the owning thread; 0 for none
};

TVUTIL_API void InitializeCriticalSection(CRITICAL_SECTION* section);
/// Waits without a limit. The owner may enter again, and leaves as often.
TVUTIL_API void EnterCriticalSection(CRITICAL_SECTION* section);
/// Non-zero if the section is now the calling thread's; never waits.
TVUTIL_API BOOL TryEnterCriticalSection(CRITICAL_SECTION* section);
/// For the owner only.
TVUTIL_API void LeaveCriticalSection(CRITICAL_SECTION* section);
/// Nobody may be inside or waiting.
TVUTIL_API void DeleteCriticalSection(CRITICAL_SECTION* section);
