// Whether files and folders are there, and making them.
#pragma once

#include "tvutil2/framework/strings.h"

/// 1 when a search for `path` finds something: a file, a folder, or a match of its wildcards.
TVUTIL_API int DoesFileExist(const char16_t* path);

/// 1 when `path` is a folder, or a link to one.
TVUTIL_API int DoesFolderExist(const char16_t* path);

/// 1 when anything is at `path`, or the folder could be made. One level only.
TVUTIL_API int EnsureFolderExist(const char16_t* path);

/// The same with all missing folders above: from the last separator on upwards until one is there,
/// whatever is in between ("a\missing\..\b" makes "a\b" alone). Folders that could be made stay
/// when a later one can't.
TVUTIL_API int EnsureFolderExistRecursive(const char16_t* path);

namespace tvutil2 {
/// The same for what is a person's own: the folders that are made are open to the account alone.
int ensure_private_folder(const char16_t* path);
}  // namespace tvutil2

/// Takes the trailing backslashes off an absolute path. Then 1 when it is a folder, or with
/// `create` when it is there or could be made. 0 and no change for a path that isn't absolute.
TVUTIL_API int AfxGetValidFolderPath(CString& path, int create);

/// 1 when an empty file was made. When it couldn't be, also because there is one, a message says so
/// and the result is 0.
TVUTIL_API int CreateEmptyFile(const char16_t* path);
