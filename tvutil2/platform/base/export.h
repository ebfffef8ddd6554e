// Visibility of what the library offers. Everything else is hidden.
#pragma once

#include "tvutil2/platform/base/language.h"

#if defined(TVUTIL2_BUILDING)
#define TVUTIL_API __attribute__((visibility("default")))
#else
#define TVUTIL_API
#endif
