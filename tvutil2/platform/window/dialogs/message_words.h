// What stands on the buttons of messages, in the languages of the family.
#pragma once

#include "tvutil2/platform/base/types.h"

namespace tvutil2 {

/// With its mnemonic; English for a language that isn't spoken. Null for no button of a message.
[[nodiscard]] const char16_t* message_word(int button, LANGID language);

}  // namespace tvutil2
