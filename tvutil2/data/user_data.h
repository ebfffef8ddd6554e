// Where the data of a person, and of all persons of the machine, lies.
//
// The user data folder is fixed at first use: the value "UserDataPath" (REG_SZ) of
// HKCU\Software\Tolvarine\Common\8\UserData, which becomes "Tolvarine Computer\8" in the documents
// folder when there is none. What is found is kept for the life of the process in a buffer of 260
// units, whose address is handed out. Each buffer is filled once, from whichever threads come
// first; a refresh that finds another folder changes the text of its buffer, and the caller sees to
// it that no other thread reads it then. Nothing here holds a lock while a question is asked.
#pragma once

#include "tvutil2/framework/strings.h"

/// Determines the user data folder into `out` (260 units), and makes it. 1 when the folder is
/// there.
///
/// A stored path is taken as it is. When it can't be had the result is 0, `out` tells what was
/// wanted, and there is no turning to the default: a disk that isn't there today mustn't part a
/// person's data in two. `out` is empty, and the result 0, when the registry or the documents
/// folder gives no answer or a path has no room. Only a value that is missing, empty or no text is
/// replaced by the default.
TVUTIL_API int TvGetUserDataPath(char16_t* out);

/// The user data folder, determined at the first call and with `refresh`; in between no call asks
/// the registry. When it can't be had, the caller's folder for temporary files takes its place.
TVUTIL_API const char16_t* GetUserDataFolderPath(int refresh);

/// Data of all persons: "Tolvarine Computer\8" in the common application data, or in a folder
/// beside the running executable's when that can't be had. Made if possible: on most machines only
/// an administrator's program can.
TVUTIL_API const char16_t* GetCommonDataFolderPath();

/// "Tolvarine" in the same place, where earlier versions kept it. Only that level is made.
TVUTIL_API const char16_t* GetPreviousCommonDataFolderPath();

/// "Common\Credential" in the user data folder, made if it is missing. Empty when it has no room.
TVUTIL_API const char16_t* TvGetCredentialPath();

/// What the user data folder is unless chosen otherwise; null while the documents folder isn't
/// there to be read and written. Nothing is made.
TVUTIL_API const char16_t* TvGetDefaultDataPath();

/// The data folders of major versions 5 and 4 into `out` (260 units). 1 when the folder is there;
/// with a `product`, when its folder in it is. Version 5 is looked for only when its registry key
/// exists, and a folder that isn't stored there or is gone becomes "Tolvarine" in the documents
/// folder, which is then stored.
TVUTIL_API int TvGetUserDataPathV5(char16_t* out, const char16_t* product);
TVUTIL_API int TvGetUserDataPathV4(char16_t* out, const char16_t* product);

/// 1 when the person has settings of that product and major version. "Enterprise" is the product
/// "Ombrelia Enterprise".
TVUTIL_API int TvExsistPreviousUserData(unsigned int version, const char16_t* product);

/// Tests the user data folder. When it can't be had, asks the person whether to choose another one:
/// 0 for Yes, and the product then offers the choice; else, and when all is well, 1.
TVUTIL_API int TvIsValidDataFolder();

/// "Pelrin\QuickButton Files" below the stored path as it stands: nothing is tested or made.
TVUTIL_API CString TvGetQCmdRootPath();
