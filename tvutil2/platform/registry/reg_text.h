// Registry keys as text: version 5 of the ".reg" format, as registry editors exchange it.
//
//   Windows Registry Editor Version 5.00
//
//   [HKEY_CURRENT_USER\Software\Product]     makes a key; [-...] deletes it and all below it
//   "name"="text"                            \\ and \" inside; line breaks stand for themselves
//   @=dword:0000002a                         the unnamed value
//   "bytes"=hex:01,02,\                      a trailing backslash goes on in the next line
//     03
//   "typed"=hex(2):25,00,00,00               data of type 2, the number being hexadecimal
//   "old"=-                                  deletes the value
//   ; a comment
//
// Words are read in any case. Text is UTF-16LE with its mark, or UTF-8 with or without one.
// The functions may be called from any thread and leave the last error alone.
#pragma once

#include "tvutil2/platform/registry/registry.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tvutil2 {

struct RegTextValue {
    std::u16string name;  ///< empty is the unnamed value
    bool is_deleted = false;
    DWORD type = REG_NONE;
    std::vector<BYTE> data;
};

struct RegTextKey {
    HKEY root = nullptr;
    std::u16string path;  ///< below the root; empty is the root itself
    bool is_deleted = false;
    std::vector<RegTextValue> values;
};

struct RegTextError {
    std::size_t line;  ///< from 1
    const char* what;
};

/// Takes "HKCU\a\b" apart; long root names too, in any case, one trailing backslash passed over.
/// False for another root, an empty or too long part, or more than REG_MAX_DEPTH of them.
[[nodiscard]] TVUTIL_API bool parse_reg_key_name(std::u16string_view name, HKEY& root,
                                                 std::u16string& path);
/// The name with its root in the long form.
[[nodiscard]] TVUTIL_API std::u16string reg_key_name(HKEY root, std::u16string_view path);

/// Reads a whole text. `keys` is in the text's order, and empty after an error. It takes memory in
/// proportion to the text.
[[nodiscard]] TVUTIL_API std::optional<RegTextError> parse_reg_text(std::string_view bytes,
                                                                    std::vector<RegTextKey>& keys);

/// Makes the changes one after the other; what is to be deleted may be missing. At the first error
/// it stops, `failed` being the index of the key, and what was changed before stays.
TVUTIL_API LONG apply_reg_text(const std::vector<RegTextKey>& keys, std::size_t& failed);

/// The text of these keys: UTF-16LE with its mark, lines ended by CR LF. What is written reads back
/// the same. Text that quotes can't hold exactly (lists, text to expand, text without a final zero)
/// is written as bytes, with the words in a comment above. False, with `bytes` empty, for a key
/// whose name has a line break or a zero, or a value whose name has a zero, which the format can't
/// hold.
[[nodiscard]] TVUTIL_API bool write_reg_text(const std::vector<RegTextKey>& keys,
                                             std::string& bytes);

/// A key alone, its values sorted by name.
TVUTIL_API LONG read_reg_key(HKEY root, const std::u16string& path, RegTextKey& key);

/// A key with all below it, sorted by name. Keys that are deleted meanwhile are left out. On an
/// error of the registry `keys` is empty.
TVUTIL_API LONG read_reg_tree(HKEY root, const std::u16string& path, std::vector<RegTextKey>& keys);

}  // namespace tvutil2
