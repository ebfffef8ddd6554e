// Private-profile files: settings of sections and keys in a text file, one call a value.
//
// A line "[name]" begins a section, "key=value" is an entry, ";" in front makes a comment. Sections
// and keys are found without regard to case, white space around names and values doesn't count, and
// one pair of quotes (" or ') around a value is taken away. Of two sections or keys of one name the
// first holds. A path is any that the layer knows; a bare name lies in the current folder.
//
// Files keep their encoding: UTF-16 of either byte order with its mark, UTF-8 with its mark or
// without, and the ANSI code page, or 1252 for what isn't UTF-8 where that is the ANSI code page. A
// new file is in the ANSI code page. A file whose page doesn't hold a text becomes UTF-16 rather
// than losing it. A write touches no byte of the other lines: comments, order, line ends and what
// isn't valid in the encoding stay.
//
// A write replaces the file in one step, so that a reader, a crash or a full disk meets the old
// file or the new one. A file that can be written, but not replaced, since its folder belongs to
// somebody else, is overwritten in its place, with what platform/files/overwritten_file.h says of
// it: a crash of the machine then may leave it in pieces. Writers of all processes take turns for
// each file and folder. Reads don't parse a file again that is still the same. All functions are
// safe from any thread.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

/// Copies a value to `buffer` of `size` units and ends it with a zero; `fallback` without its
/// trailing blanks, null being empty text, when there is no such file, section or key. Gives the
/// units copied, the zero not counted. What doesn't fit is cut to size - 1 units, with
/// ERROR_MORE_DATA. ERROR_FILE_NOT_FOUND and its kin when the file can't be read.
///
/// A null `key` gives the names of the section's keys, a null `section` those of all sections, each
/// with its zero and one more zero behind the last. Cut, the list ends with two zeros, and the
/// result is size - 2. A section without a name isn't listed. The names of a section that isn't
/// there are `fallback`.
TVUTIL_API DWORD GetPrivateProfileStringW(const char16_t* section, const char16_t* key,
                                          const char16_t* fallback, char16_t* buffer, DWORD size,
                                          const char16_t* path);

/// The number at the front of a value, behind white space and a sign, modulo 2^32; decimal, or
/// behind "0x", "0o" and "0b" of base 16, 8 and 2. 0 when it begins with none, `fallback` when
/// there is no such value.
TVUTIL_API UINT GetPrivateProfileIntW(const char16_t* section, const char16_t* key, int fallback,
                                      const char16_t* path);

/// The names of all sections, as GetPrivateProfileStringW lists them.
TVUTIL_API DWORD GetPrivateProfileSectionNamesW(char16_t* buffer, DWORD size, const char16_t* path);

/// All entries of a section as "key=value", quotes kept, in the same form as a list of names.
TVUTIL_API DWORD GetPrivateProfileSectionW(const char16_t* section, char16_t* buffer, DWORD size,
                                           const char16_t* path);

/// Sets a value. The file and the section are made if they are missing, the folder isn't. A null
/// `value` removes the key, a null `key` the section; removing what isn't there succeeds. The value
/// ends at its first line break. 0 with the last error: ERROR_PATH_NOT_FOUND, ERROR_ACCESS_DENIED
/// (a file that may not be written, a folder), ERROR_DISK_FULL and so on; ERROR_INVALID_PARAMETER
/// for a null section and for names that no reader would find again: with a line break, an empty
/// key, one with "=" or with "[" or ";" in front; ERROR_NO_UNICODE_TRANSLATION when the file would
/// have to become UTF-16 and bytes of it are wrong in its encoding.
TVUTIL_API BOOL WritePrivateProfileStringW(const char16_t* section, const char16_t* key,
                                           const char16_t* value, const char16_t* path);

namespace tvutil2 {

/// GetPrivateProfileStringW with a fallback that keeps its trailing blanks.
DWORD profile_string(const char16_t* section, const char16_t* key, const char16_t* fallback,
                     char16_t* buffer, DWORD size, const char16_t* path);

}  // namespace tvutil2
