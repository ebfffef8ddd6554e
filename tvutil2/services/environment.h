// Questions to the system: what it calls itself, who and where we are, which version a file has,
// what an error number means.
//
// Nothing here shows or logs anything, TvCheckMiddlewareValid apart. All functions are safe from
// any thread; the two names are asked for once and kept for the life of the process.
//
// The system's facts are the text values "ProductName", "CurrentBuildNumber" and "DisplayVersion"
// of HKLM\SOFTWARE\Microsoft\Windows NT\CurrentVersion: up to 1,023 units that end in a zero;
// anything else is as good as missing. Where the machine has none of the three they are the host's:
// the distribution with its version, and the kernel's release.
#pragma once

#include "tvutil2/framework/strings.h"

/// The system's name, build and version: "Debian GNU/Linux 12 (bookworm) Build 6.1.0-18-amd64".
/// From build 22000 on that is "Windows 11", its version and "Build". Empty when the facts can't be
/// read.
TVUTIL_API CString TvGetOSFriendlyName();
/// The number in front of the build; 0 when there is none.
TVUTIL_API unsigned int TvGetOSBuildVersion();
/// 1 when the platform's version is 10 or later.
TVUTIL_API int TvIsWindows10OrGreater();

/// Name of the machine, and of the account; empty while the system doesn't tell.
TVUTIL_API CString TvGetComputerName();
TVUTIL_API CString TvGetUserName();

/// The version of an executable, "8.0.0.61", from its version resource or its version note. 1; or
/// 0, and `version` stays, when there is none.
TVUTIL_API int TvGetFileVersion(const char16_t* path, CString& version);

/// The system's text for an error number, with its line end. The text stays for 0 and for a number
/// that has none.
TVUTIL_API void GetLastErrorString(CString& text, DWORD error);

/// Tells the person that a middleware file isn't for this program, and gives 0: there is none that
/// is.
TVUTIL_API int TvCheckMiddlewareValid(const CString& path);
