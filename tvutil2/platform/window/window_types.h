// What the functions on windows and messages share: their structures, styles and message numbers.
#pragma once

#include "tvutil2/platform/base/types.h"

using WNDPROC = LRESULT (*)(HWND window, UINT message, WPARAM wparam, LPARAM lparam);

/// A message as a queue holds it. `time` is milliseconds of GetTickCount, `pt` where the pointer
/// was.
struct MSG {
    HWND hwnd;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    DWORD time;
    POINT pt;
};

/// What WM_NCCREATE and WM_CREATE point to.
struct CREATESTRUCTW {
    void* lpCreateParams;
    HINSTANCE hInstance;
    HMENU hMenu;
    HWND hwndParent;
    int cy, cx, y, x;
    LONG style;
    const char16_t* lpszName;
    const char16_t* lpszClass;
    DWORD dwExStyle;
};

/// What WM_COPYDATA points to: a number, and bytes that reach the other process as a copy.
struct COPYDATASTRUCT {
    std::uintptr_t dwData;
    DWORD cbData;
    void* lpData;
};

/// What WM_STYLECHANGING and WM_STYLECHANGED point to.
struct STYLESTRUCT {
    DWORD styleOld, styleNew;
};

/// What WM_GETMINMAXINFO points to, in pixels.
struct MINMAXINFO {
    POINT ptReserved, ptMaxSize, ptMaxPosition, ptMinTrackSize, ptMaxTrackSize;
};

/// What WM_WINDOWPOSCHANGING and WM_WINDOWPOSCHANGED point to: pixels in the parent's client area,
/// of a top-level window on the screen.
struct WINDOWPOS {
    HWND hwnd, hwndInsertAfter;
    int x, y, cx, cy;
    UINT flags;  ///< SWP_ flags
};

/// What WM_NCCALCSIZE points to when its wparam isn't 0: the new place, the old one, and the old
/// client area; the answer, the new client area, goes into the first.
struct NCCALCSIZE_PARAMS {
    RECT rgrc[3];
    WINDOWPOS* lppos;
};

// In the place of a window: no window but the thread's own messages, and the parent of windows
// that only take messages.
inline const HWND HWND_MESSAGE = reinterpret_cast<HWND>(std::intptr_t{-3});
inline const HWND HWND_BROADCAST = reinterpret_cast<HWND>(std::intptr_t{0xFFFF});

/// Leaves place or size of a new window to the system.
inline constexpr int CW_USEDEFAULT = static_cast<int>(0x80000000);

inline constexpr DWORD WS_OVERLAPPED = 0;
inline constexpr DWORD WS_POPUP = 0x80000000;
inline constexpr DWORD WS_CHILD = 0x40000000;
inline constexpr DWORD WS_MINIMIZE = 0x20000000;
inline constexpr DWORD WS_VISIBLE = 0x10000000;
inline constexpr DWORD WS_DISABLED = 0x08000000;
inline constexpr DWORD WS_CLIPSIBLINGS = 0x04000000;
inline constexpr DWORD WS_CLIPCHILDREN = 0x02000000;
inline constexpr DWORD WS_MAXIMIZE = 0x01000000;
inline constexpr DWORD WS_CAPTION = 0x00C00000;
inline constexpr DWORD WS_BORDER = 0x00800000;
inline constexpr DWORD WS_DLGFRAME = 0x00400000;
inline constexpr DWORD WS_VSCROLL = 0x00200000;
inline constexpr DWORD WS_HSCROLL = 0x00100000;
inline constexpr DWORD WS_SYSMENU = 0x00080000;
inline constexpr DWORD WS_THICKFRAME = 0x00040000;
inline constexpr DWORD WS_GROUP = 0x00020000;
inline constexpr DWORD WS_TABSTOP = 0x00010000;
inline constexpr DWORD WS_MINIMIZEBOX = 0x00020000;
inline constexpr DWORD WS_MAXIMIZEBOX = 0x00010000;
inline constexpr DWORD WS_OVERLAPPEDWINDOW =
    WS_CAPTION | WS_SYSMENU | WS_THICKFRAME | WS_MINIMIZEBOX | WS_MAXIMIZEBOX;
inline constexpr DWORD WS_POPUPWINDOW = WS_POPUP | WS_BORDER | WS_SYSMENU;

