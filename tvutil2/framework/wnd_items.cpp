// What a CWnd does with the controls in it.
#include "tvutil2/framework/typed_number.h"
#include "tvutil2/framework/window_handle.h"
#include "tvutil2/framework/wnd.h"
#include "tvutil2/platform/window/dialogs/dialogs.h"
#include "tvutil2/platform/window/window.h"

CWnd* CWnd::GetDlgItem(int id) const {
    return FromHandle(::GetDlgItem(m_hWnd, id));
}

void CWnd::GetDlgItem(int id, HWND* window) const {
    *window = ::GetDlgItem(m_hWnd, id);
}

int CWnd::GetDlgCtrlID() const {
    return ::GetDlgCtrlID(m_hWnd);
}

CWnd* CWnd::GetNextDlgTabItem(CWnd* control, BOOL previous) const {
    return FromHandle(::GetNextDlgTabItem(m_hWnd, handle_of(control), previous));
}

void CWnd::SetDlgItemText(int id, const char16_t* text) {
    SetDlgItemTextW(m_hWnd, id, text);
}

int CWnd::GetDlgItemText(int id, CString& text) const {
    text.Empty();
    if (const auto* const control = GetDlgItem(id)) control->GetWindowText(text);
    return text.GetLength();
}

void CWnd::SetDlgItemInt(int id, UINT number, BOOL is_signed) {
    CString text;
    text.Format(is_signed ? u"%d" : u"%u", number);
    SetDlgItemText(id, text);
}

UINT CWnd::GetDlgItemInt(int id, BOOL* is_one, BOOL is_signed) const {
    CString text;
    GetDlgItemText(id, text);
    std::optional<UINT> number;
    if (is_signed) {
        number = tvutil2::typed_number<int>(text.View());
    } else {
        number = tvutil2::typed_number<UINT>(text.View());
    }
    if (is_one != nullptr) *is_one = number ? TRUE : FALSE;
    return number.value_or(0);
}

LRESULT CWnd::SendDlgItemMessage(int id, UINT message, WPARAM wparam, LPARAM lparam) const {
    return SendDlgItemMessageW(m_hWnd, id, message, wparam, lparam);
}

void CWnd::CheckDlgButton(int id, UINT check) {
    ::CheckDlgButton(m_hWnd, id, check);
}

UINT CWnd::IsDlgButtonChecked(int id) const {
    return ::IsDlgButtonChecked(m_hWnd, id);
}

void CWnd::CheckRadioButton(int first, int last, int checked) {
    ::CheckRadioButton(m_hWnd, first, last, checked);
}

int CWnd::GetCheckedRadioButton(int first, int last) const {
    for (int id = first; id <= last; ++id) {
        if (IsDlgButtonChecked(id) != 0) return id;
    }
    return 0;
}
