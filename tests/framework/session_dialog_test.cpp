// What a product's own dialog asks of the framework, all at once.
#include "tests/framework/session_dialog.h"

#include "tvutil2/platform/base/locale.h"
#include "tvutil2/platform/display/driver.h"
#include "tvutil2/platform/draw/surface.h"
#include "tvutil2/platform/window/find_windows.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/paint.h"
#include "tvutil2/platform/window/show.h"
#include "tvutil2/platform/window/simulated_input.h"
#include "tvutil2/platform/window/timers.h"
#include "tvutil2/platform/window/window.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "tests/platform/window/dialogs/template_bytes.h"

namespace tests {

BEGIN_MESSAGE_MAP(CColorButton, CButton)
ON_CONTROL_REFLECT(BN_CLICKED, &CColorButton::OnClicked)
END_MESSAGE_MAP()

BEGIN_MESSAGE_MAP(CPortEdit, CEdit)
ON_WM_CHAR()
ON_WM_CTLCOLOR_REFLECT()
ON_CONTROL_REFLECT(EN_KILLFOCUS, &CPortEdit::OnLeft)
END_MESSAGE_MAP()

IMPLEMENT_DYNAMIC(CSessionDialog, CDialog)
BEGIN_MESSAGE_MAP(CSessionDialog, CDialog)
ON_WM_CTLCOLOR()
ON_WM_HSCROLL()
ON_NOTIFY(LVN_ITEMCHANGED, IDC_LIST, &CSessionDialog::OnListChanged)
ON_NOTIFY(TVN_ITEMEXPANDINGW, IDC_TREE, &CSessionDialog::OnTreeExpanding)
ON_NOTIFY_RANGE(NM_SETFOCUS, IDC_TREE, IDC_LIST, &CSessionDialog::OnFocused)
ON_COMMAND(ID_SESSION_OPEN, &CSessionDialog::OnOpen)
ON_BN_CLICKED(IDC_COLOR, &CSessionDialog::OnColor)
ON_EN_CHANGE(IDC_PORT, &CSessionDialog::OnPortChanged)
ON_EN_KILLFOCUS(IDC_PORT, &CSessionDialog::OnPortLeft)
END_MESSAGE_MAP()

}  // namespace tests

namespace {

using namespace tests;

constexpr WORD kButton = 0x80, kEdit = 0x81, kList = 0x83, kBar = 0x84, kCombo = 0x85;

TemplateBytes session_template() {
    TemplateBytes bytes(u"Session", WS_POPUP | WS_CAPTION | WS_SYSMENU, 260, 160);
    bytes.add(kEdit, IDC_PORT, WS_TABSTOP | WS_BORDER, u"", 130, 7, 60, 14)
        .add(kEdit, IDC_RETRIES, WS_TABSTOP | WS_BORDER, u"", 130, 25, 60, 14)
        .add(kCombo, IDC_PROTOCOL, WS_TABSTOP | CBS_DROPDOWNLIST, u"", 130, 43, 60, 80)
        .add(kList, IDC_TERMINAL, WS_TABSTOP | WS_BORDER, u"", 130, 61, 60, 30)
        .add(kEdit, IDC_USER, WS_TABSTOP | WS_BORDER, u"", 130, 95, 60, 14)
        .add(kButton, IDC_COLOR, WS_TABSTOP | BS_OWNERDRAW, u"Color", 195, 7, 50, 14)
        .add(kBar, IDC_VOLUME, SBS_HORZ, u"", 195, 25, 50, 12)
        .add(kButton, IDOK, WS_TABSTOP | BS_DEFPUSHBUTTON, u"OK", 150, 140, 50, 14)
        .add(kButton, IDCANCEL, WS_TABSTOP, u"Cancel", 205, 140, 50, 14);
    return bytes;
}

class SessionDialogs : public testing::Test {
  protected:
    SessionDialogs() {
        setenv("TVUTIL_DISPLAY", "offscreen", 1);
        SetThreadLocale(0x0409);
    }
    // Controls without a number of their own in templates are made by hand, as products do.
    void show() {
        ASSERT_TRUE(m_dialog.make(m_bytes.bytes().data()));
        m_dialog.ShowWindow(SW_SHOW);
        pump();
        m_dialog.m_heard.clear();
    }
    void pump() {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            if (CWnd::WalkPreTranslateTree(m_dialog.m_hWnd, &message)) continue;
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
    }
    std::u16string text_of(int id) {
        CString text;
        m_dialog.GetDlgItemText(id, text);
        return std::u16string(text.View());
    }

