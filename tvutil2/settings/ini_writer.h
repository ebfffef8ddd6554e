// From the entries of a document to the bytes of an INI file.
#pragma once

class CIniFile;

namespace tvutil2 {

/// Writes a document over what the file holds. False, with the last error, when the file can't be
/// opened. One that can't be written to its end, on a full disk, say, stays as it was; a process
/// that is killed meanwhile leaves it in pieces. Beyond the document it takes 64 KiB, and twice as
/// much again for the ANSI code page.
bool write_ini(const char16_t* path, const CIniFile& document, bool is_utf16, bool is_flushed);

}  // namespace tvutil2
