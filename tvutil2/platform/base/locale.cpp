#include "tvutil2/platform/base/locale.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/registry/machine_setting.h"

#include <unicode/uloc.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <string>

namespace {

constexpr LANGID kEnglish = 0x0409;

thread_local LCID t_thread_locale = 0;

// What the environment says, without a word for the plain "C" locale, which speaks English.
std::string_view locale_from_environment() {
    for (const auto* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* value = std::getenv(name);
        if (value != nullptr && *value != 0) return value;
    }
    return {};
}

// The language that an administrator has set for everybody; 0 for none.
LANGID language_of_machine() {
    const auto text =
        tvutil2::machine_setting(u"SYSTEM\\CurrentControlSet\\Control\\Nls\\Language", u"Default");
    if (!text) return 0;
    std::string digits;
    for (const char16_t c : *text) digits.push_back(c < 0x80 ? static_cast<char>(c) : '?');
    const auto* const end = digits.data() + digits.size();
    LANGID id = 0;
    const auto [stop, error] = std::from_chars(digits.data(), end, id, 16);
    return error == std::errc() && stop == end && PRIMARYLANGID(id) != 0 ? id : 0;
}

LANGID id_of(const char* icu_name) {
    return LANGIDFROMLCID(uloc_getLCID(icu_name));
}

// Names a language alone, or a language in a script (the last three sub-languages).
bool is_without_country(LANGID id) {
    const auto sublanguage = id >> 10;
    return sublanguage == 0 || sublanguage >= 29;
}

// The id in the country, and in the script, that most of those who speak it are at home in.
LANGID with_likely_country(const char* icu_name, LANGID id) {
    UErrorCode error = U_ZERO_ERROR;
    char likely[ULOC_FULLNAME_CAPACITY] = "";
    char language[ULOC_LANG_CAPACITY] = "";
    char country[ULOC_COUNTRY_CAPACITY] = "";
    uloc_addLikelySubtags(icu_name, likely, sizeof likely, &error);
    uloc_getLanguage(likely, language, sizeof language, &error);
    uloc_getCountry(likely, country, sizeof country, &error);
    if (U_FAILURE(error)) return id;
    for (const auto& name : {std::string(likely), std::string(language) + '_' + country}) {
        const auto found = id_of(name.c_str());
        if (PRIMARYLANGID(found) == PRIMARYLANGID(id) && !is_without_country(found)) return found;
    }
    return id;
}

}  // namespace

namespace tvutil2 {

std::string icu_locale_name(std::string_view host) {
    const auto modifier = host.substr(std::min(host.find('@'), host.size()));
    host = host.substr(0, std::min(host.find_first_of(".@"), host.size()));
    if (host.empty() || host == "C" || host == "POSIX") return "en_US";
    std::string name(host);
    // The host names a script at the end, ICU behind the language.
    const auto language_end = std::min(name.find('_'), name.size());
    if (modifier == "@latin") name.insert(language_end, "_Latn");
    if (modifier == "@cyrillic") name.insert(language_end, "_Cyrl");
    return name;
}

LANGID language_of(std::string_view host) {
    const auto name = icu_locale_name(host);
    const auto id = id_of(name.c_str());
    if (PRIMARYLANGID(id) == 0) return kEnglish;
    return is_without_country(id) ? with_likely_country(name.c_str(), id) : id;
}

const char* default_locale_name() {
    static const std::string name = icu_locale_name(locale_from_environment());
    return name.c_str();
}

}  // namespace tvutil2

LANGID GetSystemDefaultLangID() {
    static const LANGID language = [] {
        const auto set = language_of_machine();
        return set != 0 ? set : tvutil2::language_of(locale_from_environment());
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

LANGID SetThreadUILanguage(LANGID language) {
    t_thread_locale = language;
    return LANGIDFROMLCID(GetThreadLocale());
}
