// The choice of a product's language, and a thread put into it.
//
// The choice lies where resource_language.h says; a value "Temporary" (REG_DWORD) beside it, in the
// user's key alone, holds one that isn't final yet. Translations of a product stand in satellite
// modules, in the folder "Languages" beside the module that they belong to.
//
// Nothing here holds a lock, and only MLS_TvChangeLanguage shows anything.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

/// Stores the user's choice for a product. With `temporary` as one that isn't final; without it as
/// the choice, and none is temporary any more. Language 0 without `temporary` makes the temporary
/// one final, if there is one. What the registry refuses is passed over.
TVUTIL_API void MLS_TvSaveLanguage(const char16_t* product, WORD language, int temporary);

/// Lets the person choose the language of a product, in a dialog: the one chosen, and in `restart`
/// 1 when the program is to be started anew for it, else 0. 0, and `restart` as it was, when
/// nothing is chosen or there is no display. It stores nothing.
TVUTIL_API WORD MLS_TvChangeLanguage(const char16_t* product, int& restart);

/// Loads the module's satellite for the product's language ("tool.exe" in French:
/// "Languages\\toolFRA.dll") for its resources alone, and puts the calling thread into that
/// language. The handle is the caller's, for FreeLibrary. Null without a satellite: in English,
/// or for a module without a path, the thread is put into English, and where the satellite can't be
/// loaded it stays in its language.
TVUTIL_API HINSTANCE TvLoadAppLangResourceDLL(HINSTANCE module, const char16_t* product);

/// Puts the calling thread into a locale, and logs it. Non-zero if the system took its language.
TVUTIL_API int TvSetThreadLocale(DWORD locale);

/// Puts the process's C run-time library into the locale of the system's language, and with it the
/// names of months and days in the head of a log. Before other threads use that locale.
TVUTIL_API void TvSetLocale();
