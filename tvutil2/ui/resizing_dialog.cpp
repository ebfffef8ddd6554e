#include "tvutil2/ui/resizing_dialog.h"

#include "tvutil2/framework/app.h"
#include "tvutil2/framework/window_dc.h"
#include "tvutil2/platform/draw/rect.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/hit_test.h"
#include "tvutil2/platform/window/system_metrics.h"

namespace {

constexpr const char16_t* kWidth = u"CX";
constexpr const char16_t* kHeight = u"CY";

// The corner of an area that the grip takes.
RECT grip_of(RECT area) {
    area.left = area.right - GetSystemMetrics(SM_CXHSCROLL);
    area.top = area.bottom - GetSystemMetrics(SM_CYVSCROLL);
    return area;
}

}  // namespace

BEGIN_MESSAGE_MAP(CResizingDialog, CDialog)
ON_WM_SIZE()
ON_WM_PAINT()
ON_WM_NCHITTEST()
ON_WM_GETMINMAXINFO()
ON_WM_DESTROY()
ON_WM_CREATE()
ON_MESSAGE(WM_DPICHANGED, &CResizingDialog::OnDpiChanged)
END_MESSAGE_MAP()

CResizingDialog::CResizingDialog(UINT nIDTemplate, CWnd* pParent)
    : CDialog(nIDTemplate, pParent), m_nIDTemplate(nIDTemplate) {}

void CResizingDialog::SetControlInfo(WORD nCtrlID, WORD nFlags) {
    if (nFlags != 0) m_aControls.Add(static_cast<DWORD>(MAKELONG(nCtrlID, nFlags)));
}

void CResizingDialog::GetDialogProfileEntry(CString& strEntry) {
    strEntry.Format(u"%x", m_nIDTemplate);
}

BOOL CResizingDialog::OnInitDialog() {
    CDialog::OnInitDialog();
    auto* const app = AfxGetApp();
    if (!m_bRememberSize || app == nullptr) return FALSE;
    CString section;
    GetDialogProfileEntry(section);
    const auto width = static_cast<int>(app->GetProfileInt(section, kWidth, 0));
    const auto height = static_cast<int>(app->GetProfileInt(section, kHeight, 0));
    if (width != 0 && height != 0) SetWindowPos(nullptr, 0, 0, width, height, SWP_NOMOVE);
    return FALSE;
}

int CResizingDialog::OnCreate(CREATESTRUCTW* given) {
    if (CDialog::OnCreate(given) == -1) return -1;
    m_nMinWidth = given->cx;
    m_nMinHeight = given->cy;
    return 0;
}

void CResizingDialog::OnSize(UINT type, int width, int height) {
    CDialog::OnSize(type, width, height);
    if (type == SIZE_MINIMIZED) return;
    if (m_nLastWidth != 0) {
        m_bResized = TRUE;
        for (int i = 0; i < m_aControls.GetSize(); ++i) {
            move_control(m_aControls[i], width - m_nLastWidth, height - m_nLastHeight);
        }
    }
    m_nLastWidth = width;
    m_nLastHeight = height;
    if (m_bGrip) InvalidateRect(&m_rcGrip);
}

void CResizingDialog::move_control(DWORD entry, int dx, int dy) {
    const auto flags = HIWORD(entry);
    auto* const control = GetDlgItem(LOWORD(entry));
    if (control == nullptr) return;
    RECT place{};
    control->GetWindowRect(&place);
    ScreenToClient(&place);
    if ((flags & CTRL_SIZE_X) != 0) {
        place.right += dx;
    } else if ((flags & CTRL_MOVE_X) != 0) {
        OffsetRect(&place, dx, 0);
    }
    if ((flags & CTRL_SIZE_Y) != 0) {
        place.bottom += dy;
    } else if ((flags & CTRL_MOVE_Y) != 0) {
        OffsetRect(&place, 0, dy);
    }
    control->MoveWindow(&place);
    InvalidateRect(&place);
}

void CResizingDialog::OnGetMinMaxInfo(MINMAXINFO* limits) {
    if (m_nMinWidth == 0) return CDialog::OnGetMinMaxInfo(limits);
    limits->ptMinTrackSize = {m_nMinWidth, m_nMinHeight};
}

void CResizingDialog::OnPaint() {
    CDialog::OnPaint();
    if (!m_bGrip) return;
    RECT client{};
    GetClientRect(&client);
    m_rcGrip = grip_of(client);
    auto grip = m_rcGrip;
    CClientDC(this).DrawFrameControl(&grip, DFC_SCROLL, DFCS_SCROLLSIZEGRIP);
}

LRESULT CResizingDialog::OnNcHitTest(CPoint point) {
    const auto code = CDialog::OnNcHitTest(point);
    if (code != HTCLIENT || !m_bGrip) return code;
    RECT window{};
    GetWindowRect(&window);
    const auto grip = grip_of(window);
    return PtInRect(&grip, point) ? HTBOTTOMRIGHT : code;
}

void CResizingDialog::remember_size() {
    auto* const app = AfxGetApp();
    if (app == nullptr) return;
    RECT window{};
    GetWindowRect(&window);
    CString section;
    GetDialogProfileEntry(section);
    app->WriteProfileInt(section, kWidth, window.right - window.left);
    app->WriteProfileInt(section, kHeight, window.bottom - window.top);
}

void CResizingDialog::OnDestroy() {
    if (m_bRememberSize && m_bResized && m_nLastWidth != 0 && m_nLastHeight != 0) remember_size();
    m_nMinWidth = m_nMinHeight = m_nLastWidth = m_nLastHeight = 0;
    m_bResized = FALSE;
    CWnd::OnDestroy();
}

LRESULT CResizingDialog::OnDpiChanged(WPARAM /*wparam*/, LPARAM /*lparam*/) {
    return 0;
}
