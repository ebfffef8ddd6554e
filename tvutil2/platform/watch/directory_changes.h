// Telling of each change in a folder, read by read.
//
// A handle begins to gather changes at its first read and goes on between reads. It holds 64 times
// what the first read has room for; when more comes, all of it is dropped and the next read to end
// says so with 0 bytes.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/watch/change_filter.h"

/// A read under way. The caller keeps it, and the read's buffer, until the completion routine has
/// run. `hEvent` is the caller's own.
struct OVERLAPPED {
    std::uintptr_t Internal;      ///< out: the error
    std::uintptr_t InternalHigh;  ///< out: the bytes
    DWORD Offset;
    DWORD OffsetHigh;
    HANDLE hEvent;
};

/// One change. The name is relative to the folder, has no zero at its end, and its length is in
/// bytes. The next record lies `NextEntryOffset` bytes behind this one's start; 0 for the last.
struct FILE_NOTIFY_INFORMATION {
    DWORD NextEntryOffset;
    DWORD Action;
    DWORD FileNameLength;
    char16_t FileName[1];
};

using LPOVERLAPPED_COMPLETION_ROUTINE = void (*)(DWORD error, DWORD bytes, OVERLAPPED* overlapped);

/// Reads the changes of a folder, or also of all below it, that `filter` (FILE_NOTIFY_CHANGE_
/// flags) asks for; subtree and filter are settled by a handle's first read. The handle is one of
/// CreateFileW with FILE_LIST_DIRECTORY, FILE_FLAG_BACKUP_SEMANTICS and FILE_FLAG_OVERLAPPED.
///
/// Returns at once. When there are changes, `routine` runs on the calling thread, in a wait that is
/// alertable: with 0 and the bytes of whole records in `buffer`; with 0 and 0 bytes after changes
/// were lost, or when the first record has no room; with ERROR_ACCESS_DENIED and 0 bytes once the
/// folder is gone; with ERROR_OPERATION_ABORTED and 0 bytes after CancelIo or the end of the
/// handle. It never runs when the thread ends before. Reads of one handle end in the order of their
/// coming.
///
/// 0 on failure, and then no routine runs: ERROR_INVALID_HANDLE, ERROR_ACCESS_DENIED,
/// ERROR_INVALID_PARAMETER (no folder, no buffer, no filter), ERROR_NOT_SUPPORTED without a
/// routine, ERROR_NO_SYSTEM_RESOURCES when the host's limit of watches is reached: a tree takes one
/// for each folder. Where that happens later, for a new folder, changes count as lost.
///
/// A new name within one folder is told as FILE_ACTION_RENAMED_OLD_NAME and, right behind it,
/// FILE_ACTION_RENAMED_NEW_NAME; a move between two folders as FILE_ACTION_REMOVED and
/// FILE_ACTION_ADDED. What a new folder got before it was watched is told as added. Of a folder
/// that was moved in, only the folder is told. The file that another one replaces by its name isn't
/// told as removed. Entries without a name on the platform are passed over.
TVUTIL_API BOOL ReadDirectoryChangesW(HANDLE folder, void* buffer, DWORD size, BOOL subtree,
                                      DWORD filter, DWORD* bytes, OVERLAPPED* overlapped,
                                      LPOVERLAPPED_COMPLETION_ROUTINE routine);

/// Ends the reads that the calling thread began on the handle. Their routines run with
/// ERROR_OPERATION_ABORTED.
TVUTIL_API BOOL CancelIo(HANDLE file);
