// Matching and listing names.
#pragma once

#include "tvutil2/framework/strings.h"

class CStringList;

/// 1 when the whole of `text` fits `pattern`: "*" stands for any run of units, also none, "?" for
/// any one; case counts. A "*" that meets a "*" in the text is taken as that character. The cost is
/// bounded by the product of the lengths. Null counts as empty text.
TVUTIL_API int WildcardMatch(const char16_t* pattern, const char16_t* text);

/// Calls back with each name in `folder\*.ext`, without its last units for the extension and its
/// dot, until the callback gives 0. 1 when any name was found. The names are those of the moment
/// of the call: the callback may change the folder. `data` is the caller's; it has room for a
/// pointer.
TVUTIL_API int EnumFile(const char16_t* folder, const char16_t* extension,
                        int (*callback)(const char16_t* name, long data), long data);

/// Appends the name of every file in `folder`, cut at its last dot. Folders are passed over.
TVUTIL_API void GetFileNamesInADir(const char16_t* folder, CStringList& out);

/// 1 when `folder` holds a folder, or a file whose extension (behind the last dot) equals
/// `extension` without regard to case; else 0.
TVUTIL_API int DoesFolderHave(const char16_t* folder, const char16_t* extension);
