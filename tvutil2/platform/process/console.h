// The console of another process: its terminal, into which keys can be typed.
//
// A process has one such console at a time, from AttachConsole to FreeConsole; two threads must not
// work with it at once. What is typed is put into the terminal's input as if it came from the
// keyboard, which Linux lets who has CAP_SYS_ADMIN do, or whose own terminal it is, and whether at
// all, dev.tty.legacy_tiocsti says.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

inline constexpr DWORD STD_INPUT_HANDLE = static_cast<DWORD>(-10);
inline constexpr WORD KEY_EVENT = 1;

struct KEY_EVENT_RECORD {
    BOOL bKeyDown;
    WORD wRepeatCount;
    WORD wVirtualKeyCode;
    WORD wVirtualScanCode;
    union {
        char16_t UnicodeChar;
        char AsciiChar;
    } uChar;
    DWORD dwControlKeyState;
};

struct INPUT_RECORD {
    WORD EventType;
    union {
        KEY_EVENT_RECORD KeyEvent;
    } Event;
};

/// 0 with ERROR_ACCESS_DENIED when there is one already, or it is another user's,
/// ERROR_INVALID_PARAMETER for no process, ERROR_INVALID_HANDLE for one without a terminal.
TVUTIL_API BOOL AttachConsole(DWORD process);
/// 0 with ERROR_INVALID_PARAMETER when there is none.
TVUTIL_API BOOL FreeConsole();
/// The attached console's input; good until FreeConsole. Null with ERROR_INVALID_HANDLE without
/// one, and for any other number.
TVUTIL_API HANDLE GetStdHandle(DWORD which);
/// Types the characters of the keys that go down, in order; all else is passed over. `written` is
/// the number of records that were taken. 0 with ERROR_INVALID_HANDLE, or with
/// ERROR_ACCESS_DENIED where the system doesn't let one program type for another.
TVUTIL_API BOOL WriteConsoleInputW(HANDLE input, const INPUT_RECORD* records, DWORD count,
                                   DWORD* written);
