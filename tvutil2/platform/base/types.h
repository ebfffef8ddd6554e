// The named platform's integer, handle and result types, with the widths they have there.
//
// Text is 16-bit: char16_t, whatever wchar_t is on the host. Handle types are distinct and opaque,
// so that passing a file where a key is meant doesn't compile.
#pragma once

#include "tvutil2/platform/base/language.h"

#include <cstddef>
#include <cstdint>

using BOOL = int;
using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using UINT = std::uint32_t;
using LONG = std::int32_t;
using LONGLONG = std::int64_t;
using ULONGLONG = std::uint64_t;
using HRESULT = std::int32_t;
using LCID = DWORD;
using LANGID = WORD;
using WPARAM = std::uintptr_t;
using LPARAM = std::intptr_t;
using LRESULT = std::intptr_t;
using INT_PTR = std::intptr_t;
using UINT_PTR = std::uintptr_t;
using LONG_PTR = std::intptr_t;
using DWORD_PTR = std::uintptr_t;
using ATOM = WORD;
using COLORREF = std::uint32_t;

/// Any object of the handle table that has no type of its own: files, searches, events, mutexes.
using HANDLE = struct HANDLE__*;
/// An open registry key, or one of the predefined roots.
using HKEY = struct HKEY__*;
/// A loaded module. A module handle and an instance handle are the same thing.
using HINSTANCE = struct HINSTANCE__*;
using HMODULE = HINSTANCE;
/// A resource found in a module (not yet loaded).
using HRSRC = struct HRSRC__*;
/// Memory of a loaded resource.
using HGLOBAL = struct HGLOBAL__*;
using HLOCAL = struct HLOCAL__*;
/// A session, connection or request of the HTTP client.
using HINTERNET = struct HINTERNET__*;
using HWND = struct HWND__*;
using HMENU = struct HMENU__*;
using HICON = struct HICON__*;
using HCURSOR = HICON;
using HDC = struct HDC__*;

// What can be selected into a device context is also a graphics object in general, so that it goes
// where any is taken; the way back is a cast.
struct HGDIOBJ__ {};
struct HBRUSH__ : HGDIOBJ__ {};
struct HPEN__ : HGDIOBJ__ {};
struct HFONT__ : HGDIOBJ__ {};
struct HBITMAP__ : HGDIOBJ__ {};
struct HRGN__ : HGDIOBJ__ {};
using HGDIOBJ = HGDIOBJ__*;
using HBRUSH = HBRUSH__*;
using HPEN = HPEN__*;
using HFONT = HFONT__*;
using HBITMAP = HBITMAP__*;
using HRGN = HRGN__*;

/// An exported function of a module; cast to its real type before the call.
using FARPROC = std::intptr_t (*)();
using DLGPROC = INT_PTR (*)(HWND, UINT, WPARAM, LPARAM);

// Other libraries' headers define some of these as macros, with values that mean the same.
#undef FALSE
#undef TRUE
#undef MAX_PATH
#undef INFINITE
#undef INVALID_HANDLE_VALUE

inline constexpr BOOL FALSE = 0;
inline constexpr BOOL TRUE = 1;
/// Characters in a path buffer of the platform, the terminating zero included.
inline constexpr DWORD MAX_PATH = 260;
/// A wait without a time limit, in milliseconds.
inline constexpr DWORD INFINITE = 0xFFFFFFFF;

/// What file functions give in place of a handle when they fail.
inline const HANDLE INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(~std::uintptr_t{0});

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT E_NOTIMPL = static_cast<HRESULT>(0x80004001);
inline constexpr HRESULT E_NOINTERFACE = static_cast<HRESULT>(0x80004002);
inline constexpr HRESULT E_POINTER = static_cast<HRESULT>(0x80004003);
inline constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005);
inline constexpr HRESULT E_INVALIDARG = static_cast<HRESULT>(0x80070057);
inline constexpr HRESULT E_OUTOFMEMORY = static_cast<HRESULT>(0x8007000E);

[[nodiscard]] constexpr bool SUCCEEDED(HRESULT result) {
    return result >= 0;
}
[[nodiscard]] constexpr bool FAILED(HRESULT result) {
    return result < 0;
}

/// 100-nanosecond intervals since 1601-01-01 00:00 UTC, in two halves.
struct FILETIME {
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
};

struct SYSTEMTIME {
    WORD wYear, wMonth, wDayOfWeek, wDay, wHour, wMinute, wSecond, wMilliseconds;
};

struct POINT {
    LONG x, y;
};
struct SIZE {
    LONG cx, cy;
};
/// Right and bottom are outside.
struct RECT {
    LONG left, top, right, bottom;
};

/// The part of a long integer at bits 0 to 15, and at bits 16 to 31.
[[nodiscard]] constexpr WORD LOWORD(std::uintptr_t value) {
    return static_cast<WORD>(value & 0xFFFF);
}
[[nodiscard]] constexpr WORD HIWORD(std::uintptr_t value) {
    return static_cast<WORD>((value >> 16) & 0xFFFF);
}

/// A long integer of two halves, the low one first.
[[nodiscard]] constexpr DWORD MAKELONG(WORD low, WORD high) {
    return (DWORD{high} << 16) | low;
}
[[nodiscard]] constexpr WPARAM MAKEWPARAM(WORD low, WORD high) {
    return MAKELONG(low, high);
}
[[nodiscard]] constexpr LPARAM MAKELPARAM(WORD low, WORD high) {
    return static_cast<LPARAM>(MAKELONG(low, high));
}

/// A resource's number in the place of its name: a pointer below 65536.
[[nodiscard]] inline const char16_t* MAKEINTRESOURCEW(WORD id) {
    return reinterpret_cast<const char16_t*>(static_cast<std::uintptr_t>(id));
}
[[nodiscard]] inline bool IS_INTRESOURCE(const char16_t* name) {
    return reinterpret_cast<std::uintptr_t>(name) < 0x10000;
}
