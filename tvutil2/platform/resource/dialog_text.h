// What a dialog says, for a place where it can't be shown.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace tvutil2 {

struct DialogText {
    std::u16string caption;
    std::vector<std::u16string> texts;  ///< of its static controls
    struct Button {
        unsigned int id;
        std::u16string label;  ///< without the mark of its key
    };
    std::vector<Button> buttons;
};

/// Out of an extended template (DIALOGEX) of `size` bytes, as far as it is well formed.
[[nodiscard]] DialogText read_dialog_text(const void* dialog_template, std::size_t size);

}  // namespace tvutil2
