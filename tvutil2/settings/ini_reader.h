// From the bytes of an INI file to the entries of a document.
#pragma once

#include <string>

class CIniFile;

namespace tvutil2 {

struct IniOutcome {
    bool is_open = false;
    bool is_utf16 = false;  ///< it has the mark FF FE
    bool is_utf8 = false;   ///< begins_utf8
    /// Each byte is in the document or in what no document holds. Not so when some are wrong in
    /// their encoding, nor in UTF-16 of the other byte order, of which nothing is understood.
    bool is_lossless = true;
    std::string bytes;  ///< the file
};

/// Merges a file into a document. Not open: with the last error.
IniOutcome read_ini(const char16_t* path, CIniFile& document);

/// Looks at the first sequence that isn't ASCII. `next` gives byte after byte, and a negative
/// number at the end.
template <class Next>
[[nodiscard]] bool begins_utf8(Next next) {
    int byte = next();
    while (byte >= 0 && byte < 0x80) byte = next();
    if (byte < 0xC0 || byte >= 0xF7) return false;
    for (int left = byte < 0xE0 ? 1 : byte < 0xF0 ? 2 : 3; left > 0; --left) {
        if (const int tail = next(); tail < 0 || (tail & 0xC0) != 0x80) return false;
    }
    return true;
}

}  // namespace tvutil2
