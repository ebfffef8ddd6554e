// The standard messages about what a person has typed, and about errors.
//
// Each shows a message box and returns when it is answered. GetLastErrorString, which some of them
// want, stands in services/environment.h.
#pragma once

#include "tvutil2/framework/wnd.h"

/// A text and what the system says about an error, with " : " between them; either may be missing.
/// Nothing for an empty text and error 0.
TVUTIL_API void ShowErrorMessage(CString strText, DWORD dwError);
TVUTIL_API void ShowEnterIntegerMessage();
TVUTIL_API void ShowEnterUIntMessage();
/// What was typed isn't shown.
TVUTIL_API void ShowInvalidIntRangeMessage(int nTyped, int nMin, int nMax);
/// With the sign of an error.
TVUTIL_API void ShowInvalidFileNameMessage();
/// The window's own box, without a caption, with a warning sign; nothing for null.
TVUTIL_API void ShowInvalidFileNameMessage(CWnd* pWnd);
