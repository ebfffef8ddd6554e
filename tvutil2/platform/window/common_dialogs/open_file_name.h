// GetOpenFileNameW and GetSaveFileNameW: the person chooses files.
//
// On a desktop that has a dialog of its own for that, it is the desktop's. Elsewhere it is one of
// ours: a list of the folder, which fills while it is read, on a thread of its own, and follows
// what changes there; places beside it, boxes for the folder, for the name, under which names like
// it are offered, and for the filter. Several files are selected, or typed, each between double
// quotes; a name with wildcards that is no file's filters the list. Backspace and Alt+Up go up, F5
// reads again, Ctrl+H shows what is hidden, Ctrl+L goes to the folder's box, Ctrl+Shift+N makes a
// folder, F2 changes a name.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/window/window_types.h"

using LPOFNHOOKPROC = UINT_PTR (*)(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam);

struct OPENFILENAMEW {
    DWORD lStructSize;
    HWND hwndOwner;
    HINSTANCE hInstance;
    const char16_t*
        lpstrFilter;  ///< name, patterns with ";" between them, ...; ends with an empty one
    char16_t* lpstrCustomFilter;
    DWORD nMaxCustFilter;
    DWORD nFilterIndex;        ///< from 1; the one in force
    char16_t* lpstrFile;       ///< the name at first; then the path, or the folder and the names
    DWORD nMaxFile;            ///< its units
    char16_t* lpstrFileTitle;  ///< becomes the name, or null
    DWORD nMaxFileTitle;
    const char16_t* lpstrInitialDir;
    const char16_t* lpstrTitle;
    DWORD Flags;
    WORD nFileOffset;             ///< of the first name in lpstrFile
    WORD nFileExtension;          ///< of the extension; 0 for none
    const char16_t* lpstrDefExt;  ///< for names without one; that of the filter when it is empty
                                  ///< or another filter is chosen; null for none
    LPARAM lCustData;
    LPOFNHOOKPROC lpfnHook;
    const char16_t* lpTemplateName;
    void* pvReserved;
    DWORD dwReserved;
    DWORD FlagsEx;
};

/// What the check box says, at first and at the end; as the caller gave it where there is none.
inline constexpr DWORD OFN_READONLY = 0x1;
/// Asks before a file is chosen to be saved to that is there.
inline constexpr DWORD OFN_OVERWRITEPROMPT = 0x2;
/// No check box for reading only, which a dialog for opening has otherwise.
inline constexpr DWORD OFN_HIDEREADONLY = 0x4;
/// The current folder never changes.
inline constexpr DWORD OFN_NOCHANGEDIR = 0x8;
/// The dialog has a part of the caller's own (open_file_hook.h), and is never the desktop's.
inline constexpr DWORD OFN_ENABLEHOOK = 0x20;
inline constexpr DWORD OFN_ENABLETEMPLATE = 0x40;
/// The template lies in memory, at hInstance, which may be one of GlobalAlloc's.
inline constexpr DWORD OFN_ENABLETEMPLATEHANDLE = 0x80;
/// Several files: folder and names, each ended by a zero, and one more at the end. The name of a
/// file in a folder below is its path from there.
inline constexpr DWORD OFN_ALLOWMULTISELECT = 0x200;
/// Set when the file has another extension than the default one.
inline constexpr DWORD OFN_EXTENSIONDIFFERENT = 0x400;
inline constexpr DWORD OFN_PATHMUSTEXIST = 0x800;
/// Only what is there can be opened; passed over for what is saved.
inline constexpr DWORD OFN_FILEMUSTEXIST = 0x1000;
/// Asks whether a file to open that isn't there is to be made; that is the caller's to do.
inline constexpr DWORD OFN_CREATEPROMPT = 0x2000;
inline constexpr DWORD OFN_EXPLORER = 0x80000;
/// A shortcut is chosen itself, and not what it leads to. To be saved to, it always is.
inline constexpr DWORD OFN_NODEREFERENCELINKS = 0x100000;
inline constexpr DWORD OFN_FORCESHOWHIDDEN = 0x10000000;

inline constexpr DWORD CDERR_STRUCTSIZE = 0x0001;
inline constexpr DWORD CDERR_INITIALIZATION = 0x0002;
inline constexpr DWORD CDERR_NOTEMPLATE = 0x0003;
inline constexpr DWORD CDERR_FINDRESFAILURE = 0x0006;
inline constexpr DWORD CDERR_LOADRESFAILURE = 0x0007;
inline constexpr DWORD CDERR_NOHOOK = 0x000B;
inline constexpr DWORD CDERR_DIALOGFAILURE = 0xFFFF;
/// The size that is needed stands in the first unit of lpstrFile.
inline constexpr DWORD FNERR_BUFFERTOOSMALL = 0x3003;

/// Non-zero when something was chosen, with lpstrFile, the offsets, nFilterIndex and lpstrFileTitle
/// set. 0 when the person cancels, there is no display (CDERR_DIALOGFAILURE), it doesn't fit
/// (FNERR_BUFFERTOOSMALL), or the caller's part has no hook, no template, or one that isn't there,
/// can't be read or can't be made (CDERR_NOHOOK and those before it): CommDlgExtendedError tells
/// which.
TVUTIL_API BOOL GetOpenFileNameW(OPENFILENAMEW* asked);
TVUTIL_API BOOL GetSaveFileNameW(OPENFILENAMEW* asked);
/// Why the thread's last choice failed; 0 when it didn't, or was cancelled.
TVUTIL_API DWORD CommDlgExtendedError();
