// Version blocks of executables.
//
// A file of the platform's own format (PE) has one among its resources. A file of the host's (ELF)
// has a version note instead (elf_note.h), out of which a block is made that holds the fixed
// information alone. Only the parts of a file that are needed are read, so that its size doesn't
// matter. All functions are safe from any thread.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

/// What a block's root value holds. A version is two words of two numbers each, high halves first.
struct VS_FIXEDFILEINFO {
    DWORD dwSignature;  ///< VS_FFI_SIGNATURE
    DWORD dwStrucVersion;
    DWORD dwFileVersionMS;
    DWORD dwFileVersionLS;
    DWORD dwProductVersionMS;
    DWORD dwProductVersionLS;
    DWORD dwFileFlagsMask;
    DWORD dwFileFlags;
    DWORD dwFileOS;
    DWORD dwFileType;
    DWORD dwFileSubtype;
    DWORD dwFileDateMS;
    DWORD dwFileDateLS;
};

inline constexpr DWORD VS_FFI_SIGNATURE = 0xFEEF04BD;

/// Bytes of a file's version block; `handle` (may be null) becomes 0. 0 when it has none or can't
/// be read: ERROR_FILE_NOT_FOUND and its kin, ERROR_BAD_EXE_FORMAT for a file that is no executable
/// or damaged, ERROR_RESOURCE_DATA_NOT_FOUND, ERROR_RESOURCE_TYPE_NOT_FOUND or
/// ERROR_RESOURCE_NAME_NOT_FOUND for one without a version.
TVUTIL_API DWORD GetFileVersionInfoSizeW(const char16_t* path, DWORD* handle);

/// The block itself into `block`, at most `size` bytes of it: less is a block cut short, which
/// stays readable. The rest of `block` becomes zero.
TVUTIL_API BOOL GetFileVersionInfoW(const char16_t* path, DWORD handle, DWORD size, void* block);

/// A value of a block that GetFileVersionInfoW filled: where it stands in the block, and its size,
/// in bytes or, for a text, in units with its zero. "\" is the root's, VS_FIXEDFILEINFO;
/// "\VarFileInfo\Translation" a list of languages and code pages, two numbers of 16 bits each;
/// "\StringFileInfo\040904b0\ProductVersion" a text of one of these pairs. Names are compared
/// without regard to case. FALSE with ERROR_RESOURCE_TYPE_NOT_FOUND for a block that is none, or
/// one without that value. A text of a file that somebody made may lack its zero.
TVUTIL_API BOOL VerQueryValueW(const void* block, const char16_t* name, void** value, UINT* size);
