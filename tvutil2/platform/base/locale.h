// The system's default language and the locale of a thread.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

#include <string>
#include <string_view>

/// The language of the installation: what the machine hive's
/// SYSTEM\CurrentControlSet\Control\Nls\Language says in its value "Default" (an id in hexadecimal
/// digits, "0411"), for all accounts; without it what the account's environment says, by LC_ALL,
/// LC_MESSAGES or LANG, the first that is set. 0x0409 (English) when that is none of the languages
/// that have an id here. Read once a process.
TVUTIL_API LANGID GetSystemDefaultLangID();

/// The calling thread's locale; GetSystemDefaultLangID until the thread sets one.
TVUTIL_API LCID GetThreadLocale();
/// Non-zero, and the thread has the locale. 0 with ERROR_INVALID_PARAMETER for a locale whose low
/// 16 bits are 0.
TVUTIL_API BOOL SetThreadLocale(LCID locale);
/// The language in which the thread is shown resources is that of its locale, so this sets one with
/// that language. The language that it has then: 0 gives it back to the system's default.
TVUTIL_API LANGID SetThreadUILanguage(LANGID language);

/// Language part of a locale, and primary language (low 10 bits) of a language.
[[nodiscard]] constexpr LANGID LANGIDFROMLCID(LCID locale) {
    return static_cast<LANGID>(locale & 0xFFFF);
}
[[nodiscard]] constexpr WORD PRIMARYLANGID(LANGID language) {
    return static_cast<WORD>(language & 0x3FF);
}

namespace tvutil2 {

/// The language id of a host's locale name ("de_AT.UTF-8@euro"): a language without a country gets
/// the likeliest country; 0x0409 for "C" and for what has no id.
[[nodiscard]] TVUTIL_API LANGID language_of(std::string_view host);

/// The same locale under the name that ICU knows it by ("sr_Latn_RS" for "sr_RS@latin").
[[nodiscard]] TVUTIL_API std::string icu_locale_name(std::string_view host);

/// The default locale under the name that ICU knows it by ("de_AT"); valid for the process's life.
[[nodiscard]] const char* default_locale_name();

}  // namespace tvutil2
