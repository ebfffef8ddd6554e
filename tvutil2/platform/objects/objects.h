// Kernel objects: events, mutexes, semaphores, and waiting for them.
//
// What is free or signalled is taken by one atomic operation; a wait costs a futex and no file
// descriptor. Any number of threads may use an object at once.
// Waiters are served in the order of their coming (those for all of several, once they can have
// all), and a mutex or an auto-reset event goes straight to the one that is served. A handle is
// closed with CloseHandle; who waits at that moment goes on waiting.
#pragma once

#include "tvutil2/platform/base/handle_table.h"

struct SECURITY_ATTRIBUTES;

inline constexpr DWORD WAIT_OBJECT_0 = 0;
inline constexpr DWORD WAIT_ABANDONED_0 = 0x80;
inline constexpr DWORD WAIT_ABANDONED = WAIT_ABANDONED_0;
/// An alertable wait has run the calls that were queued to its thread.
inline constexpr DWORD WAIT_IO_COMPLETION = 0xC0;
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
/// Lets through who waits at this moment, one for an auto-reset event and all for a manual-reset
/// one, and leaves the event not signalled. Who waits for all of several objects isn't let through.
TVUTIL_API BOOL PulseEvent(HANDLE event);

/// A new mutex, owned by the calling thread if `initial_owner`; null when it fails. Attributes,
/// name and last error as for events. The owner may take it again, and gives it back as often. A
/// thread that ends as the owner abandons it: the next one gets it with WAIT_ABANDONED.
TVUTIL_API HANDLE CreateMutexW(SECURITY_ATTRIBUTES* attributes, BOOL initial_owner,
                               const char16_t* name);
/// 0 with ERROR_NOT_OWNER when the calling thread doesn't own it, with ERROR_INVALID_HANDLE for
/// what isn't a mutex.
TVUTIL_API BOOL ReleaseMutex(HANDLE mutex);

/// A new semaphore; null when it fails, with ERROR_INVALID_PARAMETER unless 0 <= `initial_count` <=
/// `maximum_count` and 0 < `maximum_count`. Each wait takes one of the count. Attributes, name and
/// last error as for events.
TVUTIL_API HANDLE CreateSemaphoreW(SECURITY_ATTRIBUTES* attributes, LONG initial_count,
                                   LONG maximum_count, const char16_t* name);
/// Adds to the count. 0 with ERROR_TOO_MANY_POSTS, and nothing added, when that were more than the
/// maximum; with ERROR_INVALID_PARAMETER for a count below 1, with ERROR_INVALID_HANDLE for what
/// isn't a semaphore. `previous`, if it isn't null, gets the former count.
TVUTIL_API BOOL ReleaseSemaphore(HANDLE semaphore, LONG count, LONG* previous);

// Names. Objects of one name are one object, in all processes of the user; below TVUTIL_PROFILE, of
// the same profile. No other user reaches them. A name has up to 260 characters, of which the case
// counts, and no backslash but that of a prefix: "Local\\" changes nothing, "Global\\" makes it
// another name, which reaches the same processes. Creating what is there already opens it, as it
// is, with the last error ERROR_ALREADY_EXISTS; a name of another kind of object is
// ERROR_INVALID_HANDLE. Further errors: ERROR_PATH_NOT_FOUND (a backslash), ERROR_INVALID_NAME (a
// prefix alone), ERROR_FILENAME_EXCED_RANGE, ERROR_ACCESS_DENIED (the run-time folder isn't the
// user's alone), and what the host refuses. The name goes with the last handle in any process, or
// with that process. A process that is killed abandons its mutexes at once. Signals between
// processes are taken by who comes first, not in the order of waiting.

/// The object that has the name; null with ERROR_FILE_NOT_FOUND when there is none, with
/// ERROR_INVALID_PARAMETER without a name, and as above. Access and inheritance are passed over.
TVUTIL_API HANDLE OpenEventW(DWORD access, BOOL inherit, const char16_t* name);
TVUTIL_API HANDLE OpenMutexW(DWORD access, BOOL inherit, const char16_t* name);
TVUTIL_API HANDLE OpenSemaphoreW(DWORD access, BOOL inherit, const char16_t* name);

/// Waits for an object, up to a time in milliseconds; 0 only looks, INFINITE has no limit.
/// WAIT_OBJECT_0, WAIT_ABANDONED, WAIT_TIMEOUT, or WAIT_FAILED with the last error
/// (ERROR_INVALID_HANDLE).
TVUTIL_API DWORD WaitForSingleObject(HANDLE object, DWORD milliseconds);

/// The same; `alertable` lets calls that are queued to the thread (QueueUserAPC) run and end the
/// wait with WAIT_IO_COMPLETION, unless the object is ready at once.
TVUTIL_API DWORD WaitForSingleObjectEx(HANDLE object, DWORD milliseconds, BOOL alertable);

/// Waits for one of up to MAXIMUM_WAIT_OBJECTS objects, or for all at once. The result is
/// WAIT_OBJECT_0 or WAIT_ABANDONED_0 plus an index: that of the object got (the lowest, if several
/// were ready), or of the first abandoned one when all were waited for. Nothing is taken from any
/// object until all can be. WAIT_FAILED with ERROR_INVALID_PARAMETER for a wrong count or an object
/// that is there twice, with ERROR_INVALID_HANDLE for what can't be waited for.
TVUTIL_API DWORD WaitForMultipleObjects(DWORD count, const HANDLE* objects, BOOL wait_all,
                                        DWORD milliseconds);
TVUTIL_API DWORD WaitForMultipleObjectsEx(DWORD count, const HANDLE* objects, BOOL wait_all,
                                          DWORD milliseconds, BOOL alertable);

/// Lets the time go by, in milliseconds; 0 gives way to other threads.
TVUTIL_API void Sleep(DWORD milliseconds);
/// 0 once the time is over. With `alertable`, WAIT_IO_COMPLETION as soon as queued calls have run.
TVUTIL_API DWORD SleepEx(DWORD milliseconds, BOOL alertable);
