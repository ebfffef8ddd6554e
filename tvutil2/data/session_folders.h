// Where the sessions of each product lie, and moving them.
//
// Kinds of session are named by text: "Pelrin", "Dovr", the suite's "Ombrelia", "Lumsey" and "VNC",
// and any other for add-on products. Each kind has a folder of its own below the user data folder
// unless the person chose another one; the suite's kinds share one root and one choice. The choices
// are in "SessionPath.ini" of the user data folder, section "SessionPath": under the kind's name,
// or under "OmbreliaSessions" for the suite's root. A choice that is empty or no folder counts as
// none and stays in the file: a disk may come back.
//
// Kinds are compared without regard to case, except for their extension. The functions may run on
// any thread; of two programs that change a choice at the same moment the later one wins.
#pragma once

#include "tvutil2/framework/strings.h"

namespace tvutil2 {
class ShellObserver;
}  // namespace tvutil2

/// The extension of a kind's files, without its dot; empty for other kinds.
TVUTIL_API void GetSessionFilesExt(const char16_t* kind, CString& extension);

/// The folder in effect. A suite kind's is made in the chosen root when it is missing; where that
/// fails the default is in effect.
TVUTIL_API CString AfxGetSessionPath(const char16_t* kind);

/// The folder of a kind unless chosen otherwise: "<kind>\Sessions", or "Ombrelia\Sessions\<kind>"
/// for the suite, below the user data folder. Made if it is missing and can be made.
TVUTIL_API CString AfxGetDefaultSessionPath(const char16_t* kind);

/// The suite's sessions for all persons of the machine, or with `lumsey` those of the remote start
/// tool; made if possible.
TVUTIL_API CString GetSharedSessionPath(int lumsey);

/// 1 when there is a session file in `folder` or below it: a name that ends in "lmcs", "ombs",
/// "pln" or "dvf", without regard to case and with or without a dot. Links to folders are not
/// entered, as moving doesn't enter them.
TVUTIL_API int ExistSessionFile(const char16_t* folder);

/// Makes `folder` the choice for `kind` (or for "OmbreliaSessions", the suite's root). A folder
/// that isn't there is made after a question, and so are the files of the old folder moved: of the
/// kind's extension, or all where it has none. 0 and nothing changed when the first question is
/// answered with anything but OK, and for a null text. Else 1, whatever became of the rest: files
/// that couldn't be moved stay where they were, with the choice in force; a choice that couldn't be
/// written leaves the old folder in force and all files in it, for moved ones would be lost from
/// sight, and the reason as the last error.
TVUTIL_API int ChangeSessionPath(const char16_t* folder, const char16_t* kind, HWND owner);

/// The same without the question about the files: they are moved if `move_files` is non-zero.
TVUTIL_API int ChangeSessionPathWithoutMsgBox(const char16_t* folder, const char16_t* kind,
                                              int move_files);

/// Both for somebody who watches the files move (platform/files/shell_operations.h).
TVUTIL_API int ChangeSessionPath(const char16_t* folder, const char16_t* kind, HWND owner,
                                 tvutil2::ShellObserver* observer);
TVUTIL_API int ChangeSessionPathWithoutMsgBox(const char16_t* folder, const char16_t* kind,
                                              int move_files, tvutil2::ShellObserver* observer);

/// "Ombrelia\Sessions" and "Ombrelia" below the user data folder.
TVUTIL_API CString AfxGetOmbrDefaultSessionPath();
TVUTIL_API CString AfxGetOmbrDefaultCommonPath();
/// The suite's root in effect: the chosen one if it is there, else the default.
TVUTIL_API CString AfxGetOmbrSessionPath();

/// Folders of an add-on: its sessions in the suite's root, and its configuration. Not made here.
TVUTIL_API CString AfxGetOmbrAddonSessionPath(const CString& name);
TVUTIL_API CString AfxGetOmbrAddonConfigPath(const CString& name);
/// "Ombrelia\addons" below the user data folder, made if it is missing.
TVUTIL_API CString AfxGetOmbrAddonCommonPath();
