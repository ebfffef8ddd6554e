// Threads, and the calls that one thread queues to another.
//
// Nothing ends a thread from outside: whoever needs that tells the thread to, and waits for it. A
// thread's handle is signalled once the thread has run the destructors of its thread-local objects
// and has abandoned its mutexes; closing the handle doesn't touch the thread.
#pragma once

#include "tvutil2/platform/objects/objects.h"

using LPTHREAD_START_ROUTINE = DWORD (*)(void*);
using PAPCFUNC = void (*)(std::uintptr_t);

/// A thread that begins at ResumeThread.
inline constexpr DWORD CREATE_SUSPENDED = 0x4;
/// Passed over: the size of a stack is what is reserved.
inline constexpr DWORD STACK_SIZE_PARAM_IS_A_RESERVATION = 0x10000;
/// Exit code of a thread that hasn't ended.
inline constexpr DWORD STILL_ACTIVE = 259;

/// Starts a thread; null when it fails (ERROR_INVALID_PARAMETER for a null routine or an unknown
/// flag, ERROR_NOT_ENOUGH_MEMORY, ERROR_TOO_MANY_OPEN_FILES). Attributes are passed over. A stack
/// of 0 bytes is the host's default. `id` may be null; GetCurrentThreadId gives the same in the
/// thread. An exception that leaves the routine ends the process.
TVUTIL_API HANDLE CreateThread(SECURITY_ATTRIBUTES* attributes, std::size_t stack,
                               LPTHREAD_START_ROUTINE routine, void* argument, DWORD flags,
                               DWORD* id);
/// The same with the C library's types; the handle as a number, 0 when it fails.
TVUTIL_API std::uintptr_t _beginthreadex(void* attributes, unsigned stack,
                                         unsigned (*routine)(void*), void* argument, unsigned flags,
                                         unsigned* id);

/// Lets a thread begin that was made suspended. How many times it was suspended, 1 or 0;
/// 0xFFFFFFFF with ERROR_INVALID_HANDLE for what isn't a thread.
TVUTIL_API DWORD ResumeThread(HANDLE thread);

/// What the routine returned; STILL_ACTIVE before. 0 with ERROR_INVALID_HANDLE.
TVUTIL_API BOOL GetExitCodeThread(HANDLE thread, DWORD* code);

/// Id of the calling thread, which no other thread of the machine has while it lives.
TVUTIL_API DWORD GetCurrentThreadId();
/// Id of a thread; 0 with ERROR_INVALID_HANDLE.
TVUTIL_API DWORD GetThreadId(HANDLE thread);

/// Queues a call to a thread, which runs it at its next alertable wait, or before its routine if it
/// hasn't begun. 0 with ERROR_GEN_FAILURE for a thread that has ended, with ERROR_INVALID_HANDLE
/// for what isn't a thread. What a thread leaves undone at its end is dropped.
TVUTIL_API DWORD QueueUserAPC(PAPCFUNC routine, HANDLE thread, std::uintptr_t data);
