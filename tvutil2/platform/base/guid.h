// New unique identifiers, and their text.
#pragma once

#include "tvutil2/platform/base/com.h"

/// Results of the text functions.
inline constexpr LONG RPC_S_OK = 0;
inline constexpr LONG RPC_S_OUT_OF_MEMORY = 14;

/// A new identifier of 122 random bits, of version 4 (RFC 9562). E_POINTER for null, E_FAIL when
/// the host has no random bytes to give.
TVUTIL_API HRESULT CoCreateGuid(GUID* id);

/// The 36 characters of an identifier, in lower case, "01234567-89ab-cdef-0123-456789abcdef". The
/// text is the caller's to give back with RpcStringFreeW. RPC_S_OUT_OF_MEMORY is the only failure.
/// A null identifier gives the text of all zeros.
TVUTIL_API LONG UuidToStringW(const GUID* id, char16_t** text);

/// Gives such a text back and sets the pointer to null, which is no error.
TVUTIL_API LONG RpcStringFreeW(char16_t** text);
