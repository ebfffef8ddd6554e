// The text of paths: putting together, taking apart, cutting. Nothing here looks at the disk unless
// it says so.
//
// The separator is the backslash. A path with ":" as its second character and one that begins with
// two backslashes are absolute. Lengths count 16-bit units. All functions are safe from any thread.
#pragma once

#include "tvutil2/framework/strings.h"

/// Adds `tail` behind one backslash, without the one that it may begin with. 0 and no change when
/// `path` is empty or `tail` null; else 1.
TVUTIL_API int AppendPath(CString& path, const char16_t* tail);

/// Combines an absolute path with one that may be relative, absolute or rooted ("\x"); "." and ".."
/// of a relative one are resolved. 0 and no change when `tail` is null or `path` isn't "X:",
/// doesn't begin with two backslashes and has no backslash as its third character; else 1. ".."
/// takes away the last part of whatever is left, the drive's too when there is nothing else.
TVUTIL_API int AppendPathEx(CString& path, const char16_t* tail);

/// What stands behind the last backslash.
TVUTIL_API CString GetFnameofPath(const char16_t* path);

/// `path` with `name` for its file name: drive, folder and extension stay. A part of more than 255
/// units makes all of them empty, so that `out` is `name`.
TVUTIL_API void ReplaceFnameOfPath(CString& out, const char16_t* path, const char16_t* name);

/// The name that a path has on the disk, alone, and 1; or 0 and a copy of `path`. `out` has room
/// for 260 units; what is longer is cut.
TVUTIL_API int GetLongFileName(char16_t* out, const char16_t* path);

/// The folder of the running executable, without its last backslash for a null `tail`, else with
/// backslash and `tail`.
TVUTIL_API void AfxGetModulePath(CString& out, const char16_t* tail);

/// With `to_absolute`: hangs a relative path on `base`; "." is `base` itself. Without: takes every
/// occurrence of the text `base` out of `path`, and then one leading backslash. An empty path
/// stays.
TVUTIL_API void AfxConvertPath(CString& path, const char16_t* base, int to_absolute);

/// Replaces each %NAME% that names an environment variable by its value, everywhere in `path`; 1
/// when there was one. Values of more than 4095 units count as missing. What would make the path
/// longer than 32767 units, the longest that the platform knows, isn't replaced any more: variables
/// that name themselves could grow it without end.
TVUTIL_API int ChangePathWithEnv(CString& path);

/// Takes "stem (12)" apart. 1, or 0 with the whole name in `stem` and `number` 0; null or empty
/// text gives 0 and changes nothing. A number beyond an int gives the largest one.
TVUTIL_API int SplitNameForSaveAs(const char16_t* name, CString& stem, int& number);

/// A path of more than `max_length` units with its middle cut out: max_length / 2 - 3 units of each
/// end and "......" between them. Where that leaves no unit (below 8, and for what is negative),
/// the six dots alone.
TVUTIL_API CString TvTruncatePath(const char16_t* path, int max_length);
