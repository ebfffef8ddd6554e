#include "tvutil2/framework/dialog.h"
#include "tvutil2/framework/exceptions.h"
#include "tvutil2/platform/window/controls/button.h"
#include "tvutil2/platform/window/dialogs/dialogs.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/window.h"

namespace {

constexpr UINT kLimitText = 0xC5;                     // EM_LIMITTEXT
constexpr UINT kSelect = 0xB1;                        // EM_SETSEL
constexpr UINT kListGet = 0x188, kListSet = 0x186;    // LB_GETCURSEL, LB_SETCURSEL
constexpr UINT kComboGet = 0x147, kComboSet = 0x14E;  // CB_GETCURSEL, CB_SETCURSEL

void exchange_index(CDataExchange* exchange, int id, int& index, UINT get, UINT set) {
    auto* const control = exchange->PrepareCtrl(id);
    if (exchange->m_bSaveAndValidate) {
        index = static_cast<int>(SendMessageW(control, get, 0, 0));
    } else {
        SendMessageW(control, set, static_cast<WPARAM>(index), 0);
    }
}

bool is_radio(HWND control) {
    return (SendMessageW(control, WM_GETDLGCODE, 0, 0) & DLGC_RADIOBUTTON) != 0;
}

}  // namespace

HWND CDataExchange::PrepareCtrl(int id) {
    auto* const control = GetDlgItem(m_pDlgWnd->m_hWnd, id);
    if (control == nullptr) throw CInvalidArgException();
    m_edit = nullptr;
    return control;
}

HWND CDataExchange::PrepareEditCtrl(int id) {
    return m_edit = PrepareCtrl(id);
}

void CDataExchange::Fail() {
    if (m_edit != nullptr) {
        SetFocus(m_edit);
        SendMessageW(m_edit, kSelect, 0, -1);
    }
    throw CUserException();
}

void DDX_Control(CDataExchange* exchange, int id, CWnd& control) {
    if (control.m_hWnd != nullptr) return;
    auto* const window = exchange->PrepareCtrl(id);
    if (!control.SubclassWindow(window)) throw CInvalidArgException();
}

void DDX_Text(CDataExchange* exchange, int id, CString& text) {
    const CWnd* const control = CWnd::FromHandle(exchange->PrepareEditCtrl(id));
    if (exchange->m_bSaveAndValidate) {
        control->GetWindowText(text);
    } else {
        SetWindowTextW(control->m_hWnd, text);
    }
}

void DDX_Check(CDataExchange* exchange, int id, int& check) {
    auto* const control = exchange->PrepareCtrl(id);
    if (exchange->m_bSaveAndValidate) {
        check = static_cast<int>(SendMessageW(control, BM_GETCHECK, 0, 0));
    } else {
        if (check < 0 || check > 2) check = 0;
        SendMessageW(control, BM_SETCHECK, static_cast<WPARAM>(check), 0);
    }
}

void DDX_Radio(CDataExchange* exchange, int id, int& index) {
    auto* control = exchange->PrepareCtrl(id);
    if (exchange->m_bSaveAndValidate) index = -1;
    int at = 0;
    do {
        if (is_radio(control)) {
            if (!exchange->m_bSaveAndValidate) {
                SendMessageW(control, BM_SETCHECK, at == index ? 1 : 0, 0);
            } else if (SendMessageW(control, BM_GETCHECK, 0, 0) != 0) {
                index = at;
            }
            ++at;
        }
        control = GetWindow(control, GW_HWNDNEXT);
    } while (control != nullptr &&
             (static_cast<DWORD>(GetWindowLongW(control, GWL_STYLE)) & WS_GROUP) == 0);
}

void DDX_CBIndex(CDataExchange* exchange, int id, int& index) {
    exchange_index(exchange, id, index, kComboGet, kComboSet);
}

void DDX_LBIndex(CDataExchange* exchange, int id, int& index) {
    exchange_index(exchange, id, index, kListGet, kListSet);
}

void DDV_MaxChars(CDataExchange* exchange, const CString& text, int count) {
    if (exchange->m_bSaveAndValidate) {
        if (text.GetLength() > count) exchange->Fail();
    } else if (auto* const edit = exchange->edit()) {
        SendMessageW(edit, kLimitText, static_cast<WPARAM>(count), 0);
    }
}