    class Dialog : public CSessionDialog {
      public:
        BOOL make(const void* bytes) { return CreateIndirect(bytes); }
        BOOL OnInitDialog() override {
            const DWORD style = WS_CHILD | WS_VISIBLE | WS_BORDER | WS_TABSTOP;
            m_tree.Create(style | TVS_HASBUTTONS, {5, 5, 180, 120}, this, IDC_TREE);
            m_list.Create(style | LVS_REPORT, {5, 125, 180, 260}, this, IDC_LIST);
            m_progress.Create(WS_CHILD | WS_VISIBLE, {300, 80, 370, 95}, this, IDC_PROGRESS);
            for (const auto* protocol : {u"SERIAL", u"SSH", u"TELNET"}) {
                SendDlgItemMessage(IDC_PROTOCOL, CB_ADDSTRING, 0,
                                   reinterpret_cast<LPARAM>(protocol));
            }
            for (const auto* terminal : {u"vt100", u"xterm"}) {
                SendDlgItemMessage(IDC_TERMINAL, LB_ADDSTRING, 0,
                                   reinterpret_cast<LPARAM>(terminal));
            }
            return CSessionDialog::OnInitDialog();
        }
        using CWnd::UpdateData;
    };

    TemplateBytes m_bytes = session_template();
    Dialog m_dialog;
};

TEST_F(SessionDialogs, ExchangeNumbersAndChoices) {
    show();
    EXPECT_EQ(text_of(IDC_PORT), u"22");
    EXPECT_EQ(text_of(IDC_RETRIES), u"3");
    EXPECT_EQ(text_of(IDC_PROTOCOL), u"SSH");
    m_dialog.SetDlgItemInt(IDC_PORT, 8022);
    m_dialog.SetDlgItemText(IDC_USER, u"someone");
    m_dialog.SendDlgItemMessage(IDC_PROTOCOL, CB_SETCURSEL, 2);
    m_dialog.SendDlgItemMessage(IDC_TERMINAL, LB_SETCURSEL, 0);
    EXPECT_TRUE(m_dialog.UpdateData());
    EXPECT_EQ(m_dialog.m_nPort, 8022);
    EXPECT_EQ(m_dialog.m_strProtocol, u"TELNET");
    EXPECT_EQ(m_dialog.m_strTerminal, u"vt100");
    EXPECT_EQ(m_dialog.m_strUser, u"someone");
    EXPECT_EQ(m_dialog.SendDlgItemMessage(IDC_USER, EM_GETLIMITTEXT), 8);
}

// The person is told, and stands in the field.
TEST_F(SessionDialogs, RefuseWhatIsNoNumberOrOutside) {
    show();
    const struct {
        int id;
        const char16_t* typed;
        std::u16string_view told;  // empty: it is taken
    } cases[] = {{IDC_PORT, u" 443 ", u""},
                 {IDC_PORT, u"", u"Enter an integer."},
                 {IDC_PORT, u"4 4", u"Enter an integer."},
                 {IDC_PORT, u"-", u"Enter an integer."},
                 {IDC_PORT, u"99999999999999999999999", u"Enter an integer."},
                 {IDC_PORT, u"65536", u"Enter an integer between 1 and 65535."},
                 {IDC_PORT, u"-1", u"Enter an integer between 1 and 65535."},
                 {IDC_RETRIES, u"4294967295", u""},
                 {IDC_RETRIES, u"4294967296", u"Please enter a positive integer."},
                 {IDC_RETRIES, u"-1", u"Please enter a positive integer."}};
    static std::u16string told;
    static HWND shown;
    shown = m_dialog.m_hWnd;
    for (const auto& each : cases) {
        m_dialog.UpdateData(FALSE);
        m_dialog.GetDlgItem(IDC_USER)->SetFocus();
        m_dialog.SetDlgItemText(each.id, each.typed);
        told.clear();
        const auto timer = SetTimer(nullptr, 0, 1, [](HWND, UINT, UINT_PTR, DWORD) {
            auto* box = FindWindowW(u"#32770", nullptr);
            if (box == shown) box = FindWindowExW(nullptr, box, u"#32770", nullptr);
            for (auto* child = GetWindow(box, GW_CHILD); child != nullptr;
                 child = GetWindow(child, GW_HWNDNEXT)) {
                char16_t text[100] = {};
                GetWindowTextW(child, text, 100);
                if (std::u16string_view(text).ends_with(u".")) told = text;
            }
            EXPECT_NE(IsWindowEnabled(shown) != 0, box != nullptr);
            if (!told.empty()) SendMessageW(box, WM_CLOSE, 0, 0);
        });
        EXPECT_EQ(m_dialog.UpdateData() != 0, each.told.empty()) << (&each - cases);
        KillTimer(nullptr, timer);
        EXPECT_EQ(told, each.told);
        EXPECT_EQ(CWnd::GetFocus()->GetDlgCtrlID(), each.told.empty() ? IDC_USER : each.id);
        m_dialog.m_nPort = 22;
        m_dialog.m_nRetries = 3;
    }
}

TEST_F(SessionDialogs, HearTheirListsAndTrees) {
    show();
    auto& list = m_dialog.m_list;
    EXPECT_EQ(list.GetItemCount(), 3);
    EXPECT_EQ(list.GetItemText(2, 1), u"10.0.0.3");
    EXPECT_EQ(list.GetItemData(2), 20U);
    list.SetItemState(1, LVIS_SELECTED, LVIS_SELECTED);
    list.SetItemState(2, LVIS_SELECTED, LVIS_SELECTED);
    EXPECT_EQ(m_dialog.m_heard, "item1 item2 ");
    std::vector<int> selected;
    for (auto position = list.GetFirstSelectedItemPosition(); position != nullptr;) {
        selected.push_back(list.GetNextSelectedItem(position));
    }
    EXPECT_EQ(selected, (std::vector{1, 2}));
    list.DeleteItem(1);
    EXPECT_EQ(list.GetSelectedCount(), 1U);
    const std::u16string long_name(3000, u'n');
    list.SetItemText(0, 0, long_name.c_str());
    EXPECT_EQ(list.GetItemText(0, 0).View(), long_name);
    EXPECT_EQ(list.GetItemText(7, 0), u"");
    RECT row{};
    ASSERT_TRUE(list.GetItemRect(0, &row, 0));
    EXPECT_EQ(list.HitTest({row.left + 2, row.top + 2}), 0);

    auto& tree = m_dialog.m_tree;
    auto* const root = tree.GetRootItem();
    auto* const beta = tree.GetNextSiblingItem(tree.GetChildItem(root));
    EXPECT_EQ(tree.GetItemText(beta), u"beta");
    EXPECT_EQ(tree.GetItemData(beta), 2U);
    EXPECT_EQ(tree.GetParentItem(beta), root);
    EXPECT_TRUE(tree.ItemHasChildren(root));
    tree.SelectItem(beta);
    EXPECT_EQ(tree.GetSelectedItem(), beta);
    m_dialog.m_heard.clear();
    // The handler's answer goes back to the tree.
    const bool was_open = tree.GetItemState(root, TVIS_EXPANDED) != 0;
    tree.SetFocus();
    tvutil2::type_key(VK_LEFT);
    tvutil2::type_key(VK_LEFT);
    pump();
    EXPECT_EQ(m_dialog.m_heard, "focus1001 expanding ");
    EXPECT_EQ(tree.GetItemState(root, TVIS_EXPANDED) != 0, was_open);
    EXPECT_TRUE(tree.GetItemRect(beta, &row, TRUE));
    EXPECT_EQ(tree.HitTest({row.left + 1, row.top + 1}), beta);
}

TEST_F(SessionDialogs, LeaveToControlsWhatTheyHandleThemselves) {
    show();
    EXPECT_GT(m_dialog.m_color.m_nDrawn, 0);
    m_dialog.m_color.SendMessage(BM_CLICK);
    EXPECT_EQ(m_dialog.m_color.m_nClicked, 1);
    EXPECT_EQ(m_dialog.m_heard, "") << "the button has kept its click";

    m_dialog.m_port.SetFocus();
    m_dialog.m_port.SetSel(0, -1);
    tvutil2::type_text(u"4a4!3");
    pump();
    EXPECT_EQ(text_of(IDC_PORT), u"443");
    m_dialog.GetDlgItem(IDC_USER)->SetFocus();
    EXPECT_EQ(m_dialog.m_port.m_nLeft, 1);
    EXPECT_EQ(m_dialog.m_heard.find("left"), std::string::npos);
    EXPECT_NE(m_dialog.m_heard.find("changed"), std::string::npos);
    RECT place{}, dialog{};
    m_dialog.m_port.GetWindowRect(&place);
    m_dialog.GetWindowRect(&dialog);
    pump();
    const auto picture = tvutil2::picture_of(m_dialog.m_hWnd);
    EXPECT_EQ(picture->row(place.bottom - dialog.top - 5)[place.right - dialog.left - 10],
              0xFFFFFF00U);
}

TEST_F(SessionDialogs, RunTheirMenuAndTheirBars) {
    show();
    auto& menu = m_dialog.m_menu;
    CString text;
    EXPECT_EQ(menu.GetMenuItemCount(), 3);
    EXPECT_EQ(menu.GetMenuString(0, text, MF_BYPOSITION), 5);
    EXPECT_EQ(text, u"&Open");
    EXPECT_EQ(menu.GetMenuState(ID_SESSION_DELETE, MF_BYCOMMAND) & MF_GRAYED, MF_GRAYED);
    tvutil2::type_text(u"o");
    tvutil2::type_key('O');
    menu.TrackPopupMenu(TPM_LEFTALIGN, 100, 100, &m_dialog);
    pump();
    EXPECT_EQ(m_dialog.m_heard, "open ");
    EXPECT_EQ(CMenu::FromHandle(menu)->GetSubMenu(0), nullptr);

    m_dialog.m_progress.SetPos(150);
    EXPECT_EQ(m_dialog.m_progress.OffsetPos(20), 150);
    EXPECT_EQ(m_dialog.m_progress.GetPos(), 170);
    m_dialog.SendMessage(WM_HSCROLL, SB_LINERIGHT,
                         reinterpret_cast<LPARAM>(m_dialog.m_volume.m_hWnd));
    EXPECT_EQ(m_dialog.m_volume.GetScrollPos(), 1);
    // A bar that has no object.
    CWnd bare;
    bare.Create(u"ScrollBar", u"", WS_VISIBLE, {300, 100, 370, 115}, &m_dialog, 77);
    HWND window = bare.UnsubclassWindow();
    SetScrollRange(window, SB_CTL, 0, 5, FALSE);
    m_dialog.SendMessage(WM_HSCROLL, SB_LINERIGHT, reinterpret_cast<LPARAM>(window));
    EXPECT_EQ(GetScrollPos(window, SB_CTL), 1);
    CWnd::DeleteTempMap();
    EXPECT_TRUE(IsWindow(window));
}

}  // namespace
