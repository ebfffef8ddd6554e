#include "tvutil2/framework/controls.h"

#include "tvutil2/framework/exceptions.h"

#include <algorithm>
#include <string>

IMPLEMENT_DYNAMIC(CStatic, CWnd)
IMPLEMENT_DYNAMIC(CButton, CWnd)
IMPLEMENT_DYNAMIC(CEdit, CWnd)
IMPLEMENT_DYNAMIC(CListBox, CWnd)
IMPLEMENT_DYNAMIC(CComboBox, CWnd)

namespace {

void get_text(const CWnd& list, UINT length_of, UINT text_of, int index, CString& text) {
    const auto length = list.SendMessage(length_of, static_cast<WPARAM>(index));
    if (length < 0) tvutil2::throw_invalid_argument();
    std::u16string buffer(static_cast<std::size_t>(length) + 1, u'\0');
    list.SendMessage(text_of, static_cast<WPARAM>(index), reinterpret_cast<LPARAM>(buffer.data()));
    text = buffer.c_str();
}

}  // namespace

BOOL CStatic::OnChildNotify(UINT message, WPARAM wparam, LPARAM lparam, LRESULT* result) {
    if (message != WM_DRAWITEM) return CWnd::OnChildNotify(message, wparam, lparam, result);
    DrawItem(reinterpret_cast<DRAWITEMSTRUCT*>(lparam));
    return TRUE;
}

BOOL CButton::OnChildNotify(UINT message, WPARAM wparam, LPARAM lparam, LRESULT* result) {
    if (message != WM_DRAWITEM) return CWnd::OnChildNotify(message, wparam, lparam, result);
    DrawItem(reinterpret_cast<DRAWITEMSTRUCT*>(lparam));
    return TRUE;
}

int CEdit::GetLine(int line, char16_t* text, int most) const {
    if (most <= 0) return 0;
    text[0] = static_cast<char16_t>(std::min(most, 0xFFFF));  // where the control looks for it
    return static_cast<int>(
        SendMessage(EM_GETLINE, static_cast<WPARAM>(line), reinterpret_cast<LPARAM>(text)));
}

void CEdit::GetSel(int& first, int& end) const {
    DWORD from = 0, to = 0;
    SendMessage(EM_GETSEL, reinterpret_cast<WPARAM>(&from), reinterpret_cast<LPARAM>(&to));
    first = static_cast<int>(from);
    end = static_cast<int>(to);
}

void CListBox::GetText(int index, CString& text) const {
    get_text(*this, LB_GETTEXTLEN, LB_GETTEXT, index, text);
}

void CComboBox::GetLBText(int index, CString& text) const {
    get_text(*this, CB_GETLBTEXTLEN, CB_GETLBTEXT, index, text);
}
