// The words of the dialog for files alone; those that it has in common with the one for folders are
// in folder_words.h.
#pragma once

#include "tvutil2/platform/base/types.h"

namespace tvutil2 {

enum class FileWord : std::uint8_t {
    up,  ///< on its button, with a mnemonic
    name,
    size,
    changed,
    type,
    downloads,
    folder,  ///< as a type
    file,
    typed_file,    ///< with %s for the extension in upper case
    is_empty,      ///< in the place of what there is none of
    is_not_there,  ///< of a file, with %s for its path
    creates,       ///< a question, with %s for the path
    read_only,     ///< on a check box, with a mnemonic
    count
};

/// How a language writes sizes and times.
struct FileFormat {
    const char16_t* units[5];  ///< bytes, and each 1024 of the one before, up to terabytes
    char16_t decimal_mark;
    const char16_t* date;  ///< a picture of GetDateFormatW
};

// English for a language that isn't spoken.
[[nodiscard]] const char16_t* file_word(FileWord word, LANGID language);
[[nodiscard]] const FileFormat& file_format(LANGID language);

}  // namespace tvutil2
