// The account that the process runs under, and the machine's name.
//
// The security identifier of an account is S-1-5-21-a-b-c-rid: the rid is the user id, and a to c
// come from a secret of the account and the machine's id. What is protected under it is readable
// only for who can have it, so it is the account's own matter: it is the same at every call, or the
// call fails, and for any other account it fails. All functions are safe from any thread.
//
// The account database is asked once for each account in turn, not at each call, and the machine's
// name once in the life of the process; its numbers are kept likewise. The account itself is the
// calling thread's effective user: a thread that can change it (root's, a set-user-id program's) is
// looked at anew each time.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

/// A binary security identifier; see SID for its layout.
using PSID = void*;

/// Layout of a security identifier. `SubAuthority` holds `SubAuthorityCount` entries.
struct SID {
    BYTE Revision;
    BYTE SubAuthorityCount;
    BYTE IdentifierAuthority[6];  ///< most significant byte first
    DWORD SubAuthority[1];
};

inline constexpr int SidTypeUser = 1;

/// The longest name of a computer, without its zero.
inline constexpr DWORD MAX_COMPUTERNAME_LENGTH = 15;

/// Name of the account that the process acts for: from the account database, or "uid" and the
/// number when the database has no entry. `size` counts units with the zero: in, the room; out,
/// what was written, or what is needed with 0 and ERROR_INSUFFICIENT_BUFFER.
TVUTIL_API BOOL GetUserNameW(char16_t* buffer, DWORD* size);
/// The same in the ANSI code page.
TVUTIL_API BOOL GetUserNameA(char* buffer, DWORD* size);

/// Name of the machine: the first label of the host name, in upper case, at most
/// MAX_COMPUTERNAME_LENGTH units. `size`: in, the room with the zero; out, the length without it,
/// or the room that is needed, with 0 and ERROR_BUFFER_OVERFLOW.
TVUTIL_API BOOL GetComputerNameW(char16_t* buffer, DWORD* size);
/// The same in the ANSI code page.
TVUTIL_API BOOL GetComputerNameA(char* buffer, DWORD* size);

/// The identifier of an account of this machine ("name" or "MACHINE\name"), the domain it belongs
/// to (the machine) and its kind (SidTypeUser). `system` is null or this machine's name.
/// `sid_size` counts bytes; `domain_size` counts units: in, the room with the zero; out, the
/// length without it. 0 with ERROR_NONE_MAPPED for no such account, ERROR_ACCESS_DENIED for another
/// one than the calling thread's, whose identifier only that one can have,
/// ERROR_INSUFFICIENT_BUFFER and both sizes needed when either has no room, or with the reason why
/// the account's secret can't be had.
TVUTIL_API BOOL LookupAccountNameW(const char16_t* system, const char16_t* account, PSID sid,
                                   DWORD* sid_size, char16_t* domain, DWORD* domain_size, int* use);

/// "S-1-..." in a buffer that the caller gives to LocalFree. 0 with ERROR_INVALID_SID or
/// ERROR_NOT_ENOUGH_MEMORY.
TVUTIL_API BOOL ConvertSidToStringSidW(const void* sid, char16_t** text);

inline constexpr UINT LMEM_FIXED = 0x0000;
inline constexpr UINT LMEM_ZEROINIT = 0x0040;

/// A block of `size` bytes; null with ERROR_NOT_ENOUGH_MEMORY.
TVUTIL_API HLOCAL LocalAlloc(UINT flags, std::size_t size);
/// Frees a block, null included. Always null.
TVUTIL_API HLOCAL LocalFree(HLOCAL block);
