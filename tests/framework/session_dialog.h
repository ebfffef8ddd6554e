// A dialog as a product writes one: the properties of its sessions.
#pragma once

#include "tvutil2/framework/bar_controls.h"
#include "tvutil2/framework/dialog.h"
#include "tvutil2/framework/item_controls.h"
#include "tvutil2/framework/menus.h"

#include <string>

namespace tests {

constexpr int IDC_TREE = 1001;
constexpr int IDC_LIST = 1002;
constexpr int IDC_PORT = 1003;
constexpr int IDC_RETRIES = 1004;
constexpr int IDC_PROTOCOL = 1005;
constexpr int IDC_TERMINAL = 1006;
constexpr int IDC_PROGRESS = 1007;
constexpr int IDC_VOLUME = 1008;
constexpr int IDC_COLOR = 1009;
constexpr int IDC_USER = 1010;
constexpr UINT ID_SESSION_OPEN = 2001;
constexpr UINT ID_SESSION_DELETE = 2002;

/// Draws itself in its colour, and counts its own clicks.
class CColorButton : public CButton {
  public:
    COLORREF m_color = RGB(200, 30, 40);
    int m_nDrawn = 0;
    int m_nClicked = 0;

  protected:
    void DrawItem(DRAWITEMSTRUCT* item) override {
        CDC::FromHandle(item->hDC)->FillSolidRect(&item->rcItem, m_color);
        ++m_nDrawn;
    }
    afx_msg void OnClicked() { ++m_nClicked; }
    DECLARE_MESSAGE_MAP()
};

/// Takes digits only, on a yellow ground, and tells when it is left.
class CPortEdit : public CEdit {
  public:
    int m_nLeft = 0;

  protected:
    afx_msg void OnChar(UINT character, UINT count, UINT flags) {
        if (character >= 32 && (character < '0' || character > '9')) return;
        CEdit::OnChar(character, count, flags);
    }
    afx_msg HBRUSH CtlColor(CDC* context, UINT kind) {
        EXPECT_EQ(kind, CTLCOLOR_EDIT);
        context->SetBkColor(RGB(255, 255, 0));
        return m_brush;
    }
    afx_msg void OnLeft() { ++m_nLeft; }
    DECLARE_MESSAGE_MAP()

  private:
    CBrush m_brush{RGB(255, 255, 0)};
};

class CSessionDialog : public CDialog {
    DECLARE_DYNAMIC(CSessionDialog)
  public:
    explicit CSessionDialog(CWnd* parent = nullptr) : CDialog(0U, parent) {}

    int m_nPort = 22;
    UINT m_nRetries = 3;
    CString m_strProtocol = u"SSH";
    CString m_strTerminal = u"xterm";
    CString m_strUser;
    std::string m_heard;

    CTreeCtrl m_tree;
    CListCtrl m_list;
    CPortEdit m_port;
    CColorButton m_color;
    CProgressCtrl m_progress;
    CScrollBar m_volume;
    CMenu m_menu;

    BOOL OnInitDialog() override {
        CDialog::OnInitDialog();
        auto* const root = m_tree.InsertItem(u"Sessions");
        m_tree.SetItemData(m_tree.InsertItem(u"alpha", root), 1);
        m_tree.SetItemData(m_tree.InsertItem(u"beta", root), 2);
        m_tree.Expand(root, TVE_EXPAND);
        m_list.InsertColumn(0, u"Name", LVCFMT_LEFT, 60);
        m_list.InsertColumn(1, u"Host", LVCFMT_LEFT, 60);
        const struct {
            const char16_t *name, *host;
        } rows[] = {{u"one", u"10.0.0.1"}, {u"two", u"10.0.0.2"}, {u"three", u"10.0.0.3"}};
        for (const auto& row : rows) {
            const auto at = m_list.InsertItem(m_list.GetItemCount(), row.name);
            m_list.SetItemText(at, 1, row.host);
            m_list.SetItemData(at, static_cast<DWORD_PTR>(at) * 10);
        }
        m_menu.CreatePopupMenu();
        m_menu.AppendMenu(MF_STRING, ID_SESSION_OPEN, u"&Open");
        m_menu.AppendMenu(MF_SEPARATOR);
        m_menu.AppendMenu(MF_STRING | MF_GRAYED, ID_SESSION_DELETE, u"&Delete");
        m_progress.SetRange(0, 200);
        m_volume.SetScrollRange(0, 10);
        m_heard.clear();
        return TRUE;
    }

  protected:
    void DoDataExchange(CDataExchange* exchange) override {
        CDialog::DoDataExchange(exchange);
        DDX_Control(exchange, IDC_TREE, m_tree);
        DDX_Control(exchange, IDC_LIST, m_list);
        DDX_Control(exchange, IDC_PORT, m_port);
        DDX_Control(exchange, IDC_COLOR, m_color);
        DDX_Control(exchange, IDC_PROGRESS, m_progress);
        DDX_Control(exchange, IDC_VOLUME, m_volume);
        DDX_Text(exchange, IDC_PORT, m_nPort);
        DDV_MinMaxInt(exchange, m_nPort, 1, 65535);
        DDX_Text(exchange, IDC_RETRIES, m_nRetries);
        DDX_CBString(exchange, IDC_PROTOCOL, m_strProtocol);
        DDX_LBString(exchange, IDC_TERMINAL, m_strTerminal);
        DDX_Text(exchange, IDC_USER, m_strUser);
        DDV_MaxChars(exchange, m_strUser, 8);
    }
    void hear(const std::string& what) { m_heard += what + " "; }

    afx_msg void OnListChanged(NMHDR* header, LRESULT* result) {
        const auto& change = *reinterpret_cast<NMLISTVIEW*>(header);
        if ((change.uNewState & LVIS_SELECTED) != 0) hear("item" + std::to_string(change.iItem));
        *result = 0;
    }
    afx_msg void OnTreeExpanding(NMHDR* /*header*/, LRESULT* result) {
        hear("expanding");
        *result = 1;  // it stays as it is
    }
    afx_msg void OnFocused(UINT id, NMHDR* /*header*/, LRESULT* /*result*/) {
        hear("focus" + std::to_string(id));
    }
    afx_msg void OnHScroll(UINT code, UINT position, CScrollBar* bar) {
        if (code == SB_LINERIGHT) bar->SetScrollPos(bar->GetScrollPos() + 1);
        CDialog::OnHScroll(code, position, bar);
    }
    afx_msg void OnColor() { hear("color"); }
    afx_msg void OnOpen() { hear("open"); }
    afx_msg void OnPortLeft() { hear("left"); }
    afx_msg void OnPortChanged() { hear("changed"); }
    afx_msg HBRUSH OnCtlColor(CDC* context, CWnd* control, UINT kind) {
        auto* const brush = CDialog::OnCtlColor(context, control, kind);
        if (control->GetDlgCtrlID() == IDC_USER) context->SetTextColor(RGB(0, 0, 255));
        return brush;
    }
    DECLARE_MESSAGE_MAP()
};

}  // namespace tests
