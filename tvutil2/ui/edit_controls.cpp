#include "tvutil2/ui/edit_controls.h"

#include "tvutil2/framework/dialog.h"
#include "tvutil2/framework/window_dc.h"
#include "tvutil2/platform/draw/rect.h"
#include "tvutil2/platform/window/controls/owner_draw.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/ui/dpi.h"
#include "tvutil2/ui/file_dialogs.h"

#include <string_view>

namespace {

constexpr UINT kButton = 100;
constexpr int kButtonWidth = 16;
constexpr int kButtonGap = 2;
constexpr std::u16string_view kNotInNames = u"\"*/:<>?\\|";
constexpr COLORREF kHintColor = 0xACACAC;

}  // namespace

IMPLEMENT_DYNAMIC(CTvEdit, CEdit)

BEGIN_MESSAGE_MAP(CTvEdit, CEdit)
END_MESSAGE_MAP()

BOOL CTvEdit::PreTranslateMessage(MSG* message) {
    const bool selects_all = message->message == WM_KEYDOWN && message->wParam == 'A' &&
                             message->hwnd == ::GetFocus() && GetKeyState(VK_CONTROL) < 0;
    if (!selects_all) return CEdit::PreTranslateMessage(message);
    SendMessageW(message->hwnd, EM_SETSEL, 0, -1);
    SendMessageW(message->hwnd, EM_SCROLLCARET, 0, 0);
    return TRUE;
}

BOOL CFNameEdit::PreTranslateMessage(MSG* message) {
    const auto character = static_cast<char16_t>(message->wParam);
    if (message->message == WM_CHAR && kNotInNames.find(character) != kNotInNames.npos) return TRUE;
    return CEdit::PreTranslateMessage(message);
}

BEGIN_MESSAGE_MAP(CHintEdit, CEdit)
ON_WM_PAINT()
ON_WM_ERASEBKGND()
ON_WM_KILLFOCUS()
ON_WM_SETFOCUS()
ON_MESSAGE(WM_SETTEXT, &CHintEdit::OnSetText)
END_MESSAGE_MAP()

void CHintEdit::SetFont(CFont* pFont, BOOL bRedraw) {
    LOGFONTW record{};
    pFont->GetLogFont(&record);
    auto copy = std::make_unique<CFont>();
    copy->CreateFontIndirect(&record);
    SendMessage(WM_SETFONT, reinterpret_cast<WPARAM>(static_cast<HFONT>(*copy)), bRedraw);
    m_pFont = std::move(copy);
}

void CHintEdit::OnPaint() {
    if (!m_bEditing) {
        CString text;
        GetWindowText(text);
        DrawMessage(text.IsEmpty() ? m_strHint : text);
    }
    CEdit::OnPaint();
}

void CHintEdit::DrawMessage(const CString& message) {
    CPaintDC context(this);
    RECT client{};
    GetClientRect(&client);
    CDC memory;
    memory.CreateCompatibleDC(&context);
    CBitmap bitmap;
    bitmap.CreateCompatibleBitmap(&context, client.right, client.bottom);
    auto* const bitmap_before = memory.SelectObject(&bitmap);
    auto* const font_before = m_pFont ? memory.SelectObject(m_pFont.get()) : nullptr;

    // What a parent that has no opinion leaves.
    context.SetBkColor(GetSysColor(COLOR_WINDOW));
    AFX_CTLCOLOR asked{m_hWnd, context.m_hDC, CTLCOLOR_EDIT};
    if (auto* const parent = GetParent()) {
        parent->SendMessage(WM_CTLCOLOR, 0, reinterpret_cast<LPARAM>(&asked));
    }
    memory.FillSolidRect(&client, context.GetBkColor());
    memory.SetBkMode(TRANSPARENT);
    memory.SetTextColor(kHintColor);
    if (!message.IsEmpty()) {
        auto area = client;
        ++area.left;
        const UINT center = m_bCenter ? DT_CENTER : 0;
        memory.DrawText(message, &area, DT_SINGLELINE | DT_VCENTER | DT_END_ELLIPSIS | center);
    }
    context.BitBlt(0, 0, client.right, client.bottom, &memory, 0, 0, SRCCOPY);
    if (font_before != nullptr) memory.SelectObject(font_before);
    memory.SelectObject(bitmap_before);
}

void CHintEdit::OnSetFocus(CWnd* before) {
    m_bEditing = TRUE;
    CEdit::OnSetFocus(before);
}

void CHintEdit::OnKillFocus(CWnd* next) {
    if (GetWindowTextLength() == 0) m_bEditing = FALSE;
    CEdit::OnKillFocus(next);
}

LRESULT CHintEdit::OnSetText(WPARAM wparam, LPARAM lparam) {
    DefWindowProc(WM_SETTEXT, wparam, lparam);
    return 1;
}

void CHintEdit::OnEnChange() {
    if (GetWindowTextLength() <= 1) InvalidateRect(nullptr, TRUE);
}

BEGIN_MESSAGE_MAP(CBrowseEdit, CEdit)
ON_WM_SIZE()
ON_WM_DRAWITEM()
ON_MESSAGE(WM_SETFONT, &CBrowseEdit::OnSetFont)
ON_BN_CLICKED(kButton, &CBrowseEdit::OnButtonClick)
END_MESSAGE_MAP()

