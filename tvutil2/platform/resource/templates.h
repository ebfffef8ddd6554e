// Menus from templates in memory.
//
// There are no menus yet: a template is told from something that is none, and that is all.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

/// Builds a menu. Null, with ERROR_INVALID_PARAMETER for null, ERROR_INVALID_DATA for what is no
/// menu template (MENU or MENUEX), else ERROR_CALL_NOT_IMPLEMENTED.
TVUTIL_API HMENU LoadMenuIndirectW(const void* menu_template);
