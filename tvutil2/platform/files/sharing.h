// Sharing modes between handles, in this process and in others.
//
// A handle's access and what it forbids to others are six marks. Each mark is a shared lock on one
// byte, far behind any content, that belongs to the open file description (F_OFD_SETLK): it meets
// the locks of other handles of the same process as well as those of other processes, on whatever
// name the file was opened, and is gone with its process. A handle first sets its marks, then looks
// for marks of others that rule it out, and takes its own away if it finds one. Of two that come at
// once both may find the other, but never do both pass; they try again a few times, one of them
// sooner.
#pragma once

#include "tvutil2/platform/base/types.h"

namespace tvutil2 {

/// Enters an open file's access and sharing (FILE_READ_DATA, FILE_WRITE_DATA or FILE_APPEND_DATA,
/// DELETE; FILE_SHARE_ flags). False with ERROR_SHARING_VIOLATION. A file system without locks, and
/// a file that can only be written, have no marks: there it always passes, or passes unmarked.
bool claim_sharing(int file, DWORD access, DWORD sharing);

/// Whether a claim could be entered now; nothing is. False with ERROR_SHARING_VIOLATION.
bool may_be_shared(int file, DWORD access, DWORD sharing);

/// For a use that is over soon: false with ERROR_SHARING_VIOLATION while a handle forbids reading.
bool may_be_read(int file);

}  // namespace tvutil2
