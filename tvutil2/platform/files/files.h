// Files and folders, with sharing modes that hold between handles and between processes.
//
// Names may hold whatever the host's names may; a path has no length limit but the host's. Every
// failure gives the result named below and a last error: ERROR_FILE_NOT_FOUND when the last part of
// a path is missing, ERROR_PATH_NOT_FOUND when a folder before it is, ERROR_ACCESS_DENIED,
// ERROR_SHARING_VIOLATION, ERROR_DISK_FULL and so on. A separator behind the name of what is no
// folder is ERROR_INVALID_NAME, for attributes ERROR_PATH_NOT_FOUND. An empty or null path names
// nothing (ERROR_PATH_NOT_FOUND). The root of a drive is neither deleted nor moved
// (ERROR_ACCESS_DENIED). All functions are safe from any thread.
//
// A file whose mode has no write bit is FILE_ATTRIBUTE_READONLY: it can be neither opened for
// writing, nor overwritten, nor deleted, whoever asks, root included. A name that begins with a dot
// is FILE_ATTRIBUTE_HIDDEN. A symbolic link is followed by what works on content, and stands for
// itself, with FILE_ATTRIBUTE_REPARSE_POINT, where names are deleted, moved or found.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

inline constexpr DWORD GENERIC_READ = 0x80000000;
inline constexpr DWORD GENERIC_WRITE = 0x40000000;
inline constexpr DWORD GENERIC_ALL = 0x10000000;
inline constexpr DWORD FILE_READ_DATA = 0x0001;
inline constexpr DWORD FILE_LIST_DIRECTORY = 0x0001;
inline constexpr DWORD FILE_WRITE_DATA = 0x0002;
inline constexpr DWORD FILE_APPEND_DATA = 0x0004;
inline constexpr DWORD FILE_READ_ATTRIBUTES = 0x0080;
inline constexpr DWORD FILE_WRITE_ATTRIBUTES = 0x0100;
inline constexpr DWORD DELETE = 0x00010000;

inline constexpr DWORD FILE_SHARE_READ = 0x1;
inline constexpr DWORD FILE_SHARE_WRITE = 0x2;
inline constexpr DWORD FILE_SHARE_DELETE = 0x4;

inline constexpr DWORD CREATE_NEW = 1;
inline constexpr DWORD CREATE_ALWAYS = 2;
inline constexpr DWORD OPEN_EXISTING = 3;
inline constexpr DWORD OPEN_ALWAYS = 4;
inline constexpr DWORD TRUNCATE_EXISTING = 5;

inline constexpr DWORD FILE_ATTRIBUTE_READONLY = 0x0001;
inline constexpr DWORD FILE_ATTRIBUTE_HIDDEN = 0x0002;
inline constexpr DWORD FILE_ATTRIBUTE_SYSTEM = 0x0004;
inline constexpr DWORD FILE_ATTRIBUTE_DIRECTORY = 0x0010;
inline constexpr DWORD FILE_ATTRIBUTE_ARCHIVE = 0x0020;
inline constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x0080;
inline constexpr DWORD FILE_ATTRIBUTE_TEMPORARY = 0x0100;
inline constexpr DWORD FILE_ATTRIBUTE_REPARSE_POINT = 0x0400;
inline constexpr DWORD INVALID_FILE_ATTRIBUTES = 0xFFFFFFFF;

inline constexpr DWORD FILE_FLAG_WRITE_THROUGH = 0x80000000;
inline constexpr DWORD FILE_FLAG_OVERLAPPED = 0x40000000;
inline constexpr DWORD FILE_FLAG_RANDOM_ACCESS = 0x10000000;
inline constexpr DWORD FILE_FLAG_SEQUENTIAL_SCAN = 0x08000000;
inline constexpr DWORD FILE_FLAG_DELETE_ON_CLOSE = 0x04000000;
inline constexpr DWORD FILE_FLAG_BACKUP_SEMANTICS = 0x02000000;

