// The way of a message to its handler: of the window's object, or of the control's that told it.
#include "tvutil2/framework/wnd.h"
#include "tvutil2/platform/window/controls/notify.h"
#include "tvutil2/platform/window/controls/owner_draw.h"

namespace {

bool asks_for_colors(UINT message) {
    return message >= WM_CTLCOLORMSGBOX && message <= WM_CTLCOLORSTATIC;
}

// The control that a message to its parent comes from; null for what no control tells.
HWND teller_of(UINT message, LPARAM lparam) {
    switch (message) {
        case WM_NOTIFY:
            return reinterpret_cast<const NMHDR*>(lparam)->hwndFrom;
        case WM_DRAWITEM: {
            const auto& item = *reinterpret_cast<const DRAWITEMSTRUCT*>(lparam);
            return item.CtlType != ODT_MENU ? item.hwndItem : nullptr;
        }
        case WM_COMMAND:
        case WM_HSCROLL:
        case WM_VSCROLL:
            return reinterpret_cast<HWND>(lparam);
        default:
            return asks_for_colors(message) ? reinterpret_cast<HWND>(lparam) : nullptr;
    }
}

// Their entries are no messages that somebody could send: what they point to is this thread's.
bool is_reflected_number(UINT message) {
    return message >= WM_REFLECT_BASE && message < WM_REFLECT_BASE + WM_USER;
}

// What OnCmdMsg is given for a message that isn't WM_COMMAND: the code below, the message above.
int code_of(UINT message, UINT code) {
    return static_cast<int>(MAKELONG(static_cast<WORD>(code), static_cast<WORD>(message)));
}

}  // namespace

BOOL CWnd::OnWndMsg(UINT message, WPARAM wparam, LPARAM lparam, LRESULT* result) {
    LRESULT answer = 0;
    if (result == nullptr) result = &answer;
    if (message == WM_COMMAND) return OnCommand(wparam, lparam);
    if (message == WM_NOTIFY) return OnNotify(wparam, lparam, result);
    const auto* const entry = is_reflected_number(message) ? nullptr : find_entry(message, 0, 0);
    if (entry == nullptr) return reflect(message, wparam, lparam, result);
    *result = entry->pfn(*this, wparam, lparam);
    return TRUE;
}

BOOL CWnd::OnCommand(WPARAM wparam, LPARAM lparam) {
    if (m_is_exchanging) return TRUE;
    LRESULT unused = 0;
    return reflect(WM_COMMAND, wparam, lparam, &unused) ||
                   OnCmdMsg(LOWORD(wparam), HIWORD(wparam), nullptr, nullptr)
               ? TRUE
               : FALSE;
}

BOOL CWnd::OnNotify(WPARAM wparam, LPARAM lparam, LRESULT* result) {
    if (m_is_exchanging) return TRUE;
    if (reflect(WM_NOTIFY, wparam, lparam, result)) return TRUE;
    auto* const header = reinterpret_cast<NMHDR*>(lparam);
    AFX_NOTIFY told{result, header};
    return OnCmdMsg(static_cast<UINT>(header->idFrom), code_of(WM_NOTIFY, header->code), &told,
                    nullptr);
}

// The control's own object hears what it has told this window.
BOOL CWnd::reflect(UINT message, WPARAM wparam, LPARAM lparam, LRESULT* result) {
    auto* const control = FromHandlePermanent(teller_of(message, lparam));
    if (control == nullptr || control == this) return FALSE;
    return control->OnChildNotify(message, wparam, lparam, result);
}

BOOL CWnd::OnChildNotify(UINT message, WPARAM wparam, LPARAM lparam, LRESULT* result) {
    if (message == WM_COMMAND) {
        return OnCmdMsg(0, code_of(WM_REFLECT_BASE + WM_COMMAND, HIWORD(wparam)), nullptr, nullptr);
    }
    if (message == WM_NOTIFY) {
        AFX_NOTIFY told{result, reinterpret_cast<NMHDR*>(lparam)};
        return OnCmdMsg(0, code_of(WM_REFLECT_BASE + WM_NOTIFY, told.pNMHDR->code), &told, nullptr);
    }
    const bool is_color = asks_for_colors(message);
    const auto* const entry =
        find_entry(WM_REFLECT_BASE + (is_color ? WM_CTLCOLOR : message), 0, 0);
    if (entry == nullptr) return FALSE;
    AFX_CTLCOLOR asked{m_hWnd, reinterpret_cast<HDC>(wparam), message - WM_CTLCOLORMSGBOX};
    *result = entry->pfn(*this, wparam, is_color ? reinterpret_cast<LPARAM>(&asked) : lparam);
    // Without a brush the parent chooses one.
    return !is_color || *result != 0 ? TRUE : FALSE;
}

// The record is in this thread's memory, so another's question isn't one.
LRESULT CWnd::OnColorRecord(WPARAM /*wparam*/, LPARAM lparam) {
    const auto* const asked = reinterpret_cast<const AFX_CTLCOLOR*>(lparam);
    if (asked == nullptr || InSendMessage() || asked->nCtlType > CTLCOLOR_STATIC) return 0;
    return SendMessage(WM_CTLCOLORMSGBOX + asked->nCtlType, reinterpret_cast<WPARAM>(asked->hDC),
                       reinterpret_cast<LPARAM>(asked->hWnd));
}
