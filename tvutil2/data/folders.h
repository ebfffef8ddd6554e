// Copying, moving and deleting whole folders.
//
// An empty or null path does nothing and is a failure (ERROR_PATH_NOT_FOUND). The root of a drive
// is neither moved nor emptied (ERROR_ACCESS_DENIED). Names found in a folder are those names,
// whatever characters are in them; whether one folder lies in another is told by what they are and
// not by how they are written.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

namespace tvutil2 {
class CopyObserver;
class ShellObserver;
}  // namespace tvutil2

/// Renames through the shell, asking nothing. 0, or an error code; an existing name is never
/// overwritten (ERROR_ALREADY_EXISTS).
TVUTIL_API int SHRenameFile(const char16_t* from, const char16_t* to);

/// Moves a file or folder to the trash, asking nothing. 0, or an error code. A name with wildcards
/// that isn't there stands for those that it takes in.
TVUTIL_API int SHDeleteFile(const char16_t* path);

/// Moves the files below `from` whose name ends in `extension` (without regard to case; empty takes
/// all) to the same places below `to`, all in one shell operation, and makes the folders that they
/// need. Folders left empty stay; links to folders are neither entered nor moved, nor is `to`
/// itself when it lies in `from`. A folder isn't moved to itself (0, ERROR_SHARING_VIOLATION). A
/// file that is in the way is a question to the person, and stays where there is nobody to ask. 1
/// when all went well, or there was nothing to move.
TVUTIL_API int MoveFolder(const char16_t* from, const char16_t* to, const char16_t* extension);

/// The same; `observer` hears of each file (platform/files/shell_operations.h).
TVUTIL_API int MoveFolder(const char16_t* from, const char16_t* to, const char16_t* extension,
                          tvutil2::ShellObserver* observer);

/// Deletes a folder, or for 0 all that is in it, for good and without a question. 1 when all went
/// well; a folder that is empty already is fine with 0, one that isn't there never.
TVUTIL_API int DeleteFolderFiles(const char16_t* folder, int whole_folder);

/// Copies the files and folders in `from` over those in `to`, which is made when it is missing, as
/// far as they can be copied (platform/files/folder_copy.h). A link to a folder is copied as that
/// link; `to` itself is left out when it lies in `from`. Nothing happens when `from` is no folder,
/// or both are one.
TVUTIL_API void CopyFolder(const char16_t* from, const char16_t* to);

/// The same; `observer` hears of each file (platform/files/folder_copy.h).
TVUTIL_API void CopyFolder(const char16_t* from, const char16_t* to,
                           tvutil2::CopyObserver* observer);