inline constexpr DWORD FILE_BEGIN = 0;
inline constexpr DWORD FILE_CURRENT = 1;
inline constexpr DWORD FILE_END = 2;
inline constexpr DWORD INVALID_SET_FILE_POINTER = 0xFFFFFFFF;
inline constexpr DWORD INVALID_FILE_SIZE = 0xFFFFFFFF;

inline constexpr DWORD COPY_FILE_FAIL_IF_EXISTS = 0x1;
inline constexpr DWORD COPY_FILE_COPY_SYMLINK = 0x800;

inline constexpr DWORD MOVEFILE_REPLACE_EXISTING = 0x1;
inline constexpr DWORD MOVEFILE_COPY_ALLOWED = 0x2;
inline constexpr DWORD MOVEFILE_WRITE_THROUGH = 0x8;

/// A 64-bit number with a view of its halves, low one first.
union LARGE_INTEGER {
    struct {
        DWORD LowPart;
        LONG HighPart;
    } u;
    LONGLONG QuadPart;
};

struct OVERLAPPED;
struct SECURITY_ATTRIBUTES;

/// Opens or creates a file, or opens a folder (FILE_FLAG_BACKUP_SEMANTICS). The handle is closed
/// with CloseHandle. INVALID_HANDLE_VALUE on failure.
///
/// `sharing` says what others may do while the handle is open, and the open fails with
/// ERROR_SHARING_VIOLATION when it wants what an open handle forbids or forbids what an open handle
/// does, in this process or in any other that opens files through this library. A handle that asks
/// for no data (access 0 or attributes alone) takes no part in that.
///
/// CREATE_ALWAYS and OPEN_ALWAYS set the last error on success: ERROR_ALREADY_EXISTS when the file
/// was there, else 0. CREATE_NEW fails with ERROR_FILE_EXISTS. Of the attributes only
/// FILE_ATTRIBUTE_READONLY counts, for a file that is created. FILE_APPEND_DATA without
/// FILE_WRITE_DATA writes at the end of the file, whatever other processes append to it.
/// FILE_FLAG_DELETE_ON_CLOSE isn't supported (ERROR_NOT_SUPPORTED). `security` and `model` are
/// passed over; children don't inherit the handle.
TVUTIL_API HANDLE CreateFileW(const char16_t* path, DWORD access, DWORD sharing,
                              SECURITY_ATTRIBUTES* security, DWORD disposition,
                              DWORD flags_and_attributes, HANDLE model);

/// Reads up to `size` bytes at the file pointer and moves it. At the end of the file: success with
/// 0 bytes. `overlapped` must be null (ERROR_INVALID_PARAMETER). ERROR_ACCESS_DENIED for a handle
/// without read access.
TVUTIL_API BOOL ReadFile(HANDLE file, void* buffer, DWORD size, DWORD* read,
                         OVERLAPPED* overlapped);
/// Writes all `size` bytes or fails, with `written` telling how many bytes are in the file.
TVUTIL_API BOOL WriteFile(HANDLE file, const void* data, DWORD size, DWORD* written,
                          OVERLAPPED* overlapped);

/// Moves the file pointer; it may stand behind the end. ERROR_NEGATIVE_SEEK in front of the start.
TVUTIL_API BOOL SetFilePointerEx(HANDLE file, LARGE_INTEGER distance, LARGE_INTEGER* position,
                                 DWORD method);
