// How the handlers of windows' messages take what those bring: one form for each type of handler.
#pragma once

#include "tvutil2/framework/command_target.h"
#include "tvutil2/framework/geometry.h"

class CDC;
class CMenu;
class CScrollBar;
class CWnd;
struct DRAWITEMSTRUCT;
struct MEASUREITEMSTRUCT;

namespace tvutil2 {

/// The object of a window, context or menu, lasting or for the while; null for null.
[[nodiscard]] TVUTIL_API CWnd* window_object(WPARAM window);
[[nodiscard]] TVUTIL_API CDC* context_object(WPARAM context);
[[nodiscard]] TVUTIL_API CMenu* menu_object(WPARAM menu);
[[nodiscard]] TVUTIL_API CScrollBar* scroll_bar_object(LPARAM bar);

[[nodiscard]] inline WORD low_word(LPARAM lparam) {
    return LOWORD(static_cast<WPARAM>(lparam));
}
[[nodiscard]] inline WORD high_word(LPARAM lparam) {
    return HIWORD(static_cast<WPARAM>(lparam));
}
/// Two signed words.
[[nodiscard]] inline CPoint point_of(LPARAM lparam) {
    return {static_cast<std::int16_t>(low_word(lparam)),
            static_cast<std::int16_t>(high_word(lparam))};
}

// Keys: the key, how often, flags.
template <class Class, void (Class::*handler)(UINT, UINT, UINT)>
struct MessageCall<handler, void (Class::*)(UINT, UINT, UINT)> {
    static LRESULT call(CCmdTarget& target, WPARAM wparam, LPARAM lparam) {
        (static_cast<Class&>(target).*handler)(static_cast<UINT>(wparam), low_word(lparam),
                                               high_word(lparam));
        return 0;
    }
};
// The pointer: keys, or the part of the frame, and the place.
template <class Class, void (Class::*handler)(UINT, CPoint)>
struct MessageCall<handler, void (Class::*)(UINT, CPoint)> {
    static LRESULT call(CCmdTarget& target, WPARAM wparam, LPARAM lparam) {
        (static_cast<Class&>(target).*handler)(static_cast<UINT>(wparam), point_of(lparam));
        return 0;
    }
};
template <class Class, BOOL (Class::*handler)(UINT, short, CPoint)>
struct MessageCall<handler, BOOL (Class::*)(UINT, short, CPoint)> {
    static LRESULT call(CCmdTarget& target, WPARAM wparam, LPARAM lparam) {
        return (static_cast<Class&>(target).*handler)(
            LOWORD(wparam), static_cast<short>(HIWORD(wparam)), point_of(lparam));
    }
};
template <class Class, LRESULT (Class::*handler)(CPoint)>
struct MessageCall<handler, LRESULT (Class::*)(CPoint)> {
    static LRESULT call(CCmdTarget& target, WPARAM /*wparam*/, LPARAM lparam) {
        return (static_cast<Class&>(target).*handler)(point_of(lparam));
    }
};
template <class Class, void (Class::*handler)(CWnd*, CPoint)>
struct MessageCall<handler, void (Class::*)(CWnd*, CPoint)> {
    static LRESULT call(CCmdTarget& target, WPARAM wparam, LPARAM lparam) {
        (static_cast<Class&>(target).*handler)(window_object(wparam), point_of(lparam));
        return 0;
    }
};
// The other window of a change of the focus or the capture.
template <class Class, void (Class::*handler)(CWnd*)>
struct MessageCall<handler, void (Class::*)(CWnd*)> {
    static LRESULT call(CCmdTarget& target, WPARAM wparam, LPARAM lparam) {
        const auto window = wparam != 0 ? wparam : static_cast<WPARAM>(lparam);
        (static_cast<Class&>(target).*handler)(window_object(window));
        return 0;
    }
};
template <class Class, BOOL (Class::*handler)(CDC*)>
struct MessageCall<handler, BOOL (Class::*)(CDC*)> {
    static LRESULT call(CCmdTarget& target, WPARAM wparam, LPARAM /*lparam*/) {
        return (static_cast<Class&>(target).*handler)(context_object(wparam));
    }
};
template <class Class, BOOL (Class::*handler)(CWnd*, UINT, UINT)>
struct MessageCall<handler, BOOL (Class::*)(CWnd*, UINT, UINT)> {
    static LRESULT call(CCmdTarget& target, WPARAM wparam, LPARAM lparam) {
        return (static_cast<Class&>(target).*handler)(window_object(wparam), low_word(lparam),
                                                      high_word(lparam));
    }
};
template <class Class, void (Class::*handler)(UINT, CWnd*, BOOL)>
struct MessageCall<handler, void (Class::*)(UINT, CWnd*, BOOL)> {
    static LRESULT call(CCmdTarget& target, WPARAM wparam, LPARAM lparam) {
        (static_cast<Class&>(target).*handler)(LOWORD(wparam),
                                               window_object(static_cast<WPARAM>(lparam)),
                                               HIWORD(wparam) != 0 ? TRUE : FALSE);
        return 0;
    }
};
template <class Class, void (Class::*handler)(BOOL)>
struct MessageCall<handler, void (Class::*)(BOOL)> {
    static LRESULT call(CCmdTarget& target, WPARAM wparam, LPARAM /*lparam*/) {
        (static_cast<Class&>(target).*handler)(wparam != 0 ? TRUE : FALSE);
        return 0;
    }
};
template <class Class, void (Class::*handler)(BOOL, UINT)>
struct MessageCall<handler, void (Class::*)(BOOL, UINT)> {
    static LRESULT call(CCmdTarget& target, WPARAM wparam, LPARAM lparam) {
        (static_cast<Class&>(target).*handler)(wparam != 0 ? TRUE : FALSE,
                                               static_cast<UINT>(lparam));
        return 0;
    }
};
template <class Class, void (Class::*handler)(int, int)>
struct MessageCall<handler, void (Class::*)(int, int)> {
    static LRESULT call(CCmdTarget& target, WPARAM /*wparam*/, LPARAM lparam) {
        const auto point = point_of(lparam);
        (static_cast<Class&>(target).*handler)(point.x, point.y);
        return 0;
    }
};
template <class Class, UINT (Class::*handler)()>
struct MessageCall<handler, UINT (Class::*)()> {
    static LRESULT call(CCmdTarget& target, WPARAM /*wparam*/, LPARAM /*lparam*/) {
        return (static_cast<Class&>(target).*handler)();
    }
};
// The id of a command of a range.
template <class Class, void (Class::*handler)(UINT)>
struct MessageCall<handler, void (Class::*)(UINT)> {
    static LRESULT call(CCmdTarget& target, WPARAM wparam, LPARAM /*lparam*/) {
        (static_cast<Class&>(target).*handler)(LOWORD(wparam));
        return 0;
    }
};
// The desktop's commands, whose low bits are the system's own.
template <class Class, void (Class::*handler)(UINT, LPARAM)>
struct MessageCall<handler, void (Class::*)(UINT, LPARAM)> {
    static LRESULT call(CCmdTarget& target, WPARAM wparam, LPARAM lparam) {
        (static_cast<Class&>(target).*handler)(static_cast<UINT>(wparam), lparam);
        return 0;
    }
};
template <class Class, void (Class::*handler)(UINT, UINT, CScrollBar*)>
struct MessageCall<handler, void (Class::*)(UINT, UINT, CScrollBar*)> {
    static LRESULT call(CCmdTarget& target, WPARAM wparam, LPARAM lparam) {
        (static_cast<Class&>(target).*handler)(LOWORD(wparam), HIWORD(wparam),
                                               scroll_bar_object(lparam));
        return 0;
    }
};
template <class Class, void (Class::*handler)(int, DRAWITEMSTRUCT*)>
struct MessageCall<handler, void (Class::*)(int, DRAWITEMSTRUCT*)> {
    static LRESULT call(CCmdTarget& target, WPARAM wparam, LPARAM lparam) {
        (static_cast<Class&>(target).*handler)(static_cast<int>(wparam),
                                               reinterpret_cast<DRAWITEMSTRUCT*>(lparam));
        return TRUE;
    }
};
template <class Class, void (Class::*handler)(int, MEASUREITEMSTRUCT*)>
struct MessageCall<handler, void (Class::*)(int, MEASUREITEMSTRUCT*)> {
    static LRESULT call(CCmdTarget& target, WPARAM wparam, LPARAM lparam) {
        (static_cast<Class&>(target).*handler)(static_cast<int>(wparam),
                                               reinterpret_cast<MEASUREITEMSTRUCT*>(lparam));
        return TRUE;
    }
};
template <class Class, void (Class::*handler)(MINMAXINFO*)>
struct MessageCall<handler, void (Class::*)(MINMAXINFO*)> {
    static LRESULT call(CCmdTarget& target, WPARAM /*wparam*/, LPARAM lparam) {
        (static_cast<Class&>(target).*handler)(reinterpret_cast<MINMAXINFO*>(lparam));
        return 0;
    }
};
template <class Class, void (Class::*handler)(WINDOWPOS*)>
struct MessageCall<handler, void (Class::*)(WINDOWPOS*)> {
    static LRESULT call(CCmdTarget& target, WPARAM /*wparam*/, LPARAM lparam) {
        (static_cast<Class&>(target).*handler)(reinterpret_cast<WINDOWPOS*>(lparam));
        return 0;
    }
};

template <class Class, void (Class::*handler)(CMenu*, UINT, BOOL)>
struct MessageCall<handler, void (Class::*)(CMenu*, UINT, BOOL)> {
    static LRESULT call(CCmdTarget& target, WPARAM wparam, LPARAM lparam) {
        (static_cast<Class&>(target).*handler)(menu_object(wparam), low_word(lparam),
                                               high_word(lparam) != 0 ? TRUE : FALSE);
        return 0;
    }
};

// Colours of a control, with which kind of control it is.
template <UINT message, auto handler, class Type = decltype(handler)>
struct ColorCall;
template <UINT message, class Class, HBRUSH (Class::*handler)(CDC*, CWnd*, UINT)>
struct ColorCall<message, handler, HBRUSH (Class::*)(CDC*, CWnd*, UINT)> {
    static LRESULT call(CCmdTarget& target, WPARAM wparam, LPARAM lparam) {
        return reinterpret_cast<LRESULT>((static_cast<Class&>(target).*handler)(
            context_object(wparam), window_object(static_cast<WPARAM>(lparam)),
            message - WM_CTLCOLORMSGBOX));
    }
};

}  // namespace tvutil2

