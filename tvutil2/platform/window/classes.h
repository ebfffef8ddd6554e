// Window classes: what a kind of windows has in common. Names count without regard to case.
//
// A class belongs to the module that registered it, and its windows are made by that module; one of
// CS_GLOBALCLASS serves all. The system's own classes, "Static", "Button", "Edit", "ListBox",
// "ComboBox", "ScrollBar", "msctls_progress32", "SysListView32", "SysTreeView32" and those of menus
// and dialogs, are always there.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/window/window_types.h"

inline constexpr UINT CS_VREDRAW = 0x1;
inline constexpr UINT CS_HREDRAW = 0x2;
inline constexpr UINT CS_DBLCLKS = 0x8;
inline constexpr UINT CS_OWNDC = 0x20;
inline constexpr UINT CS_CLASSDC = 0x40;
inline constexpr UINT CS_PARENTDC = 0x80;
inline constexpr UINT CS_NOCLOSE = 0x200;
inline constexpr UINT CS_SAVEBITS = 0x800;
inline constexpr UINT CS_GLOBALCLASS = 0x4000;

struct WNDCLASSW {
    UINT style;
    WNDPROC lpfnWndProc;
    int cbClsExtra;
    int cbWndExtra;  ///< bytes in each window for GetWindowLongPtrW
    HINSTANCE hInstance;
    HICON hIcon;
    HCURSOR hCursor;
    HBRUSH hbrBackground;
    const char16_t* lpszMenuName;
    const char16_t* lpszClassName;
};

struct WNDCLASSEXW {
    UINT cbSize;
    UINT style;
    WNDPROC lpfnWndProc;
    int cbClsExtra;
    int cbWndExtra;
    HINSTANCE hInstance;
    HICON hIcon;
    HCURSOR hCursor;
    HBRUSH hbrBackground;
    const char16_t* lpszMenuName;
    const char16_t* lpszClassName;
    HICON hIconSm;
};

/// A number that stands for the name (MAKEINTRESOURCEW of it is taken in a name's place), or 0:
/// ERROR_CLASS_ALREADY_EXISTS for a name that the module has, ERROR_INVALID_PARAMETER for a wrong
/// size, no procedure, no name or one of more than 255 units, or more than 40 bytes a class or 4096
/// a window. A null module is the executable's.
TVUTIL_API ATOM RegisterClassW(const WNDCLASSW* description);
TVUTIL_API ATOM RegisterClassExW(const WNDCLASSEXW* description);
/// 0 with ERROR_CLASS_DOES_NOT_EXIST, or with ERROR_CLASS_HAS_WINDOWS while it has some.
TVUTIL_API BOOL UnregisterClassW(const char16_t* name, HINSTANCE instance);
/// What a window of that class made by that module would get; 0 with ERROR_CLASS_DOES_NOT_EXIST.
/// lpszClassName is the name as it was passed here.
TVUTIL_API BOOL GetClassInfoW(HINSTANCE instance, const char16_t* name, WNDCLASSW* description);
TVUTIL_API BOOL GetClassInfoExW(HINSTANCE instance, const char16_t* name, WNDCLASSEXW* description);
/// The name of a window's class as it was registered, cut to `size` units with the zero: its
/// length. 0 with ERROR_INVALID_WINDOW_HANDLE.
TVUTIL_API int GetClassNameW(HWND window, char16_t* name, int size);
