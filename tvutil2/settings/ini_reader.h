// From the bytes of an INI file to the entries of a document.
#pragma once

class CIniFile;

namespace tvutil2 {

struct IniOutcome {
    bool is_open = false;
    bool is_utf16 = false;  ///< it has the mark FF FE
    bool is_utf8 = false;   ///< begins_utf8
    bool is_whole = false;  ///< all of it was read, and no line was too long to be held
};

/// Merges a file into a document, piece by piece: beyond the document it takes as much memory as
/// the longest line, or 64 KiB. Not open: with the last error.
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
