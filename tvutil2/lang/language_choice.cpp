#include "tvutil2/lang/language_choice.h"

#include "tvutil2/lang/language_key.h"
#include "tvutil2/lang/language_table.h"
#include "tvutil2/lang/resource_language.h"
#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/base/locale.h"

namespace tvutil2 {
namespace {

void take_user(const LanguageKey& key, LanguageSource source, LanguageChoice& choice) {
    const auto number = key.number(LanguageKey::kUser);
    if (!number) return;
    choice.language = LOWORD(*number);
    choice.source = source;
}

// The thread's, of which only those count that are spoken here.
WORD language_of_thread() {
    const auto language = LANGIDFROMLCID(GetThreadLocale());
    return TvMapResourceLanguage(language) == kEnglish ? kEnglish : language;
}

}  // namespace

LanguageChoice language_choice(const char16_t* product) {
    LanguageChoice choice;
    choice.language = language_of_thread();
    const auto user = LanguageKey::open(HKEY_CURRENT_USER, product);
    if (user.is_open()) {
        take_user(user, LanguageSource::user, choice);
        choice.temporary = LOWORD(user.number(LanguageKey::kTemporary).value_or(0));
    }
    const auto machine = LanguageKey::open(HKEY_LOCAL_MACHINE, product);
    if (!machine.is_open()) return choice;
    const auto user_time = user.last_write();
    const auto machine_time = machine.last_write();
    choice.is_due_to_user = CompareFileTime(&user_time, &machine_time) < 0;
    if (choice.is_due_to_user) take_user(machine, LanguageSource::machine, choice);
    return choice;
}

}  // namespace tvutil2
