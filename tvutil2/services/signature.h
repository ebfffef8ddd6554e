// Whether an executable or a package carries an intact signature, and the maker's.
//
// A signature is intact when neither the file nor the signature was changed since it was signed.
// The maker's is told by the display name of the signer's certificate, which holds "Tolvarine"
// somewhere. Anybody can make himself a certificate with that name: against a file that was damaged
// or exchanged for another maker's this is a check, against somebody who means harm it is none.
// Where the machine's hive says so (REG_DWORD "TrustedSignersOnly" other than 0, in
// Software\Tolvarine\Common\8\Trust), only signatures whose chain ends in a certificate of the
// machine's trust folder are the maker's; a hive that can't be read counts as saying so.
//
// All functions work on the caller's thread, keep nothing, and read the whole file: as long as that
// takes. The verdict holds for the bytes that were read: a start follows under the same path, and
// who can write there can put something else in between.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

/// 1 when the file has an intact signature, whoever signed it.
TVUTIL_API int TvCheckFileIsSigned(const char16_t* path);

/// 1 when it is the maker's. Shows nothing.
TVUTIL_API int TvCheckFileIsTolvarineSigned(const char16_t* path);

/// Whether an executable may be run: 1 when it has the maker's signature, or when a person, who is
/// asked unless `is_silent`, says so. 0 without a question for a missing file.
TVUTIL_API int TvVerifyTolvarineExe(const char16_t* path, BOOL is_silent);

/// Whether a package may be installed: 1 when it has the maker's signature, or a person says so; 1
/// without a question for a missing file, whose installation fails by itself.
TVUTIL_API int TvVerifyPackageSigned(const char16_t* path);

/// Tells the person when the framework's library, beside the executable or else in the system's
/// folder, has the version 14.0.24210.0, with which the products don't work.
TVUTIL_API void TvCheckVCRedistVersion();
