// A question or message to the person: in a window, or on a terminal.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

inline constexpr UINT MB_OK = 0x0;
inline constexpr UINT MB_OKCANCEL = 0x1;
inline constexpr UINT MB_ABORTRETRYIGNORE = 0x2;
inline constexpr UINT MB_YESNOCANCEL = 0x3;
inline constexpr UINT MB_YESNO = 0x4;
inline constexpr UINT MB_RETRYCANCEL = 0x5;
inline constexpr UINT MB_CANCELTRYCONTINUE = 0x6;
inline constexpr UINT MB_TYPEMASK = 0xF;
inline constexpr UINT MB_ICONERROR = 0x10;
inline constexpr UINT MB_ICONQUESTION = 0x20;
inline constexpr UINT MB_ICONWARNING = 0x30;
inline constexpr UINT MB_ICONINFORMATION = 0x40;
inline constexpr UINT MB_ICONMASK = 0xF0;
inline constexpr UINT MB_DEFBUTTON1 = 0x000;
inline constexpr UINT MB_DEFBUTTON2 = 0x100;
inline constexpr UINT MB_DEFBUTTON3 = 0x200;
inline constexpr UINT MB_DEFBUTTON4 = 0x300;
inline constexpr UINT MB_DEFMASK = 0xF00;

inline constexpr int IDOK = 1;
inline constexpr int IDCANCEL = 2;
inline constexpr int IDABORT = 3;
inline constexpr int IDRETRY = 4;
inline constexpr int IDIGNORE = 5;
inline constexpr int IDYES = 6;
inline constexpr int IDNO = 7;
inline constexpr int IDTRYAGAIN = 10;
inline constexpr int IDCONTINUE = 11;

/// Shows a text and asks for one of the buttons of `type`; the ID of the one chosen.
///
/// With a display it is a window, before which `owner` can't be used; 0 with
/// ERROR_INVALID_WINDOW_HANDLE for an owner that is none. Its buttons speak the calling thread's
/// language. Esc and closing answer Cancel, or OK where that is all. When the display goes away, or
/// the thread's loop is to end, the answer is the button that refuses.
///
/// Without a display it is asked on the controlling terminal, when the process is in its
/// foreground; an empty line there chooses the default button. Without such a terminal, or when it
/// goes away, the answer is the button that refuses (Cancel, No, Abort, or OK where that is all),
/// whatever the default button is, and text and answer are printed on standard error: nothing is
/// approved in silence. Control characters of the texts are shown as their codes. Boxes of several
/// threads are asked one after the other. 0 with ERROR_INVALID_MSGBOX_STYLE for an unknown set of
/// buttons.
TVUTIL_API int MessageBoxW(HWND owner, const char16_t* text, const char16_t* caption, UINT type);
