// What controls tell: to a handler of their parent, or to one of their own class.
//
// Their parent's map has ON_BN_CLICKED(id, &CMine::OnIt), ON_NOTIFY(code, id, &CMine::OnIt) and the
// like. A control's class hears the same itself by ON_..._REFLECT, before its parent does, which
// then doesn't hear it.
#pragma once

#include "tvutil2/framework/message_forms.h"

/// What a control that draws itself asks its parent's object for: colours, in the context. lparam
/// points to an AFX_CTLCOLOR. A parent that doesn't handle it hears WM_CTLCOLOREDIT or the like.
inline constexpr UINT WM_CTLCOLOR = 0x0019;
struct AFX_CTLCOLOR {
    HWND hWnd;
    HDC hDC;
    UINT nCtlType;  ///< CTLCOLOR_
};

/// Added to the message that a control has told its parent, for the control's own map.
inline constexpr UINT WM_REFLECT_BASE = 0xBC00;

namespace tvutil2 {

template <class Class, void (Class::*handler)(NMHDR*, LRESULT*)>
struct MessageCall<handler, void (Class::*)(NMHDR*, LRESULT*)> {
    static LRESULT call(CCmdTarget& target, WPARAM /*wparam*/, LPARAM lparam) {
        const auto& told = *reinterpret_cast<const AFX_NOTIFY*>(lparam);
        (static_cast<Class&>(target).*handler)(told.pNMHDR, told.pResult);
        return 0;
    }
};
// Of a range of controls.
template <class Class, void (Class::*handler)(UINT, NMHDR*, LRESULT*)>
struct MessageCall<handler, void (Class::*)(UINT, NMHDR*, LRESULT*)> {
    static LRESULT call(CCmdTarget& target, WPARAM wparam, LPARAM lparam) {
        const auto& told = *reinterpret_cast<const AFX_NOTIFY*>(lparam);
        (static_cast<Class&>(target).*handler)(LOWORD(wparam), told.pNMHDR, told.pResult);
        return 0;
    }
};
// A control's own colours.
template <class Class, HBRUSH (Class::*handler)(CDC*, UINT)>
struct MessageCall<handler, HBRUSH (Class::*)(CDC*, UINT)> {
    static LRESULT call(CCmdTarget& target, WPARAM /*wparam*/, LPARAM lparam) {
        const auto& asked = *reinterpret_cast<const AFX_CTLCOLOR*>(lparam);
        return reinterpret_cast<LRESULT>((static_cast<Class&>(target).*handler)(
            context_object(reinterpret_cast<WPARAM>(asked.hDC)), asked.nCtlType));
    }
};
// A scroll bar's own movement.
template <class Class, void (Class::*handler)(UINT, UINT)>
struct MessageCall<handler, void (Class::*)(UINT, UINT)> {
    static LRESULT call(CCmdTarget& target, WPARAM wparam, LPARAM /*lparam*/) {
        (static_cast<Class&>(target).*handler)(LOWORD(wparam), HIWORD(wparam));
        return 0;
    }
};

}  // namespace tvutil2

#define ON_NOTIFY(code, id, handler) \
    TVUTIL_ENTRY(WM_NOTIFY, static_cast<WORD>(code), id, id, handler)
#define ON_NOTIFY_RANGE(code, first, last, handler) \
    TVUTIL_ENTRY(WM_NOTIFY, static_cast<WORD>(code), first, last, handler)

#define ON_CONTROL_REFLECT(code, handler) \
    TVUTIL_ENTRY(WM_REFLECT_BASE + WM_COMMAND, code, 0, 0, handler)
#define ON_NOTIFY_REFLECT(code, handler) \
    TVUTIL_ENTRY(WM_REFLECT_BASE + WM_NOTIFY, static_cast<WORD>(code), 0, 0, handler)
#define ON_WM_CTLCOLOR_REFLECT() TVUTIL_MESSAGE(WM_REFLECT_BASE + WM_CTLCOLOR, CtlColor)
#define ON_WM_HSCROLL_REFLECT() TVUTIL_MESSAGE(WM_REFLECT_BASE + WM_HSCROLL, HScroll)
#define ON_WM_VSCROLL_REFLECT() TVUTIL_MESSAGE(WM_REFLECT_BASE + WM_VSCROLL, VScroll)

// By their numbers.
#define ON_BN_DOUBLECLICKED(id, handler) ON_CONTROL(5, id, handler)
#define ON_BN_SETFOCUS(id, handler) ON_CONTROL(6, id, handler)
#define ON_BN_KILLFOCUS(id, handler) ON_CONTROL(7, id, handler)
#define ON_STN_CLICKED(id, handler) ON_CONTROL(0, id, handler)
#define ON_STN_DBLCLK(id, handler) ON_CONTROL(1, id, handler)
#define ON_EN_SETFOCUS(id, handler) ON_CONTROL(0x100, id, handler)
#define ON_EN_KILLFOCUS(id, handler) ON_CONTROL(0x200, id, handler)
#define ON_EN_CHANGE(id, handler) ON_CONTROL(0x300, id, handler)
#define ON_EN_UPDATE(id, handler) ON_CONTROL(0x400, id, handler)
#define ON_EN_MAXTEXT(id, handler) ON_CONTROL(0x501, id, handler)
#define ON_LBN_SELCHANGE(id, handler) ON_CONTROL(1, id, handler)
#define ON_LBN_DBLCLK(id, handler) ON_CONTROL(2, id, handler)
#define ON_LBN_SETFOCUS(id, handler) ON_CONTROL(4, id, handler)
#define ON_LBN_KILLFOCUS(id, handler) ON_CONTROL(5, id, handler)
#define ON_CBN_SELCHANGE(id, handler) ON_CONTROL(1, id, handler)
#define ON_CBN_DBLCLK(id, handler) ON_CONTROL(2, id, handler)
#define ON_CBN_SETFOCUS(id, handler) ON_CONTROL(3, id, handler)
#define ON_CBN_KILLFOCUS(id, handler) ON_CONTROL(4, id, handler)
#define ON_CBN_EDITCHANGE(id, handler) ON_CONTROL(5, id, handler)
#define ON_CBN_EDITUPDATE(id, handler) ON_CONTROL(6, id, handler)
#define ON_CBN_DROPDOWN(id, handler) ON_CONTROL(7, id, handler)
#define ON_CBN_CLOSEUP(id, handler) ON_CONTROL(8, id, handler)
#define ON_CBN_SELENDOK(id, handler) ON_CONTROL(9, id, handler)
#define ON_CBN_SELENDCANCEL(id, handler) ON_CONTROL(10, id, handler)