inline constexpr DWORD WS_EX_DLGMODALFRAME = 0x1;
inline constexpr DWORD WS_EX_NOPARENTNOTIFY = 0x4;
inline constexpr DWORD WS_EX_TOPMOST = 0x8;
inline constexpr DWORD WS_EX_TRANSPARENT = 0x20;
inline constexpr DWORD WS_EX_TOOLWINDOW = 0x80;
inline constexpr DWORD WS_EX_WINDOWEDGE = 0x100;
inline constexpr DWORD WS_EX_CLIENTEDGE = 0x200;
inline constexpr DWORD WS_EX_CONTEXTHELP = 0x400;
inline constexpr DWORD WS_EX_RIGHT = 0x1000;       // the text stands at the right
inline constexpr DWORD WS_EX_RTLREADING = 0x2000;  // and is read from there
inline constexpr DWORD WS_EX_CONTROLPARENT = 0x10000;
inline constexpr DWORD WS_EX_STATICEDGE = 0x20000;
inline constexpr DWORD WS_EX_APPWINDOW = 0x40000;
inline constexpr DWORD WS_EX_NOACTIVATE = 0x08000000;

inline constexpr UINT WM_NULL = 0x0000;
inline constexpr UINT WM_CREATE = 0x0001;
inline constexpr UINT WM_DESTROY = 0x0002;
inline constexpr UINT WM_MOVE = 0x0003;
inline constexpr UINT WM_SIZE = 0x0005;
inline constexpr UINT WM_ACTIVATE = 0x0006;
inline constexpr UINT WM_SETFOCUS = 0x0007;
inline constexpr UINT WM_KILLFOCUS = 0x0008;
inline constexpr UINT WM_ENABLE = 0x000A;
inline constexpr UINT WM_SETREDRAW = 0x000B;
inline constexpr UINT WM_SETTEXT = 0x000C;
inline constexpr UINT WM_GETTEXT = 0x000D;
inline constexpr UINT WM_GETTEXTLENGTH = 0x000E;
inline constexpr UINT WM_PAINT = 0x000F;
inline constexpr UINT WM_CLOSE = 0x0010;
inline constexpr UINT WM_QUERYENDSESSION = 0x0011;
inline constexpr UINT WM_QUIT = 0x0012;
inline constexpr UINT WM_QUERYOPEN = 0x0013;
inline constexpr UINT WM_ERASEBKGND = 0x0014;
inline constexpr UINT WM_ENDSESSION = 0x0016;
inline constexpr UINT WM_SHOWWINDOW = 0x0018;
inline constexpr UINT WM_ACTIVATEAPP = 0x001C;
inline constexpr UINT WM_CANCELMODE = 0x001F;
inline constexpr UINT WM_SETCURSOR = 0x0020;
inline constexpr UINT WM_MOUSEACTIVATE = 0x0021;
inline constexpr UINT WM_GETMINMAXINFO = 0x0024;
inline constexpr UINT WM_NEXTDLGCTL = 0x0028;
inline constexpr UINT WM_DRAWITEM = 0x002B;
inline constexpr UINT WM_MEASUREITEM = 0x002C;
inline constexpr UINT WM_DELETEITEM = 0x002D;
inline constexpr UINT WM_SETFONT = 0x0030;
inline constexpr UINT WM_GETFONT = 0x0031;
inline constexpr UINT WM_COMPAREITEM = 0x0039;
inline constexpr UINT WM_WINDOWPOSCHANGING = 0x0046;
inline constexpr UINT WM_WINDOWPOSCHANGED = 0x0047;
inline constexpr UINT WM_COPYDATA = 0x004A;
inline constexpr UINT WM_NOTIFY = 0x004E;
inline constexpr UINT WM_HELP = 0x0053;
inline constexpr UINT WM_CONTEXTMENU = 0x007B;
inline constexpr UINT WM_STYLECHANGING = 0x007C;
inline constexpr UINT WM_STYLECHANGED = 0x007D;
inline constexpr UINT WM_GETICON = 0x007F;
inline constexpr UINT WM_SETICON = 0x0080;
inline constexpr UINT WM_NCCREATE = 0x0081;
inline constexpr UINT WM_NCDESTROY = 0x0082;
inline constexpr UINT WM_NCCALCSIZE = 0x0083;
inline constexpr UINT WM_NCHITTEST = 0x0084;
inline constexpr UINT WM_NCPAINT = 0x0085;
inline constexpr UINT WM_NCACTIVATE = 0x0086;
inline constexpr UINT WM_GETDLGCODE = 0x0087;
inline constexpr UINT WM_NCMOUSEMOVE = 0x00A0;
inline constexpr UINT WM_NCLBUTTONDOWN = 0x00A1;
inline constexpr UINT WM_NCLBUTTONUP = 0x00A2;
inline constexpr UINT WM_NCLBUTTONDBLCLK = 0x00A3;
inline constexpr UINT WM_NCRBUTTONUP = 0x00A5;
inline constexpr UINT WM_KEYFIRST = 0x0100;
inline constexpr UINT WM_KEYDOWN = 0x0100;
inline constexpr UINT WM_KEYUP = 0x0101;
inline constexpr UINT WM_CHAR = 0x0102;
inline constexpr UINT WM_DEADCHAR = 0x0103;
inline constexpr UINT WM_SYSKEYDOWN = 0x0104;
inline constexpr UINT WM_SYSKEYUP = 0x0105;
inline constexpr UINT WM_SYSCHAR = 0x0106;
inline constexpr UINT WM_SYSDEADCHAR = 0x0107;
inline constexpr UINT WM_KEYLAST = 0x0109;
inline constexpr UINT WM_INITDIALOG = 0x0110;
inline constexpr UINT WM_COMMAND = 0x0111;
inline constexpr UINT WM_SYSCOMMAND = 0x0112;
inline constexpr UINT WM_TIMER = 0x0113;
inline constexpr UINT WM_HSCROLL = 0x0114;
inline constexpr UINT WM_VSCROLL = 0x0115;
inline constexpr UINT WM_CHANGEUISTATE = 0x0127;
inline constexpr UINT WM_UPDATEUISTATE = 0x0128;
inline constexpr UINT WM_QUERYUISTATE = 0x0129;
inline constexpr UINT WM_CTLCOLORMSGBOX = 0x0132;
inline constexpr UINT WM_CTLCOLOREDIT = 0x0133;
inline constexpr UINT WM_CTLCOLORLISTBOX = 0x0134;
inline constexpr UINT WM_CTLCOLORBTN = 0x0135;
inline constexpr UINT WM_CTLCOLORDLG = 0x0136;
inline constexpr UINT WM_CTLCOLORSCROLLBAR = 0x0137;
inline constexpr UINT WM_CTLCOLORSTATIC = 0x0138;
inline constexpr UINT WM_MOUSEFIRST = 0x0200;
inline constexpr UINT WM_MOUSEMOVE = 0x0200;
inline constexpr UINT WM_LBUTTONDOWN = 0x0201;
inline constexpr UINT WM_LBUTTONUP = 0x0202;
inline constexpr UINT WM_LBUTTONDBLCLK = 0x0203;
inline constexpr UINT WM_RBUTTONDOWN = 0x0204;
inline constexpr UINT WM_RBUTTONUP = 0x0205;
inline constexpr UINT WM_RBUTTONDBLCLK = 0x0206;
inline constexpr UINT WM_MBUTTONDOWN = 0x0207;
inline constexpr UINT WM_MBUTTONUP = 0x0208;
inline constexpr UINT WM_MBUTTONDBLCLK = 0x0209;
inline constexpr UINT WM_MOUSEWHEEL = 0x020A;
inline constexpr UINT WM_MOUSEHWHEEL = 0x020E;
inline constexpr UINT WM_MOUSELAST = 0x020E;
inline constexpr UINT WM_PARENTNOTIFY = 0x0210;
inline constexpr UINT WM_SIZING = 0x0214;
inline constexpr UINT WM_CAPTURECHANGED = 0x0215;
inline constexpr UINT WM_MOVING = 0x0216;
inline constexpr UINT WM_ENTERSIZEMOVE = 0x0231;
inline constexpr UINT WM_EXITSIZEMOVE = 0x0232;
inline constexpr UINT WM_MOUSEHOVER = 0x02A1;
inline constexpr UINT WM_MOUSELEAVE = 0x02A3;
inline constexpr UINT WM_DPICHANGED = 0x02E0;
inline constexpr UINT WM_THEMECHANGED = 0x031A;
inline constexpr UINT WM_USER = 0x0400;
inline constexpr UINT WM_APP = 0x8000;

/// Of WM_SETICON, which answers the one before, and WM_GETICON. ICON_SMALL2 asks for what stands
/// for the window where it was given none: its class's, or the big one.
inline constexpr WPARAM ICON_SMALL = 0;
inline constexpr WPARAM ICON_BIG = 1;
inline constexpr WPARAM ICON_SMALL2 = 2;
inline constexpr WPARAM SIZE_RESTORED = 0;
inline constexpr WPARAM SIZE_MINIMIZED = 1;
inline constexpr WPARAM SIZE_MAXIMIZED = 2;
