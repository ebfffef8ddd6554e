// Kernel objects of one process: events, mutexes, and waiting for them.
//
// A wait costs a futex and no file descriptor. Any number of threads may use an object at once.
// Waiters are served in the order of their coming (those for all of several, once they can have
// all), and a mutex or an auto-reset event goes straight to the one that is served. A handle is
// closed with CloseHandle; who waits at that moment goes on waiting. Objects have no names yet: a
// name makes creation fail with ERROR_NOT_SUPPORTED.
#pragma once

#include "tvutil2/platform/base/handle_table.h"

struct SECURITY_ATTRIBUTES;

inline constexpr DWORD WAIT_OBJECT_0 = 0;
inline constexpr DWORD WAIT_ABANDONED_0 = 0x80;
inline constexpr DWORD WAIT_ABANDONED = WAIT_ABANDONED_0;
inline constexpr DWORD WAIT_FAILED = 0xFFFFFFFF;
/// Objects in one wait.
inline constexpr DWORD MAXIMUM_WAIT_OBJECTS = 64;

/// A new event; null when it fails. Attributes are passed over. An auto-reset event (`manual_reset`
/// 0) lets one waiter through for each SetEvent and is then not signalled; a manual-reset one lets
/// all through until ResetEvent. An empty name counts as none. On success the last error is 0.
TVUTIL_API HANDLE CreateEventW(SECURITY_ATTRIBUTES* attributes, BOOL manual_reset,
                               BOOL initial_state, const char16_t* name);
/// 0 with ERROR_INVALID_HANDLE for what isn't an event.
TVUTIL_API BOOL SetEvent(HANDLE event);
TVUTIL_API BOOL ResetEvent(HANDLE event);

/// A new mutex, owned by the calling thread if `initial_owner`; null when it fails. Attributes,
/// name and last error as for events. The owner may take it again, and gives it back as often. A
/// thread that ends as the owner abandons it: the next one gets it with WAIT_ABANDONED.
TVUTIL_API HANDLE CreateMutexW(SECURITY_ATTRIBUTES* attributes, BOOL initial_owner,
                               const char16_t* name);
/// 0 with ERROR_NOT_OWNER when the calling thread doesn't own it, with ERROR_INVALID_HANDLE for
/// what isn't a mutex.
TVUTIL_API BOOL ReleaseMutex(HANDLE mutex);

/// Waits for an object, up to a time in milliseconds; 0 only looks, INFINITE has no limit.
/// WAIT_OBJECT_0, WAIT_ABANDONED, WAIT_TIMEOUT, or WAIT_FAILED with the last error
/// (ERROR_INVALID_HANDLE).
TVUTIL_API DWORD WaitForSingleObject(HANDLE object, DWORD milliseconds);

/// Waits for one of up to MAXIMUM_WAIT_OBJECTS objects, or for all at once. The result is
/// WAIT_OBJECT_0 or WAIT_ABANDONED_0 plus an index: that of the object got (the lowest, if several
/// were ready), or of the first abandoned one when all were waited for. Nothing is taken from any
/// object until all can be. WAIT_FAILED with ERROR_INVALID_PARAMETER for a wrong count or an object
/// that is there twice, with ERROR_INVALID_HANDLE for what can't be waited for.
TVUTIL_API DWORD WaitForMultipleObjects(DWORD count, const HANDLE* objects, BOOL wait_all,
                                        DWORD milliseconds);