BOOL CBrowseEdit::PreTranslateMessage(MSG* message) {
    if (message->message == WM_KEYDOWN && message->wParam == VK_ESCAPE) {
        auto* const parent = GetParent();
        if (parent != nullptr && parent->IsKindOf(RUNTIME_CLASS(CDialog))) {
            parent->PostMessage(WM_KEYDOWN, VK_ESCAPE, 0);
        }
    }
    return CEdit::PreTranslateMessage(message);
}

void CBrowseEdit::PreSubclassWindow() {
    CEdit::PreSubclassWindow();
    // The text's painting leaves the button alone.
    ModifyStyle(0, WS_CLIPCHILDREN);
    ResetRect();
}

int CBrowseEdit::OnCreate(CREATESTRUCTW* given) {
    if (CEdit::OnCreate(given) == -1) return -1;
    ResetRect();
    return 0;
}

void CBrowseEdit::OnSize(UINT type, int width, int height) {
    CEdit::OnSize(type, width, height);
    ResetRect();
}

LRESULT CBrowseEdit::OnSetFont(WPARAM wparam, LPARAM lparam) {
    const auto result = DefWindowProc(WM_SETFONT, wparam, lparam);
    ResetRect();
    return result;
}

void CBrowseEdit::ResetRect() {
    if (m_btnBrowse.GetSafeHwnd() == nullptr) {
        m_btnBrowse.Create(u"", WS_CHILD | WS_VISIBLE | BS_OWNERDRAW, RECT{}, this, kButton);
        m_btnBrowse.SendMessage(WM_SETFONT, static_cast<WPARAM>(SendMessage(WM_GETFONT)), TRUE);
    }
    RECT client{};
    GetClientRect(&client);
    const auto left = client.right - GetAppScale(kButtonWidth);
    m_btnBrowse.MoveWindow(left, client.top, client.right - left, client.bottom - client.top, TRUE);
    RECT text{};
    GetRect(&text);
    text.left = 0;
    text.right = left - kButtonGap;
    SetRectNP(&text);
}

void CBrowseEdit::OnDrawItem(int nIDCtl, DRAWITEMSTRUCT* lpDrawItem) {
    if (nIDCtl != kButton || lpDrawItem->CtlType != ODT_BUTTON) return;
    const auto text = GetSysColor(IsWindowEnabled() ? COLOR_BTNTEXT : COLOR_GRAYTEXT);
    auto upper = GetSysColor(COLOR_BTNHIGHLIGHT);
    auto lower = GetSysColor(COLOR_BTNSHADOW);
    if ((lpDrawItem->itemState & ODS_SELECTED) != 0) std::swap(upper, lower);
    auto area = lpDrawItem->rcItem;
    auto& context = *CDC::FromHandle(lpDrawItem->hDC);
    context.FillSolidRect(&area, GetSysColor(COLOR_3DFACE));
    context.Draw3dRect(&area, upper, lower);
    context.SetBkMode(TRANSPARENT);
    context.SetTextColor(text);
    context.DrawText(u"...", &area, DT_CENTER | DT_VCENTER | DT_SINGLELINE);
}

void CBrowseEdit::tell_parent() {
    auto* const parent = GetParent();
    if (parent == nullptr) return;
    parent->SendMessage(WM_COMMAND,
                        MAKEWPARAM(static_cast<WORD>(GetDlgCtrlID()), TV_BROWSE_CLICKED),
                        reinterpret_cast<LPARAM>(m_hWnd));
}

void CBrowseEdit::OnButtonClick() {
    tell_parent();
}

BEGIN_MESSAGE_MAP(CBrowseFolderEdit, CBrowseEdit)
ON_BN_CLICKED(kButton, &CBrowseFolderEdit::OnButtonClick)
END_MESSAGE_MAP()

void CBrowseFolderEdit::OnButtonClick() {
    CFolderOpenDlg dialog(this);
    GetWindowText(m_strPath);
    if (!m_strTitle.IsEmpty()) dialog.m_strTitle = m_strTitle;
    dialog.m_strPath = m_strPath;
    if (dialog.DoModal() == IDOK) SetWindowText(dialog.m_strPath);
    tell_parent();
}

BEGIN_MESSAGE_MAP(CBrowseFileEdit, CBrowseEdit)
ON_BN_CLICKED(kButton, &CBrowseFileEdit::OnButtonClick)
END_MESSAGE_MAP()

bool CBrowseFileEdit::choose(CFileDlg& dialog, DWORD flags, CString& path) const {
    dialog.m_dwFlags = flags;
    dialog.m_nFilterID = m_nFilterID;
    dialog.m_strDefExt = m_strDefExt;
    dialog.m_strInitDir = m_strInitDir;
    dialog.m_strFilePath = path;
    if (dialog.DoModal() != IDOK) return false;
    path = dialog.m_strFilePath;
    return true;
}

void CBrowseFileEdit::OnButtonClick() {
    constexpr DWORD kFlags = OFN_PATHMUSTEXIST | OFN_HIDEREADONLY;
    CString path;
    GetWindowText(path);
    CFileOpenDlg open(this);
    CFileSaveDlg save(this);
    const bool is_chosen =
        m_bOpen ? choose(open, kFlags | OFN_FILEMUSTEXIST, path) : choose(save, kFlags, path);
    if (is_chosen) SetWindowText(path);
}
