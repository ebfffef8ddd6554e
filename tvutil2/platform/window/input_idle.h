// Waiting for another program to be ready for messages.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

/// Waits, up to a time in milliseconds, until a process has a window that others find and the
/// window's thread answers messages. 0 then, WAIT_TIMEOUT, or WAIT_FAILED: for what is no handle of
/// a process (ERROR_INVALID_HANDLE), when the process ends without having had such a window
/// (ERROR_GEN_FAILURE), or when the run-time folder can't be watched. A program that never has such
/// a window is waited for until it ends. Meanwhile the calling thread answers what is sent to its
/// own windows.
TVUTIL_API DWORD WaitForInputIdle(HANDLE process, DWORD milliseconds);
