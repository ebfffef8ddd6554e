// Search for the names in a folder.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

#include <string_view>

/// What a search says about a name. A link has the attributes, size and times of what it leads to,
/// and FILE_ATTRIBUTE_REPARSE_POINT; one that leads nowhere has its own.
struct WIN32_FIND_DATAW {
    DWORD dwFileAttributes;
    FILETIME ftCreationTime;
    FILETIME ftLastAccessTime;
    FILETIME ftLastWriteTime;
    DWORD nFileSizeHigh;
    DWORD nFileSizeLow;
    DWORD dwReserved0;
    DWORD dwReserved1;
    char16_t cFileName[260];          ///< MAX_PATH, whatever a macro makes of that name
    char16_t cAlternateFileName[14];  ///< always empty: the host has no second names
};

/// Starts a search and gives its first name; INVALID_HANDLE_VALUE on failure, with
/// ERROR_FILE_NOT_FOUND when no name matches and ERROR_PATH_NOT_FOUND when there is no such folder
/// (ERROR_INVALID_NAME when a name before the last part has wildcards and isn't there).
///
/// The last part of the path may hold wildcards: "*" stands for any run of characters, "?" for any
/// one, and each ".*" at the end also for nothing, so that "*.*" matches every name; "*." matches
/// names without an extension. Case doesn't count. "." and ".." take part. The names are those of
/// the moment of the call, in the order of their upper-case units, so that two searches of an
/// unchanged folder agree; names that the platform can't express (not UTF-8, or with a backslash)
/// are passed over. A path without wildcards costs no listing, and one that ends in a separator
/// finds nothing. A name that exists with the wildcards' own characters in it is found like any
/// other.
TVUTIL_API HANDLE FindFirstFileW(const char16_t* path, WIN32_FIND_DATAW* data);

/// The next name; 0 with ERROR_NO_MORE_FILES behind the last. Names that vanished in the meantime
/// are passed over. One thread at a time for each handle.
TVUTIL_API BOOL FindNextFileW(HANDLE search, WIN32_FIND_DATAW* data);

TVUTIL_API BOOL FindClose(HANDLE search);

namespace tvutil2 {

/// What a search says about a name in a host folder that is open. False with errno set when it
/// isn't there, or when `name`, which is what the platform calls it, has no room.
[[nodiscard]] bool describe_name(int folder, const char* host_name, std::u16string_view name,
                                 WIN32_FIND_DATAW& data);

/// Whether a search for the path finds anything.
[[nodiscard]] bool is_found(const char16_t* path);

}  // namespace tvutil2
