// Menus and dialogs from templates in memory.
//
// There are no windows yet: a template is told from something that is none, and that is all. Both
// functions then fail with ERROR_CALL_NOT_IMPLEMENTED.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

/// Builds a menu. Null, with ERROR_INVALID_PARAMETER for null, ERROR_INVALID_DATA for what is no
/// menu template (MENU or MENUEX), else ERROR_CALL_NOT_IMPLEMENTED.
TVUTIL_API HMENU LoadMenuIndirectW(const void* menu_template);

/// Runs a dialog until it ends. -1, with ERROR_INVALID_PARAMETER for a null template or procedure,
/// ERROR_INVALID_DATA for an extended template (DIALOGEX) of a version that doesn't exist, else
/// ERROR_CALL_NOT_IMPLEMENTED.
TVUTIL_API INT_PTR DialogBoxIndirectParamW(HINSTANCE instance, const void* dialog_template,
                                           HWND parent, DLGPROC procedure, LPARAM parameter);
