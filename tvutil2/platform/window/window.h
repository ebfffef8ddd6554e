// Windows: creation and end, their data, their place among others, and what is known of those of
// other processes.
//
// A window belongs to the thread that made it: its procedure runs there, and only that thread ends
// it. All else may be asked and set from any thread of the process. What isn't a window any more
// gives 0 with ERROR_INVALID_WINDOW_HANDLE. A thread that ends takes its windows along, without a
// message.
//
// A titled top-level window is also known to the user's other processes, which may ask IsWindow,
// its class, text, thread and process, and may send and post to it.
//
// Their places and order are in geometry.h.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/window/window_types.h"

inline constexpr int GWLP_WNDPROC = -4;
inline constexpr int GWLP_HINSTANCE = -6;
inline constexpr int GWLP_HWNDPARENT = -8;
inline constexpr int GWLP_ID = -12;
inline constexpr int GWL_STYLE = -16;
inline constexpr int GWL_EXSTYLE = -20;
inline constexpr int GWLP_USERDATA = -21;

inline constexpr UINT GW_HWNDFIRST = 0;
inline constexpr UINT GW_HWNDLAST = 1;
inline constexpr UINT GW_HWNDNEXT = 2;
inline constexpr UINT GW_HWNDPREV = 3;
inline constexpr UINT GW_OWNER = 4;
inline constexpr UINT GW_CHILD = 5;

inline constexpr UINT GA_PARENT = 1;
inline constexpr UINT GA_ROOT = 2;
inline constexpr UINT GA_ROOTOWNER = 3;

/// Makes a window of a class (by name or number) of `instance`, with `parent` as the parent of a
/// child (WS_CHILD) and as the owner of any other window. Null when it fails, among others because
/// the procedure refuses WM_NCCREATE with 0 or WM_CREATE with -1.
///
/// ERROR_CANNOT_FIND_WND_CLASS, ERROR_TLW_WITH_WSCHILD for a child without a parent,
/// ERROR_INVALID_WINDOW_HANDLE for a parent that is none of this process,
/// ERROR_NO_MORE_USER_HANDLES beyond 65,536 windows, ERROR_INVALID_PARAMETER when parents or
/// owners are nested more than 100 deep.
TVUTIL_API HWND CreateWindowExW(DWORD ex_style, const char16_t* class_name, const char16_t* title,
                                DWORD style, int x, int y, int width, int height, HWND parent,
                                HMENU menu_or_id, HINSTANCE instance, void* parameter);
/// Ends a window, what it owns (the newest first) and its children. 0 with ERROR_ACCESS_DENIED for
/// another thread's, and 0 for one that is being ended already.
TVUTIL_API BOOL DestroyWindow(HWND window);
TVUTIL_API BOOL IsWindow(HWND window);

/// What the system does with a message that a procedure doesn't want.
TVUTIL_API LRESULT DefWindowProcW(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
TVUTIL_API LRESULT CallWindowProcW(WNDPROC procedure, HWND window, UINT message, WPARAM wparam,
                                   LPARAM lparam);

/// A value of the window, or `index` bytes into its class's extra bytes. 0 with ERROR_INVALID_INDEX
/// outside of them, with ERROR_ACCESS_DENIED for a window of another process.
TVUTIL_API LONG_PTR GetWindowLongPtrW(HWND window, int index);
/// What was there before; a success sets the last error to 0.
TVUTIL_API LONG_PTR SetWindowLongPtrW(HWND window, int index, LONG_PTR value);
/// The same with 32 bits: for styles and numbers, never for procedures.
TVUTIL_API LONG GetWindowLongW(HWND window, int index);
TVUTIL_API LONG SetWindowLongW(HWND window, int index, LONG value);

/// Sends WM_SETTEXT. Null stands for empty text.
TVUTIL_API BOOL SetWindowTextW(HWND window, const char16_t* text);
/// The text, cut to `size` units with the zero: its length. Sends WM_GETTEXT to a window of this
/// process; of another process's window gives the title without asking it.
TVUTIL_API int GetWindowTextW(HWND window, char16_t* text, int size);
TVUTIL_API int GetWindowTextLengthW(HWND window);

/// The thread of a window, and its process unless null; 0 for no window.
TVUTIL_API DWORD GetWindowThreadProcessId(HWND window, DWORD* process);

/// The parent of a child, the owner of any other window; null for none.
TVUTIL_API HWND GetParent(HWND window);
/// A neighbour among the siblings, the owner, or the topmost child; null for none.
TVUTIL_API HWND GetWindow(HWND window, UINT relation);
TVUTIL_API HWND GetAncestor(HWND window, UINT which);
/// Non-zero for what `parent` is a parent of, a parent's parent of, and so on.
TVUTIL_API BOOL IsChild(HWND parent, HWND window);
/// The topmost direct child with that id, or null.
TVUTIL_API HWND GetDlgItem(HWND parent, int id);
TVUTIL_API int GetDlgCtrlID(HWND window);