/// The same with a distance in two halves; the low half alone, signed, when `high` is null.
/// INVALID_SET_FILE_POINTER on failure, and as the low half of a legal position: then the last
/// error is 0.
TVUTIL_API DWORD SetFilePointer(HANDLE file, LONG low, LONG* high, DWORD method);
/// Cuts or extends the file at its pointer. New bytes are zero.
TVUTIL_API BOOL SetEndOfFile(HANDLE file);
TVUTIL_API BOOL GetFileSizeEx(HANDLE file, LARGE_INTEGER* size);
/// Returns when the content is on the disk. Needs write access.
TVUTIL_API BOOL FlushFileBuffers(HANDLE file);
/// Any of the three may be null. The host keeps no time of creation that can be set: it is what
/// the file system recorded, or the time of the last write where it records none.
TVUTIL_API BOOL GetFileTime(HANDLE file, FILETIME* created, FILETIME* accessed, FILETIME* written);
/// A null time stays as it is; `created` is passed over.
TVUTIL_API BOOL SetFileTime(HANDLE file, const FILETIME* created, const FILETIME* accessed,
                            const FILETIME* written);

/// INVALID_FILE_ATTRIBUTES on failure. A link has the attributes of what it leads to and
/// FILE_ATTRIBUTE_REPARSE_POINT.
TVUTIL_API DWORD GetFileAttributesW(const char16_t* path);
/// Sets or clears FILE_ATTRIBUTE_READONLY; others have no place on the host and are passed over.
TVUTIL_API BOOL SetFileAttributesW(const char16_t* path, DWORD attributes);
/// The run-time library's test of access: 0 when the path exists and can be read (mode 4), written
/// (2), both (6) or is there at all (0); else -1 with the last error and errno set.
TVUTIL_API int _waccess(const char16_t* path, int mode);

/// ERROR_ALREADY_EXISTS when anything is there, ERROR_PATH_NOT_FOUND when the parent isn't.
TVUTIL_API BOOL CreateDirectoryW(const char16_t* path, SECURITY_ATTRIBUTES* security);
namespace tvutil2 {
/// Creates a folder and its missing parents, open to the account alone (mode 0700). What is there
/// stays as it is.
TVUTIL_API BOOL make_private_folders(const char16_t* path);
}  // namespace tvutil2

/// Removes an empty folder, or a link to a folder. ERROR_DIR_NOT_EMPTY, ERROR_DIRECTORY for a file.
TVUTIL_API BOOL RemoveDirectoryW(const char16_t* path);
/// Deletes a file, or a link to one. ERROR_SHARING_VIOLATION while a handle that doesn't share
/// deletion is open; ERROR_ACCESS_DENIED for a folder, a link to one, and a read-only file.
TVUTIL_API BOOL DeleteFileW(const char16_t* path);

/// Copies content, times of access and last write, and mode. A file that was there is replaced as
/// a whole or stays as it was; a new one is there as a whole or not at all. ERROR_FILE_EXISTS when
/// `fail_if_exists` is set and the target is there; ERROR_SHARING_VIOLATION when both names are one
/// file or the target is open anywhere.
TVUTIL_API BOOL CopyFileW(const char16_t* from, const char16_t* to, BOOL fail_if_exists);

/// The same; with COPY_FILE_COPY_SYMLINK a link is copied as the link that it is, be it to a file
/// or a folder, and replaces a file or link. No progress is told: `progress`, `data` and `cancel`
/// are passed over.
TVUTIL_API BOOL CopyFileExW(const char16_t* from, const char16_t* to, void* progress, void* data,
                            BOOL* cancel, DWORD flags);

/// Renames a file, folder or link. ERROR_ALREADY_EXISTS when the target is there and
/// MOVEFILE_REPLACE_EXISTING isn't given; a folder is never replaced (ERROR_ACCESS_DENIED). A name
/// may change its case alone. Between file systems a file is copied and deleted with
/// MOVEFILE_COPY_ALLOWED, else the move fails with ERROR_NOT_SAME_DEVICE; a folder isn't moved
/// between file systems at all.
TVUTIL_API BOOL MoveFileExW(const char16_t* from, const char16_t* to, DWORD flags);
/// MoveFileExW with MOVEFILE_COPY_ALLOWED.
TVUTIL_API BOOL MoveFileW(const char16_t* from, const char16_t* to);
