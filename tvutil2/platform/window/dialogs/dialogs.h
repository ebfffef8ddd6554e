// Dialogs: windows from templates, and how the keyboard moves among their controls.
//
// A dialog belongs to the thread that makes it. Its procedure (DLGPROC) gives non-zero for what it
// has handled; DefDlgProcW does the rest. Dialog units are a quarter of the average width and an
// eighth of the height of its font's characters.
//
// Without a display there are no dialogs: functions that make one fail with
// ERROR_REQUIRES_INTERACTIVE_WINDOWSTATION.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/process/message_box.h"
#include "tvutil2/platform/window/window_types.h"

inline constexpr DWORD DS_ABSALIGN = 0x1;
inline constexpr DWORD DS_SYSMODAL = 0x2;
inline constexpr DWORD DS_SETFONT = 0x40;
inline constexpr DWORD DS_MODALFRAME = 0x80;
inline constexpr DWORD DS_NOFAILCREATE = 0x10;
inline constexpr DWORD DS_CONTROL = 0x400;
inline constexpr DWORD DS_CENTER = 0x800;
inline constexpr DWORD DS_SHELLFONT = 0x48;

inline constexpr int DWLP_MSGRESULT = 0;
inline constexpr int DWLP_DLGPROC = 8;
inline constexpr int DWLP_USER = 16;
inline constexpr int DLGWINDOWEXTRA = 24;
/// The class of dialogs.
inline const char16_t* const WC_DIALOG = MAKEINTRESOURCEW(0x8002);

inline constexpr UINT DM_GETDEFID = WM_USER;
inline constexpr UINT DM_SETDEFID = WM_USER + 1;
inline constexpr WORD DC_HASDEFID = 0x534B;

// What WM_GETDLGCODE answers: which keys a control wants, and what it is.
inline constexpr LRESULT DLGC_WANTARROWS = 0x1;
inline constexpr LRESULT DLGC_WANTTAB = 0x2;
inline constexpr LRESULT DLGC_WANTALLKEYS = 0x4;
inline constexpr LRESULT DLGC_WANTMESSAGE = 0x4;
inline constexpr LRESULT DLGC_HASSETSEL = 0x8;
inline constexpr LRESULT DLGC_DEFPUSHBUTTON = 0x10;
inline constexpr LRESULT DLGC_UNDEFPUSHBUTTON = 0x20;
inline constexpr LRESULT DLGC_RADIOBUTTON = 0x40;
inline constexpr LRESULT DLGC_WANTCHARS = 0x80;
inline constexpr LRESULT DLGC_STATIC = 0x100;
inline constexpr LRESULT DLGC_BUTTON = 0x2000;

/// A dialog that lives beside the others. The window, or null: ERROR_INVALID_PARAMETER for a null
/// template, ERROR_INVALID_DATA for one that is malformed, and as CreateWindowExW. The template is
/// read within 64 KB from its beginning, or, where it lies in a module's resources, within those.
TVUTIL_API HWND CreateDialogIndirectParamW(HINSTANCE instance, const void* dialog_template,
                                           HWND parent, DLGPROC procedure, LPARAM parameter);
/// Runs a dialog until EndDialog, with its owner disabled: what that was given, or -1 with the last
/// error; ERROR_INVALID_PARAMETER also for a null procedure. A WM_QUIT that arrives meanwhile ends
/// it with -1 and is posted again, and so does the end of its window.
TVUTIL_API INT_PTR DialogBoxIndirectParamW(HINSTANCE instance, const void* dialog_template,
                                           HWND parent, DLGPROC procedure, LPARAM parameter);
/// Hides a dialog and lets the function that runs it return, once its procedure has returned.
TVUTIL_API BOOL EndDialog(HWND dialog, INT_PTR result);
TVUTIL_API LRESULT DefDlgProcW(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam);

/// Does with a message of a dialog, or of what is in it, what the keyboard means there, and
/// dispatches it otherwise; 0 for any other message.
TVUTIL_API BOOL IsDialogMessageW(HWND dialog, MSG* message);
/// The next control that Tab stops at, in the order of creation, around the end; the same one when
/// there is no other.
TVUTIL_API HWND GetNextDlgTabItem(HWND dialog, HWND control, BOOL previous);
/// The next control of its group.
TVUTIL_API HWND GetNextDlgGroupItem(HWND dialog, HWND control, BOOL previous);
/// From dialog units to pixels.
TVUTIL_API BOOL MapDialogRect(HWND dialog, RECT* rect);

TVUTIL_API LRESULT SendDlgItemMessageW(HWND dialog, int id, UINT message, WPARAM wparam,
                                       LPARAM lparam);
TVUTIL_API BOOL SetDlgItemTextW(HWND dialog, int id, const char16_t* text);
TVUTIL_API UINT GetDlgItemTextW(HWND dialog, int id, char16_t* text, int size);
TVUTIL_API BOOL CheckDlgButton(HWND dialog, int id, UINT check);
TVUTIL_API UINT IsDlgButtonChecked(HWND dialog, int id);
/// Checks one of the buttons from `first` to `last` and no other.
TVUTIL_API BOOL CheckRadioButton(HWND dialog, int first, int last, int checked);
