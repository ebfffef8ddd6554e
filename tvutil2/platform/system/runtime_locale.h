// The locale of the C run-time library, which is one for the process.
#pragma once

#include "tvutil2/platform/base/export.h"

/// Sets the locale of a category of <clocale> (LC_ALL: all) by the platform's names: a language in
/// English ("French", "Portuguese"), a language with its country ("zh-TW", "de_AT"), "C", or the
/// empty name for what the environment says; null asks. The host's locale for it in UTF-8 is taken,
/// or else in whichever encoding there is.
/// The host's name of what is in force then; null, and nothing changes, when the host has no such
/// locale installed. The text is void after the thread's next call. Not while other threads use
/// the locale: the host's function isn't safe beside them.
TVUTIL_API const char16_t* _wsetlocale(int category, const char16_t* name);
