// File mappings: memory that processes share by a name, and files as memory.
#pragma once

#include "tvutil2/platform/base/handle_table.h"

struct SECURITY_ATTRIBUTES;

inline constexpr DWORD PAGE_READONLY = 0x02;
inline constexpr DWORD PAGE_READWRITE = 0x04;
inline constexpr DWORD PAGE_WRITECOPY = 0x08;
/// Memory is there when it is touched, with this flag and without.
inline constexpr DWORD SEC_COMMIT = 0x8000000;

inline constexpr DWORD FILE_MAP_COPY = 0x1;
inline constexpr DWORD FILE_MAP_WRITE = 0x2;
inline constexpr DWORD FILE_MAP_READ = 0x4;
inline constexpr DWORD FILE_MAP_ALL_ACCESS = 0xF001F;

/// A mapping of a file, or of zero-filled memory for INVALID_HANDLE_VALUE; null when it fails.
/// Names and the last error on success are as for events (objects.h); the protection and the size
/// of what is there already hold. Attributes are passed over. Errors: ERROR_INVALID_PARAMETER (a
/// protection that isn't one of the above, memory without a size), ERROR_FILE_INVALID (an empty
/// file and no size), ERROR_ACCESS_DENIED (the file isn't open for it), ERROR_NOT_ENOUGH_MEMORY (a
/// size beyond the end of a file that is mapped for reading, too much memory), ERROR_DISK_FULL. A
/// file that is mapped for writing grows to the size. The file handle may be closed.
///
/// Shared memory keeps its size, whoever holds it. A file can be cut by programs that don't use
/// this library, and touching what is gone ends the process, as with any memory-mapped file of the
/// host.
TVUTIL_API HANDLE CreateFileMappingW(HANDLE file, SECURITY_ATTRIBUTES* attributes, DWORD protection,
                                     DWORD size_high, DWORD size_low, const char16_t* name);
/// The mapping that has the name; errors as for OpenEventW.
TVUTIL_API HANDLE OpenFileMappingW(DWORD access, BOOL inherit, const char16_t* name);

/// Makes a part of a mapping visible; all behind the offset for 0 bytes. Null with
/// ERROR_INVALID_HANDLE, ERROR_MAPPED_ALIGNMENT (an offset that isn't a multiple of 65,536),
/// ERROR_ACCESS_DENIED (beyond the end; writing to a mapping for reading), ERROR_INVALID_PARAMETER
/// (no access), ERROR_NOT_ENOUGH_MEMORY. A view keeps the mapping, and its name, beyond the handle.
TVUTIL_API void* MapViewOfFile(HANDLE mapping, DWORD access, DWORD offset_high, DWORD offset_low,
                               std::size_t bytes);
/// 0 with ERROR_INVALID_ADDRESS for what isn't the beginning of a view.
TVUTIL_API BOOL UnmapViewOfFile(const void* view);
