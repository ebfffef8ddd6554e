#include "tvutil2/platform/base/locale.h"

#include "tvutil2/platform/base/last_error.h"

#include <algorithm>
#include <cstdlib>
#include <string>

#include <unicode/uloc.h>

namespace {

constexpr LANGID kEnglish = 0x0409;

thread_local LCID t_thread_locale = 0;

// "de_AT.UTF-8@euro" as "de_AT"; "C" and "POSIX" as "en_US".
std::string locale_from_environment() {
    for (const auto* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* value = std::getenv(name);
        if (value == nullptr || *value == 0) continue;
        std::string locale(value);
        locale.resize(std::min(locale.find_first_of(".@"), locale.size()));
        if (locale != "C" && locale != "POSIX" && !locale.empty()) return locale;
        break;
    }
    return "en_US";
}

// ICU's number for a language without a country is the neutral one; those get the sub-language
// that the platform takes for a default.
LANGID with_default_sublanguage(LANGID language) {
    return language >> 10 != 0 ? language : static_cast<LANGID>(language | 0x400);
}

}  // namespace

namespace tvutil2 {

const char* default_locale_name() {
    static const std::string name = locale_from_environment();
    return name.c_str();
}

}  // namespace tvutil2

LANGID GetSystemDefaultLangID() {
    static const LANGID language = [] {
        const auto id = LANGIDFROMLCID(uloc_getLCID(tvutil2::default_locale_name()));
        return PRIMARYLANGID(id) == 0 ? kEnglish : with_default_sublanguage(id);
    }();
    return language;
}

LCID GetThreadLocale() {
    return t_thread_locale != 0 ? t_thread_locale : GetSystemDefaultLangID();
}

BOOL SetThreadLocale(LCID locale) {
    if (LANGIDFROMLCID(locale) == 0) return tvutil2::fail_with(ERROR_INVALID_PARAMETER);
    t_thread_locale = locale;
    return TRUE;
}
