// In which language a product and the library speak, and resources in that language.
//
// The choice of a product is the value "User" (REG_DWORD, low 16 bits: a language id) of the key
// Software\Tolvarine\<product>\8\Language: one for the user, and one for the machine, which reaches
// each user once. It is read at each call. At most 19 units of a product's name count.
//
// Nothing here shows a message, holds a lock or keeps state; all functions are safe from any
// thread, and speak the language of the thread that calls them where no product is named.
#pragma once

#include "tvutil2/framework/strings.h"
#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

/// The language that there are resources for nearest to a language id, by its primary language
/// (low 10 bits). Chinese, Japanese, Korean, Russian and Slovak keep their sub-language; what
/// isn't spoken here gives English.
TVUTIL_API WORD TvMapResourceLanguage(DWORD language);

/// The language in force for a product, mapped: the user's choice, or the machine's where that was
/// written later, and then it becomes the user's; else that of the thread. A choice that can't be
/// read counts as none, and one that can't be written is in force all the same.
extern "C" TVUTIL_API WORD MLS_TvGetUserLanguage(const char16_t* product);

TVUTIL_API WORD MLS_TvGetResourceLanguage(const char16_t* product);
/// The system's default language, mapped.
TVUTIL_API WORD MLS_TvGetLocalLanguage();

/// Copies a string with its zero, in the language of the product, of the thread for null; where
/// the module doesn't have it, in whichever the system chooses. `size` is in bytes, at least 2. A
/// text that is too long is cut, never within a surrogate pair. 1, or 0 when there is no such
/// string or it is empty: the destination is left alone then.
TVUTIL_API int MLS_TvLoadString(HINSTANCE module, unsigned int id, char16_t* destination, int size,
                                const char16_t* product);

/// A menu in the product's language, or in whichever the system chooses. Null when there is none
/// of that name, and for whatever LoadMenuIndirectW fails for; the last error tells.
TVUTIL_API HMENU MLS_TvLoadMenu(HINSTANCE module, const char16_t* menu, const char16_t* product);

/// Runs a dialog in the product's language, or in whichever the system chooses, and gives what
/// DialogBoxIndirectParamW gives. 0 when there is none of that name.
TVUTIL_API int MLS_TvDialogBoxParam(HINSTANCE module, const char16_t* dialog, HWND parent,
                                    DLGPROC procedure, LPARAM parameter, const char16_t* product);

/// A string of the application's resources in the product's language, up to 255 units; "??" when
/// there is none, so that a missing string shows.
TVUTIL_API CString MLS_TVUTIL_ID2STR(unsigned int id, const char16_t* product);
/// The same for a module's string in the thread's language.
TVUTIL_API CString MLS_TVUTIL_ID2STR_DLL(HINSTANCE module, unsigned int id);
