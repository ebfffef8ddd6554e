// SHBrowseForFolderW: the person chooses a folder from a tree.
//
// Folders are read on threads of their own, when their item opens: a dead mount keeps nobody
// waiting. With BIF_EDITBOX a path can be typed. The words are those of the thread's language.
#pragma once

#include "tvutil2/platform/files/item_list.h"
#include "tvutil2/platform/window/window_types.h"

/// Answers 0, but for BFFM_VALIDATEFAILEDW, where anything else keeps the dialog open. `data` is
/// BROWSEINFOW::lParam.
using BFFCALLBACK = int (*)(HWND dialog, UINT message, LPARAM parameter, LPARAM data);

struct BROWSEINFOW {
    HWND hwndOwner;
    PCIDLIST_ABSOLUTE pidlRoot;  ///< what the tree begins with; null for the desktop
    char16_t* pszDisplayName;    ///< MAX_PATH units for the name of what was chosen, or null
    const char16_t* lpszTitle;   ///< above the tree, or null
    UINT ulFlags;                ///< BIF_
    BFFCALLBACK lpfn;            ///< or null
    LPARAM lParam;
    int iImage;  ///< becomes 0
};

/// Only what has a path can be chosen.
inline constexpr UINT BIF_RETURNONLYFSDIRS = 0x1;
/// Passed over: BFFM_SETSTATUSTEXTW writes in the place of the title.
inline constexpr UINT BIF_STATUSTEXT = 0x4;
inline constexpr UINT BIF_EDITBOX = 0x10;
/// What is typed and isn't there goes to the callback (BFFM_VALIDATEFAILEDW).
inline constexpr UINT BIF_VALIDATE = 0x20;
/// Can be sized, and has a button for a new folder.
inline constexpr UINT BIF_NEWDIALOGSTYLE = 0x40;
inline constexpr UINT BIF_USENEWUI = BIF_NEWDIALOGSTYLE | BIF_EDITBOX;
inline constexpr UINT BIF_NONEWFOLDERBUTTON = 0x200;
inline constexpr UINT BIF_BROWSEINCLUDEFILES = 0x4000;

// To the callback. The parameter: none; the item list of what is selected; the text.
inline constexpr UINT BFFM_INITIALIZED = 1;
inline constexpr UINT BFFM_SELCHANGED = 2;
inline constexpr UINT BFFM_VALIDATEFAILEDW = 4;

// To the dialog.
/// lparam other than 0 lets OK be pressed.
inline constexpr UINT BFFM_ENABLEOK = WM_USER + 101;
/// wparam other than 0: lparam is a path, else an item list. A path that isn't there ends where it
/// stops to be.
inline constexpr UINT BFFM_SETSELECTIONW = WM_USER + 103;
/// lparam is what stands in the place of the title from now on.
inline constexpr UINT BFFM_SETSTATUSTEXTW = WM_USER + 104;
/// wparam is the text on OK.
inline constexpr UINT BFFM_SETOKTEXT = WM_USER + 105;
/// As BFFM_SETSELECTIONW; opens it as well.
inline constexpr UINT BFFM_SETEXPANDED = WM_USER + 106;

/// Runs the dialog in a loop of its own, with the owner disabled: the item list of what was chosen,
/// which is the caller's (ILFree), or null when the person cancels, nobody can be asked
/// (ERROR_REQUIRES_INTERACTIVE_WINDOWSTATION) or `info` is null.
TVUTIL_API PIDLIST_ABSOLUTE SHBrowseForFolderW(BROWSEINFOW* info);