inline constexpr UINT CTLCOLOR_MSGBOX = 0;
inline constexpr UINT CTLCOLOR_EDIT = 1;
inline constexpr UINT CTLCOLOR_LISTBOX = 2;
inline constexpr UINT CTLCOLOR_BTN = 3;
inline constexpr UINT CTLCOLOR_DLG = 4;
inline constexpr UINT CTLCOLOR_SCROLLBAR = 5;
inline constexpr UINT CTLCOLOR_STATIC = 6;

#define TVUTIL_MESSAGE(message, handler) TVUTIL_ENTRY(message, 0, 0, 0, &ThisClass::handler)
#define TVUTIL_COLOR(message) \
    {message, 0, 0, 0, &tvutil2::ColorCall<message, &ThisClass::OnCtlColor>::call},

#define ON_WM_CREATE() TVUTIL_MESSAGE(WM_CREATE, OnCreate)
#define ON_WM_DESTROY() TVUTIL_MESSAGE(WM_DESTROY, OnDestroy)
#define ON_WM_NCDESTROY() TVUTIL_MESSAGE(WM_NCDESTROY, OnNcDestroy)
#define ON_WM_CLOSE() TVUTIL_MESSAGE(WM_CLOSE, OnClose)
#define ON_WM_SIZE() TVUTIL_MESSAGE(WM_SIZE, OnSize)
#define ON_WM_MOVE() TVUTIL_MESSAGE(WM_MOVE, OnMove)
#define ON_WM_GETMINMAXINFO() TVUTIL_MESSAGE(WM_GETMINMAXINFO, OnGetMinMaxInfo)
#define ON_WM_WINDOWPOSCHANGING() TVUTIL_MESSAGE(WM_WINDOWPOSCHANGING, OnWindowPosChanging)
#define ON_WM_WINDOWPOSCHANGED() TVUTIL_MESSAGE(WM_WINDOWPOSCHANGED, OnWindowPosChanged)
#define ON_WM_SHOWWINDOW() TVUTIL_MESSAGE(WM_SHOWWINDOW, OnShowWindow)
#define ON_WM_ENABLE() TVUTIL_MESSAGE(WM_ENABLE, OnEnable)
#define ON_WM_ACTIVATE() TVUTIL_MESSAGE(WM_ACTIVATE, OnActivate)
#define ON_WM_PAINT() TVUTIL_MESSAGE(WM_PAINT, OnPaint)
#define ON_WM_ERASEBKGND() TVUTIL_MESSAGE(WM_ERASEBKGND, OnEraseBkgnd)
#define ON_WM_DRAWITEM() TVUTIL_MESSAGE(WM_DRAWITEM, OnDrawItem)
#define ON_WM_MEASUREITEM() TVUTIL_MESSAGE(WM_MEASUREITEM, OnMeasureItem)
#define ON_WM_NCHITTEST() TVUTIL_MESSAGE(WM_NCHITTEST, OnNcHitTest)
#define ON_WM_SETCURSOR() TVUTIL_MESSAGE(WM_SETCURSOR, OnSetCursor)
#define ON_WM_SETFOCUS() TVUTIL_MESSAGE(WM_SETFOCUS, OnSetFocus)
#define ON_WM_KILLFOCUS() TVUTIL_MESSAGE(WM_KILLFOCUS, OnKillFocus)
#define ON_WM_CAPTURECHANGED() TVUTIL_MESSAGE(WM_CAPTURECHANGED, OnCaptureChanged)
#define ON_WM_GETDLGCODE() TVUTIL_MESSAGE(WM_GETDLGCODE, OnGetDlgCode)
#define ON_WM_KEYDOWN() TVUTIL_MESSAGE(WM_KEYDOWN, OnKeyDown)
#define ON_WM_KEYUP() TVUTIL_MESSAGE(WM_KEYUP, OnKeyUp)
#define ON_WM_CHAR() TVUTIL_MESSAGE(WM_CHAR, OnChar)
#define ON_WM_MOUSEMOVE() TVUTIL_MESSAGE(WM_MOUSEMOVE, OnMouseMove)
#define ON_WM_LBUTTONDOWN() TVUTIL_MESSAGE(WM_LBUTTONDOWN, OnLButtonDown)
#define ON_WM_LBUTTONUP() TVUTIL_MESSAGE(WM_LBUTTONUP, OnLButtonUp)
#define ON_WM_LBUTTONDBLCLK() TVUTIL_MESSAGE(WM_LBUTTONDBLCLK, OnLButtonDblClk)
#define ON_WM_RBUTTONDOWN() TVUTIL_MESSAGE(WM_RBUTTONDOWN, OnRButtonDown)
#define ON_WM_RBUTTONUP() TVUTIL_MESSAGE(WM_RBUTTONUP, OnRButtonUp)
#define ON_WM_MOUSEWHEEL() TVUTIL_MESSAGE(WM_MOUSEWHEEL, OnMouseWheel)
#define ON_WM_CONTEXTMENU() TVUTIL_MESSAGE(WM_CONTEXTMENU, OnContextMenu)
#define ON_WM_MOUSELEAVE() TVUTIL_MESSAGE(WM_MOUSELEAVE, OnMouseLeave)
#define ON_WM_INITMENUPOPUP() TVUTIL_MESSAGE(WM_INITMENUPOPUP, OnInitMenuPopup)
#define ON_WM_SYSCOMMAND() TVUTIL_MESSAGE(WM_SYSCOMMAND, OnSysCommand)
#define ON_WM_HSCROLL() TVUTIL_MESSAGE(WM_HSCROLL, OnHScroll)
#define ON_WM_VSCROLL() TVUTIL_MESSAGE(WM_VSCROLL, OnVScroll)
#define ON_WM_TIMER() TVUTIL_MESSAGE(WM_TIMER, OnTimer)
#define ON_WM_CTLCOLOR()               \
    TVUTIL_COLOR(WM_CTLCOLORMSGBOX)    \
    TVUTIL_COLOR(WM_CTLCOLOREDIT)      \
    TVUTIL_COLOR(WM_CTLCOLORLISTBOX)   \
    TVUTIL_COLOR(WM_CTLCOLORBTN)       \
    TVUTIL_COLOR(WM_CTLCOLORDLG)       \
    TVUTIL_COLOR(WM_CTLCOLORSCROLLBAR) \
    TVUTIL_COLOR(WM_CTLCOLORSTATIC)
