// The data of an earlier major version, brought to the present data folder once.
//
// The import is a copy: the earlier folder and its registry keys stay as they are. What is done is
// remembered in REG_DWORD values of HKCU\Software\Tolvarine\Common\8\Import, and written when all
// is done: an import that was killed begins anew at the next start. A file is under its name when
// it is whole, never before. Single failures are passed over and not tried again.
//
// Nothing here holds a lock. Programs that start at one time may both copy, the same content. All
// functions are safe from any thread.
#pragma once

#include "tvutil2/platform/base/export.h"

namespace tvutil2 {
class CopyObserver;
}  // namespace tvutil2

/// Brings earlier data to the user data folder, if that is due, and returns when it is there.
///
/// Data of version 7, else 6, is copied. Older data is that of a product, which `kind` names (0:
/// "Enterprise", 1: "Ombrelia", 2: "Pelrin", 3: "Dovr"; 4 looks for none; above 4 the name is empty
/// and no tool is started): "BIRKENFOLD.EXE -upgrade -<product>" is run, found as CreateProcessW
/// finds programs, and waited for without limit; its result isn't looked at. The proxies of the
/// registry, of version 6 and before, become files in "Common\Proxy". See import_plan.h for what
/// is copied.
TVUTIL_API void TvInitDataFolder(unsigned int kind);

/// The same; `observer` hears of each file and proxy (platform/files/folder_copy.h). What it throws
/// ends the import: nothing is marked as done, and the next start begins anew.
TVUTIL_API void TvInitDataFolder(unsigned int kind, tvutil2::CopyObserver* observer);

/// The newest version before 6 (5 or 4) with data of a product, 0 for none. `path` (260 units) then
/// is its data folder, for "Zemt" its spool folder; else it holds what was looked at last, or
/// nothing.
TVUTIL_API unsigned int TvGetPrevVersion(char16_t* path, const char16_t* product);

/// Starts "Birkenfold.exe" beside the running executable, with "-move -<what>", for a product whose
/// data is to be moved, and doesn't wait for it. Nothing happens, and nobody is asked, when that
/// file hasn't the maker's signature.
TVUTIL_API void ExecuteBirkenfoldForMove(const char16_t* what);

/// A value of the import's key: of a product 0 (not looked at yet), 1 (imported) or 2 (nothing to
/// import). 0 for what is missing or no REG_DWORD.
TVUTIL_API unsigned int GetImportPrevStatus(const char16_t* name);
TVUTIL_API void SetImportPrevStatus(const char16_t* name, unsigned int status);

/// Deletes all that the running application keeps in the registry, HKCU\Software\<its registry
/// key>\<its profile name>, and notes the given version there as "RegVersion", unless that is at
/// least as new: compared as texts, part by part, either part being older will do. Nothing happens
/// unless the application has both names and its registry key begins with "Tolvarine".
TVUTIL_API void TvResetPreviousReg(unsigned int major, unsigned int minor);

/// Deletes the first key below the running application's "Workspace" whose name begins with
/// "Rebar": the stored layout of its tool bars.
TVUTIL_API void TvDeleteRebarState();
