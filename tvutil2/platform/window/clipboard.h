// The clipboard: what one program copies and another one pastes.
//
// A thread opens it, works on it and closes it; meanwhile no other thread of the process can. What
// it holds are blocks of memory (GlobalAlloc), one a format. Text is there as CF_TEXT, in the ANSI
// code page, and as CF_UNICODETEXT when it was put there as either, with lines that end in "\r\n".
//
// On a desktop text goes to the desktop's clipboard when it is closed, and comes from there; other
// formats stay in the process, as everything does where there is no desktop.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

inline constexpr UINT CF_TEXT = 1;
inline constexpr UINT CF_UNICODETEXT = 13;
inline constexpr DWORD ERROR_CLIPBOARD_NOT_OPEN = 1418;

/// 0 with ERROR_ACCESS_DENIED while another thread has it open, ERROR_INVALID_WINDOW_HANDLE for
/// what is no window. `owner` may be null.
TVUTIL_API BOOL OpenClipboard(HWND owner);
/// 0 with ERROR_CLIPBOARD_NOT_OPEN when the thread doesn't have it open; so are those below.
TVUTIL_API BOOL CloseClipboard();
/// Frees what it holds.
TVUTIL_API BOOL EmptyClipboard();
/// The block belongs to the clipboard from then on. Null when it fails: the caller still has the
/// block. ERROR_INVALID_PARAMETER for a null one or for format 0.
TVUTIL_API HGLOBAL SetClipboardData(UINT format, HGLOBAL data);
/// A block of the clipboard, good until it is emptied or closed; null when there is nothing of the
/// format. The desktop's text is waited for, two seconds at most.
TVUTIL_API HGLOBAL GetClipboardData(UINT format);
/// Without opening it.
TVUTIL_API BOOL IsClipboardFormatAvailable(UINT format);
/// The window that was named when it was last emptied.
TVUTIL_API HWND GetClipboardOwner();
/// Another number after each change by this process.
TVUTIL_API DWORD GetClipboardSequenceNumber();
