// What is stored of a product's language, and who decided. Where it lies says resource_language.h.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

namespace tvutil2 {

enum class LanguageSource { thread, user, machine };

struct LanguageChoice {
    WORD language = 0;  ///< as it stands there; which resources there are for it is another matter
    LanguageSource source = LanguageSource::thread;
    /// The machine's key is the newer one, and the user's hasn't got the language yet.
    bool is_due_to_user = false;
    WORD temporary = 0;  ///< chosen, but not the user's yet; 0 for none
};

/// Looks without writing anything. What can't be read counts as not there, and of a product's name
/// at most 19 units do. Safe from any thread, whose own language it is when none is stored.
[[nodiscard]] TVUTIL_API LanguageChoice language_choice(const char16_t* product);

}  // namespace tvutil2
