// The words of the dialogs for folders and files, in the languages of the family.
#pragma once

#include "tvutil2/platform/base/types.h"

namespace tvutil2 {

enum class FolderWord : std::uint8_t {
    caption,
    make_folder,  ///< on its button, with a mnemonic
    label,        ///< of the edit box, with a mnemonic
    new_folder,   ///< the name of one
    desktop,
    home,
    documents,
    computer,
    reading,     ///< in the place of what is still to come
    unreadable,  ///< in the place of what can't be read
    cannot_be_made,
    is_not_there,  ///< with %s for the path
    open_caption,
    save_caption,
    open,  ///< on buttons
    save,
    file_label,       ///< with a mnemonic
    types_label,      ///< with a mnemonic
    replaces,         ///< a question, with %s for the path
    is_silent,        ///< what hasn't answered for long, with %s for its name
    cannot_be_named,  ///< with %s for the name
    count
};

/// English for a language that isn't spoken.
[[nodiscard]] const char16_t* folder_word(FolderWord word, LANGID language);

}  // namespace tvutil2
