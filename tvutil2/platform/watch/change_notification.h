// Telling that something changed in a folder, through a handle that can be waited for.
//
// Safe from any thread.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/watch/change_filter.h"

/// A handle that is signalled by the first change in a folder, or also below it with `subtree`,
/// that `filter` (FILE_NOTIFY_CHANGE_ flags) asks for. It stays signalled until
/// FindNextChangeNotification. The end of the folder signals it as well, and so does a change that
/// may have been missed: because the host lost some, or because it has no more watches for a new
/// folder below.
///
/// INVALID_HANDLE_VALUE on failure: ERROR_INVALID_PARAMETER for a filter that asks for nothing or
/// for something unknown, ERROR_FILE_NOT_FOUND or ERROR_PATH_NOT_FOUND, ERROR_DIRECTORY for what is
/// no folder, ERROR_NO_SYSTEM_RESOURCES when the host's limit of watches is reached (a tree takes
/// one for each folder). The handle is closed with FindCloseChangeNotification.
///
/// The host tells of times, attributes and rights in one, so who asks for one of them hears of all.
/// A folder that is moved is followed; folders that are made in it after that aren't.
TVUTIL_API HANDLE FindFirstChangeNotificationW(const char16_t* path, BOOL subtree, DWORD filter);

/// Waits for the next change: the handle is no longer signalled, unless there was one since it was.
/// 0 with ERROR_ACCESS_DENIED once the folder is gone, with ERROR_INVALID_HANDLE for another
/// handle.
TVUTIL_API BOOL FindNextChangeNotification(HANDLE handle);

TVUTIL_API BOOL FindCloseChangeNotification(HANDLE handle);
