// Code pages, and the conversion of text between them and 16-bit text.
//
// A page is named by its number. CP_ACP stands for the installation's ANSI code page, see GetACP.
// The mappings are the platform's (docs/platform.md has the source of each), without best-fit
// substitution: what a page doesn't hold becomes the default character, never a look-alike. All
// functions are safe from any thread.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

/// The ANSI code page, whichever it is.
inline constexpr UINT CP_ACP = 0;
inline constexpr UINT CP_UTF8 = 65001;

/// What every page but UTF-8 does anyway on the way in: one unit for a composite character.
inline constexpr DWORD MB_PRECOMPOSED = 0x1;
/// A byte sequence that has no character fails the call.
inline constexpr DWORD MB_ERR_INVALID_CHARS = 0x8;
/// UTF-8 and 54936 only: a surrogate without its other half fails the call.
inline constexpr DWORD WC_ERR_INVALID_CHARS = 0x80;
/// A base character followed by a non-spacing mark goes out as the precomposed character where the
/// page has one, and as two characters where it hasn't.
inline constexpr DWORD WC_COMPOSITECHECK = 0x200;
/// No look-alikes. Always so; the flag is there for callers who ask.
inline constexpr DWORD WC_NO_BEST_FIT_CHARS = 0x400;

/// The ANSI code page: UTF-8, unless the machine hive's
/// SYSTEM\CurrentControlSet\Control\Nls\CodePage, value "ACP" (a number as text), names another
/// page that is known here and keeps ASCII as it is. Read once in the life of the process. It
/// belongs to the installation and not to the shell, so that what one program protected another one
/// reads.
TVUTIL_API UINT GetACP();

/// For EnumSystemCodePagesW: the pages of the installation, or all that are known. Here the two are
/// the same.
inline constexpr DWORD CP_INSTALLED = 0x1;
inline constexpr DWORD CP_SUPPORTED = 0x2;

/// Whether a page is known by that number. FALSE for CP_ACP, which is a name for another one.
TVUTIL_API BOOL IsValidCodePage(UINT page);

/// Takes a page's number as decimal text, which is valid during the call; FALSE ends the
/// enumeration.
using CODEPAGE_ENUMPROCW = BOOL (*)(char16_t* number);

/// Calls back once for each page, in the order of their numbers, and gives TRUE. 0 with
/// ERROR_INVALID_PARAMETER without a callback, and with ERROR_INVALID_FLAGS for anything but one of
/// the two flags.
TVUTIL_API BOOL EnumSystemCodePagesW(CODEPAGE_ENUMPROCW callback, DWORD flags);

/// Whether a byte begins a two-byte character of that page. 0 for every byte of a page without
/// two-byte characters; 0 and ERROR_INVALID_PARAMETER for a page that isn't known.
TVUTIL_API BOOL IsDBCSLeadByteEx(UINT page, BYTE byte);

/// Converts `size` bytes, or with -1 the bytes up to and including the terminating zero, to 16-bit
/// text, and gives the units written; with `room` 0 the units needed. `out` must not overlap
/// `bytes`.
///
/// A sequence without a character gives the page's replacement (U+FFFD in UTF-8: one for each
/// maximal ill-formed subsequence, as the Unicode standard recommends; U+30FB in 932 and 51932; "?"
/// elsewhere). A lead byte takes the byte behind it along, unless that is 0.
///
/// Flags: MB_PRECOMPOSED and MB_ERR_INVALID_CHARS; MB_ERR_INVALID_CHARS alone for 65001 and 54936
/// by number. CP_ACP takes both whatever page it stands for.
///
/// 0 with ERROR_INVALID_PARAMETER (a page that isn't known, no bytes, a null or negative argument,
/// `out` equal to `bytes`, more than 2^31 - 1 units), ERROR_INVALID_FLAGS,
/// ERROR_INSUFFICIENT_BUFFER (`out` then holds what had room) or ERROR_NO_UNICODE_TRANSLATION.
TVUTIL_API int MultiByteToWideChar(UINT page, DWORD flags, const char* bytes, int size,
                                   char16_t* out, int room);

/// Converts `size` units, or with -1 those up to and including the terminating zero, to bytes of a
/// page, and gives the bytes written; with `room` 0 the bytes needed.
///
/// A unit that the page doesn't hold goes out as `default_char` (two bytes where the first one is a
/// lead byte of the page; null means "?"), one for each unit, and `*used_default` is set to TRUE;
/// to FALSE when there was none. In UTF-8 the only such unit is a surrogate without its other half;
/// without a `default_char` it goes out as U+FFFD.
///
/// Flags: WC_COMPOSITECHECK and WC_NO_BEST_FIT_CHARS, for 65001 and 54936 by number
/// WC_ERR_INVALID_CHARS alone; `default_char` and `used_default` must be null for 65001 by number.
/// CP_ACP takes the flags and the default character that callers pass whatever page it stands for.
///
/// Failures are those of MultiByteToWideChar.
TVUTIL_API int WideCharToMultiByte(UINT page, DWORD flags, const char16_t* text, int size,
                                   char* out, int room, const char* default_char,
                                   BOOL* used_default);
