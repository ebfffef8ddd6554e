// Text handed to other programs: by the clipboard, and as keys typed into a console.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

/// Puts text on the clipboard, as CF_TEXT alone: what the ANSI code page doesn't have is
/// changed on the way. 1, or 0 for an empty text, which leaves the clipboard as it is, and when it
/// can't be opened or memory is short, which leaves it empty.
TVUTIL_API BOOL TvCopyStringToClipboard(const char16_t* lpszText);

/// Types text into the console of a window's process: for each character a key that goes down and
/// one that goes up, with no special handling for any. Nothing happens where there is no such
/// console. It is the process's console meanwhile, so one thread at a time.
TVUTIL_API void TvSendStringToCmd(HWND hWnd, const char16_t* lpszText);
