#include "tvutil2/ui/messages.h"

#include "tvutil2/data/text.h"
#include "tvutil2/framework/app.h"
#include "tvutil2/platform/process/message_box.h"
#include "tvutil2/services/environment.h"

namespace {

constexpr UINT kEnterInteger = 14127;
constexpr UINT kIntegerRange = 14128;
constexpr UINT kEnterUnsigned = 14129;
constexpr UINT kInvalidFileName = 14134;

}  // namespace

void ShowErrorMessage(CString strText, DWORD dwError) {
    if (strText.IsEmpty() && dwError == 0) return;
    CString system;
    GetLastErrorString(system, dwError);
    if (!system.IsEmpty() && !strText.IsEmpty()) strText += u" : ";
    AfxMessageBox(strText + system, MB_ICONERROR);
}

void ShowEnterIntegerMessage() {
    AfxMessageBox(tvutil2::library_string(kEnterInteger));
}

void ShowEnterUIntMessage() {
    AfxMessageBox(tvutil2::library_string(kEnterUnsigned));
}

void ShowInvalidIntRangeMessage(int /*nTyped*/, int nMin, int nMax) {
    CString text;
    text.Format(tvutil2::library_string(kIntegerRange), nMin, nMax);
    AfxMessageBox(text);
}

void ShowInvalidFileNameMessage() {
    AfxMessageBox(tvutil2::library_string(kInvalidFileName), MB_ICONERROR);
}

void ShowInvalidFileNameMessage(CWnd* pWnd) {
    if (pWnd == nullptr) return;
    MessageBoxW(pWnd->GetSafeHwnd(), tvutil2::library_string(kInvalidFileName), u"",
                MB_ICONWARNING);
}
