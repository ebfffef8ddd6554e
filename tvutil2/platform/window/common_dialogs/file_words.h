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
    bytes,         ///< units, up to terabytes in their order
    kilobytes,
    megabytes,
    gigabytes,
    terabytes,
    decimal_mark,
    date,  ///< a picture of GetDateFormatW
    count
};

/// English for a language that isn't spoken.
[[nodiscard]] const char16_t* file_word(FileWord word, LANGID language);

}  // namespace tvutil2
