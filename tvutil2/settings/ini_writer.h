// From the entries of a document to the bytes of an INI file.
#pragma once

#include <string>

class CIniFile;

namespace tvutil2 {

enum class IniEncoding { narrow, utf16, utf16_on_disk };

/// Writes a document over what the file holds (platform/files/overwritten_file.h): `narrow` in the
/// ANSI code page if that holds it all, else in UTF-16; `utf16_on_disk` returns when the disk has
/// it. False with the last error; the file is then what it was.
bool write_ini(const char16_t* path, const CIniFile& document, IniEncoding encoding);

/// The same in UTF-16 if the file still holds `bytes`, and nothing if it doesn't.
bool rewrite_ini(const char16_t* path, const CIniFile& document, const std::string& bytes);

/// Puts a document in UTF-16 in the place of the file, in one step
/// (platform/files/replaced_file.h): there is the old document or the new one, whatever happens.
bool replace_ini(const char16_t* path, const CIniFile& document);

/// Makes the file an empty one.
bool clear_ini(const char16_t* path);

}  // namespace tvutil2
