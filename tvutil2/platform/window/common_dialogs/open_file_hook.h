// A program's own part of the dialog for files.
//
// OFN_ENABLETEMPLATE puts the dialog lpTemplateName of hInstance's resources below the dialog's own
// controls, or around them where it has a control stc32, as a child without a frame, whatever the
// styles of its window say; only as much of it is seen as a third of the monitor's height has room
// for. OFN_ENABLEHOOK makes lpfnHook the
// procedure of that child, or of one without controls. It hears WM_INITDIALOG, with the
// OPENFILENAMEW in lParam, what the child's controls tell, and in WM_NOTIFY what the person does.
// GetParent of the child is the dialog, which takes the CDM_ messages; it may be ended
// or destroyed at any time, and then nothing is chosen. What the procedure throws ends the dialog
// and comes out of the function that asked.
//
// Everything happens on the thread that asked.
#pragma once

#include "tvutil2/platform/window/common_dialogs/open_file_name.h"
#include "tvutil2/platform/window/controls/notify.h"

/// With the codes CDN_. The record is the caller's own.
struct OFNOTIFYW {
    NMHDR hdr;  ///< from the dialog
    OPENFILENAMEW* lpOFN;
    char16_t* pszFile;  ///< null
};

/// All controls are there, and have what they show at first.
inline constexpr UINT CDN_INITDONE = 0U - 601U;
/// Other files are selected, and stand in the field for the name.
inline constexpr UINT CDN_SELCHANGE = 0U - 602U;
/// Another folder is shown, or the first one.
inline constexpr UINT CDN_FOLDERCHANGE = 0U - 603U;
/// lpstrFile and what goes with it tell what has been chosen. A procedure that sets DWLP_MSGRESULT
/// to non-zero, and gives non-zero, keeps the dialog open.
inline constexpr UINT CDN_FILEOK = 0U - 606U;
/// nFilterIndex is another one.
inline constexpr UINT CDN_TYPECHANGE = 0U - 607U;

// What the dialog tells of itself goes into the buffer at lParam, wParam units with the zero at the
// end, if it fits. Sent, they give the size that is needed.
/// What stands for names; several are in double quotes.
inline constexpr UINT CDM_GETSPEC = WM_USER + 100;
/// The same with its folder.
inline constexpr UINT CDM_GETFILEPATH = WM_USER + 101;
inline constexpr UINT CDM_GETFOLDERPATH = WM_USER + 102;
/// The folder's item list, an ITEMIDLIST; wParam counts bytes.
inline constexpr UINT CDM_GETFOLDERIDLIST = WM_USER + 103;
/// Gives the control with the id wParam the text at lParam.
inline constexpr UINT CDM_SETCONTROLTEXT = WM_USER + 104;
/// Hides the control with the id wParam; the others take its room.
inline constexpr UINT CDM_HIDECONTROL = WM_USER + 105;
/// The text at lParam, without a dot, is the extension for names without one.
inline constexpr UINT CDM_SETDEFEXT = WM_USER + 106;

// The dialog's controls, beside IDOK and IDCANCEL.
inline constexpr int chx1 = 0x0410;   ///< "read only"
inline constexpr int stc2 = 0x0441;   ///< label of the filters
inline constexpr int stc3 = 0x0442;   ///< label of the name
inline constexpr int stc4 = 0x0443;   ///< label of the folder
inline constexpr int stc32 = 0x045F;  ///< in a template: where all of these go
inline constexpr int lst1 = 0x0460;   ///< folders and files
inline constexpr int cmb1 = 0x0470;   ///< filters
inline constexpr int cmb2 = 0x0471;   ///< folder
inline constexpr int cmb13 = 0x047C;  ///< name
inline constexpr int edt1 = 0x0480;   ///< another number of the same
