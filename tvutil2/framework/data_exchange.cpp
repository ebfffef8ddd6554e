#include "tvutil2/framework/app.h"
#include "tvutil2/framework/controls.h"
#include "tvutil2/framework/dialog.h"
#include "tvutil2/framework/exceptions.h"
#include "tvutil2/framework/typed_number.h"
#include "tvutil2/platform/process/modules.h"
#include "tvutil2/platform/resource/resource.h"
#include "tvutil2/platform/window/dialogs/dialogs.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/parameters.h"
#include "tvutil2/platform/window/window.h"

namespace {

// Strings of the library.
constexpr UINT kEnterInteger = 14127;
constexpr UINT kIntegerRange = 14128;
constexpr UINT kEnterUnsigned = 14129;

CString library_text(UINT id) {
    const char16_t* text = nullptr;
    const auto length =
        LoadStringW(tvutil2::library_instance(), id, reinterpret_cast<char16_t*>(&text), 0);
    return {text, length};
}

template <class Number>
void exchange_number(CDataExchange* exchange, int id, Number& number, UINT advice) {
    auto* const control = CWnd::FromHandle(exchange->PrepareEditCtrl(id));
    if (!exchange->m_bSaveAndValidate) {
        exchange->m_pDlgWnd->SetDlgItemInt(id, static_cast<UINT>(number),
                                           std::is_signed_v<Number> ? TRUE : FALSE);
        return;
    }
    CString text;
    control->GetWindowText(text);
    const auto typed = tvutil2::typed_number<Number>(text.View());
    if (!typed) {
        AfxMessageBox(library_text(advice));
        exchange->Fail();
    }
    number = *typed;
}

template <class Number>
void check_range(CDataExchange* exchange, Number number, Number least, Number most) {
    if (!exchange->m_bSaveAndValidate || (number >= least && number <= most)) return;
    CString text;
    text.Format(library_text(kIntegerRange), least, most);
    AfxMessageBox(text);
    exchange->Fail();
}

void exchange_index(CDataExchange* exchange, int id, int& index, UINT get, UINT set) {
    auto* const control = exchange->PrepareCtrl(id);
    if (exchange->m_bSaveAndValidate) {
        index = static_cast<int>(SendMessageW(control, get, 0, 0));
    } else {
        SendMessageW(control, set, static_cast<WPARAM>(index), 0);
    }
}

// `find` selects the item that it finds, or only gives it.
void exchange_combo_text(CDataExchange* exchange, int id, CString& text, UINT find) {
    auto* const control = exchange->PrepareCtrl(id);
    if (exchange->m_bSaveAndValidate) return CWnd::FromHandle(control)->GetWindowText(text);
    const auto found =
        SendMessageW(control, find, static_cast<WPARAM>(-1), tvutil2::as_lparam(text.GetString()));
    SendMessageW(control, CB_SETCURSEL, static_cast<WPARAM>(found), 0);
    if (found < 0) SetWindowTextW(control, text);
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
        SendMessageW(m_edit, EM_SETSEL, 0, -1);
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

void DDX_Text(CDataExchange* exchange, int id, int& number) {
    exchange_number(exchange, id, number, kEnterInteger);
}

void DDX_Text(CDataExchange* exchange, int id, UINT& number) {
    exchange_number(exchange, id, number, kEnterUnsigned);
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
    exchange_index(exchange, id, index, CB_GETCURSEL, CB_SETCURSEL);
}

void DDX_LBIndex(CDataExchange* exchange, int id, int& index) {
    exchange_index(exchange, id, index, LB_GETCURSEL, LB_SETCURSEL);
}

void DDX_CBString(CDataExchange* exchange, int id, CString& text) {
    exchange_combo_text(exchange, id, text, CB_SELECTSTRING);
}

void DDX_CBStringExact(CDataExchange* exchange, int id, CString& text) {
    exchange_combo_text(exchange, id, text, CB_FINDSTRINGEXACT);
}

void DDX_LBString(CDataExchange* exchange, int id, CString& text) {
    auto* const control = exchange->PrepareCtrl(id);
    if (!exchange->m_bSaveAndValidate) {
        SendMessageW(control, LB_SELECTSTRING, static_cast<WPARAM>(-1),
                     tvutil2::as_lparam(text.GetString()));
        return;
    }
    const auto index = static_cast<WPARAM>(SendMessageW(control, LB_GETCURSEL, 0, 0));
    const auto length = static_cast<int>(SendMessageW(control, LB_GETTEXTLEN, index, 0));
    text.Empty();
    if (length <= 0) return;
    SendMessageW(control, LB_GETTEXT, index, reinterpret_cast<LPARAM>(text.GetBuffer(length)));
    text.ReleaseBuffer();
}

void DDV_MaxChars(CDataExchange* exchange, const CString& text, int count) {
    if (exchange->m_bSaveAndValidate) {
        if (text.GetLength() > count) exchange->Fail();
    } else if (auto* const edit = exchange->edit()) {
        SendMessageW(edit, EM_LIMITTEXT, static_cast<WPARAM>(count), 0);
    }
}

void DDV_MinMaxInt(CDataExchange* exchange, int number, int least, int most) {
    check_range(exchange, number, least, most);
}

void DDV_MinMaxUInt(CDataExchange* exchange, UINT number, UINT least, UINT most) {
    check_range(exchange, number, least, most);
}
