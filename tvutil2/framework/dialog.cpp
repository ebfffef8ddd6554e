#include "tvutil2/framework/dialog.h"

#include "tvutil2/framework/app.h"
#include "tvutil2/framework/window_handle.h"
#include "tvutil2/framework/wnd_creation.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/resource/resource.h"
#include "tvutil2/platform/window/dialogs/dialogs.h"
#include "tvutil2/platform/window/dialogs/run_dialog.h"
#include "tvutil2/platform/window/window.h"

IMPLEMENT_DYNAMIC(CDialog, CWnd)

BEGIN_MESSAGE_MAP(CDialog, CWnd)
ON_COMMAND(IDOK, &CDialog::OnOK)
ON_COMMAND(IDCANCEL, &CDialog::OnCancel)
END_MESSAGE_MAP()

namespace {

CWnd* parent_or_main(CWnd* parent) {
    return parent != nullptr ? parent : AfxGetMainWnd();
}

}  // namespace

CDialog::CDialog(UINT id, CWnd* parent)
    : m_name(MAKEINTRESOURCEW(static_cast<WORD>(id))), m_parent(parent) {}

CDialog::CDialog(const char16_t* name, CWnd* parent) : m_name(name), m_parent(parent) {}

const void* CDialog::find_template(const char16_t* name, HINSTANCE& module) {
    module = AfxFindResourceHandle(name, RT_DIALOG);
    auto* const found = FindResourceW(module, name, RT_DIALOG);
    return found != nullptr ? LockResource(LoadResource(module, found)) : nullptr;
}

BOOL CDialog::Create(UINT id, CWnd* parent) {
    return Create(MAKEINTRESOURCEW(static_cast<WORD>(id)), parent);
}

BOOL CDialog::Create(const char16_t* name, CWnd* parent) {
    HINSTANCE module = nullptr;
    const auto* const found = find_template(name, module);
    return found != nullptr ? CreateIndirect(found, parent) : FALSE;
}

BOOL CDialog::CreateIndirect(const void* dialog_template, CWnd* parent) {
    if (m_hWnd != nullptr) return tvutil2::fail_with(ERROR_INVALID_PARAMETER);
    const Creation creation(*this);
    auto* const window =
        CreateDialogIndirectParamW(AfxGetInstanceHandle(), dialog_template,
                                   handle_of(parent_or_main(parent)), &CDialog::procedure, 0);
    return window != nullptr ? TRUE : FALSE;
}

BOOL CDialog::InitModalIndirect(const void* dialog_template, CWnd* parent) {
    m_template = dialog_template;
    if (parent != nullptr) m_parent = parent;
    return TRUE;
}

BOOL CDialog::InitModalIndirect(HGLOBAL dialog_template, CWnd* parent) {
    return InitModalIndirect(LockResource(dialog_template), parent);
}

INT_PTR CDialog::DoModal() {
    if (m_hWnd != nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return -1;
    }
    auto* module = AfxGetInstanceHandle();
    const auto* found = m_template;
    if (found == nullptr && m_name != nullptr) found = find_template(m_name, module);
    if (found == nullptr) return -1;
    Creation creation(*this);
    const auto result = tvutil2::run_dialog(
        {module, found, handle_of(parent_or_main(m_parent)), &CDialog::procedure, 0}, [&](HWND) {
            creation.end();
            return CWinThread::pump();
        });
    return result;
}

void CDialog::EndDialog(int result) {
    ::EndDialog(m_hWnd, result);
}

void CDialog::NextDlgCtrl() const {
    SendMessage(WM_NEXTDLGCTL, FALSE, FALSE);
}

void CDialog::PrevDlgCtrl() const {
    SendMessage(WM_NEXTDLGCTL, TRUE, FALSE);
}

void CDialog::GotoDlgCtrl(CWnd* control) {
    SendMessage(WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(handle_of(control)), TRUE);
}

void CDialog::SetDefID(UINT id) {
    SendMessage(DM_SETDEFID, id);
}

void CDialog::MapDialogRect(RECT* rect) const {
    ::MapDialogRect(m_hWnd, rect);
}

BOOL CDialog::PreTranslateMessage(MSG* message) {
    if (CWnd::PreTranslateMessage(message)) return TRUE;
    const bool is_key = message->message >= WM_KEYFIRST && message->message <= WM_KEYLAST;
    const bool is_pointer = message->message >= WM_MOUSEFIRST && message->message <= WM_MOUSELAST;
    return is_key || is_pointer ? IsDialogMessageW(m_hWnd, message) : FALSE;
}

BOOL CDialog::OnInitDialog() {
    UpdateData(FALSE);
    return TRUE;
}

void CDialog::OnOK() {
    if (UpdateData(TRUE)) EndDialog(IDOK);
}

void CDialog::OnCancel() {
    EndDialog(IDCANCEL);
}

INT_PTR CDialog::procedure(HWND window, UINT message, WPARAM /*wparam*/, LPARAM /*lparam*/) {
    if (message != WM_INITDIALOG) return FALSE;
    auto* const object = dynamic_cast<CDialog*>(FromHandlePermanent(window));
    return object != nullptr ? object->OnInitDialog() : TRUE;
}
