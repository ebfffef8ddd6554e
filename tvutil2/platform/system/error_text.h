// The texts of the platform's error numbers.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

inline constexpr DWORD FORMAT_MESSAGE_ALLOCATE_BUFFER = 0x0100;
inline constexpr DWORD FORMAT_MESSAGE_IGNORE_INSERTS = 0x0200;
inline constexpr DWORD FORMAT_MESSAGE_FROM_SYSTEM = 0x1000;

inline constexpr DWORD ERROR_MR_MID_NOT_FOUND = 317;

/// The system's text for an error number, or for an HRESULT that holds one, with its line end
/// ("\r\n"): every number that the layer gives has one. With FORMAT_MESSAGE_ALLOCATE_BUFFER,
/// `buffer` is the address of a pointer, which gets a block for LocalFree, and `size` the least
/// room that the block is to have; else `buffer` has room for `size` units, the zero included.
/// Units without the zero; 0 with ERROR_MR_MID_NOT_FOUND for a number without a text,
/// ERROR_INSUFFICIENT_BUFFER, or ERROR_INVALID_PARAMETER for flags other than the three above.
/// Texts are English whatever `language` is, and have no inserts.
TVUTIL_API DWORD FormatMessageW(DWORD flags, const void* source, DWORD message, DWORD language,
                                char16_t* buffer, DWORD size, const void* arguments);
