// Where the folders lie that have a meaning of their own: documents, application data, temporary
// files. All functions are safe from any thread and read the environment at each call.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

/// The person's desktop: XDG_DESKTOP_DIR of user-dirs.dirs, else "Desktop" in the home folder. As a
/// place (SHGetSpecialFolderLocation) the first one is where all others begin.
inline constexpr int CSIDL_DESKTOP = 0x00;
inline constexpr int CSIDL_DESKTOPDIRECTORY = 0x10;
/// The person's documents: XDG_DOCUMENTS_DIR of user-dirs.dirs, else "Documents" in the home
/// folder.
inline constexpr int CSIDL_PERSONAL = 0x05;
/// Settings that follow the person: $XDG_CONFIG_HOME, else ".config" in the home folder.
inline constexpr int CSIDL_APPDATA = 0x1A;
/// Data that stays on the machine: $XDG_DATA_HOME, else ".local/share" in the home folder.
inline constexpr int CSIDL_LOCAL_APPDATA = 0x1C;
/// Data of all persons: /var/lib.
inline constexpr int CSIDL_COMMON_APPDATA = 0x23;
/// The platform's own folder, which the host doesn't have: E_INVALIDARG.
inline constexpr int CSIDL_SYSTEM = 0x25;
/// The home folder.
inline constexpr int CSIDL_PROFILE = 0x28;
/// Joined to one of the above: create the folder if it is missing.
inline constexpr int CSIDL_FLAG_CREATE = 0x8000;

inline constexpr DWORD SHGFP_TYPE_CURRENT = 0;
inline constexpr DWORD SHGFP_TYPE_DEFAULT = 1;

/// Puts the path of a folder, without a trailing backslash, into `path` (MAX_PATH units).
///
/// S_OK, or S_FALSE when the folder isn't there yet but its place is known: a new account has no
/// documents folder until somebody makes one. A folder that the person moved outside the home
/// folder and that is gone is a failure instead, since making it anew would hide a disk that isn't
/// mounted. Failures leave `path` empty and are the system's errors as an HRESULT (0x8007xxxx):
/// ERROR_PATH_NOT_FOUND for that folder, ERROR_DIRECTORY when something else lies there,
/// ERROR_INVALID_NAME when the platform can't express the path, ERROR_INSUFFICIENT_BUFFER when it
/// doesn't fit. E_INVALIDARG for an unknown folder, a null `path` and a token: there is no account
/// but the caller's. SHGFP_TYPE_DEFAULT gives the place that the folder has unless it is moved.
TVUTIL_API HRESULT SHGetFolderPathW(HWND owner, int folder, HANDLE token, DWORD type,
                                    char16_t* path);

/// Puts the caller's own folder for temporary files, with a trailing backslash, into `buffer`. Its
/// length, or the size needed, the zero counted, when `size` units don't suffice. Unlike the
/// host's, which everybody writes to, it is private: owned by the caller, closed to others, made if
/// it is missing. It lies below $TMPDIR or /tmp, or below the person's cache folder when the place
/// there is taken by somebody else. 0 with the last error when no such folder can be had.
TVUTIL_API DWORD GetTempPathW(DWORD size, char16_t* buffer);
