#include "tvutil2/framework/dialog.h"

#include "tvutil2/framework/controls.h"
#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/window/dialogs/dialogs.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/show.h"
#include "tvutil2/platform/window/simulated_input.h"
#include "tvutil2/platform/window/window.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <string>
#include <utility>

#include "tests/platform/window/dialogs/template_bytes.h"

namespace {

constexpr WORD kButton = 0x80;
constexpr WORD kStatic = 0x82;

tests::TemplateBytes settings() {
    tests::TemplateBytes bytes(u"Settings", WS_POPUP | WS_CAPTION | WS_SYSMENU, 150, 90);
    bytes.add(kStatic, 5, SS_NOPREFIX, u"Name", 7, 7, 100, 10)
        .add(kButton, 10, WS_TABSTOP | BS_AUTOCHECKBOX, u"&Often", 7, 20, 100, 10)
        .add(kButton, 20, WS_TABSTOP | WS_GROUP | BS_AUTORADIOBUTTON, u"&One", 7, 32, 50, 10)
        .add(kButton, 21, BS_AUTORADIOBUTTON, u"&Two", 7, 44, 50, 10)
        .add(kButton, 1, WS_TABSTOP | WS_GROUP | BS_DEFPUSHBUTTON, u"OK", 40, 70, 50, 14)
        .add(kButton, 2, WS_TABSTOP, u"Cancel", 95, 70, 50, 14);
    return bytes;
}

class Settings : public CDialog {
    DECLARE_DYNAMIC(Settings)
  public:
    CString name;
    int often = 0;
    int which = -1;
    CButton ok;
    bool is_refusing = false;
    std::string heard;
    std::function<void(Settings&)> person = [](Settings&) {};
    bool acts_at_once = false;

    BOOL OnInitDialog() override {
        heard += "init ";
        // A window that a handler makes isn't the dialog's object's.
        CWnd other;
        EXPECT_TRUE(other.CreateEx(0, nullptr, u"", WS_POPUP, 0, 0, 5, 5, nullptr, nullptr));
        CDialog::OnInitDialog();
        // What is typed goes to a window that is shown.
        if (acts_at_once) {
            person(*this);
        } else {
            SetTimer(1, 1);
        }
        return TRUE;
    }
    BOOL PreTranslateMessage(MSG* message) override {
        if (message->message == WM_KEYDOWN && message->wParam == VK_F1) {
            heard += "help ";
            return TRUE;
        }
        return CDialog::PreTranslateMessage(message);
    }

  protected:
    void DoDataExchange(CDataExchange* exchange) override {
        CDialog::DoDataExchange(exchange);
        DDX_Control(exchange, IDOK, ok);
        DDX_Text(exchange, 5, name);
        DDX_Check(exchange, 10, often);
        DDX_Radio(exchange, 20, which);
        if (exchange->m_bSaveAndValidate && std::exchange(is_refusing, false)) exchange->Fail();
    }
    int OnCreate(CREATESTRUCTW* given) {
        heard += "create ";
        return CDialog::OnCreate(given);
    }
    void OnOften() { heard += "often" + std::to_string(IsDlgButtonChecked(10)) + " "; }
    afx_msg void OnOneOf(UINT id) { heard += std::to_string(id) + " "; }
    HBRUSH OnCtlColor(CDC* context, CWnd* control, UINT kind) {
        EXPECT_NE(context, nullptr);
        EXPECT_NE(control, nullptr);
        EXPECT_NE(kind, CTLCOLOR_EDIT);
        m_colors |= 1 << kind;
        return CDialog::OnCtlColor(context, control, kind);
    }
    void OnTimer(UINT_PTR id) {
        KillTimer(id);
        person(*this);
    }
    void OnDestroy() {
        heard += "destroy";
        CDialog::OnDestroy();
    }
    DECLARE_MESSAGE_MAP()

  public:
    int m_colors = 0;
};

IMPLEMENT_DYNAMIC(Settings, CDialog)
BEGIN_MESSAGE_MAP(Settings, CDialog)
ON_WM_CREATE()
ON_WM_DESTROY()
ON_WM_CTLCOLOR()
ON_WM_TIMER()
ON_BN_CLICKED(10, &Settings::OnOften)
ON_CONTROL_RANGE(0, 20, 21, &Settings::OnOneOf)
END_MESSAGE_MAP()

class DialogObjects : public testing::Test {
  protected:
    DialogObjects() { setenv("TVUTIL_DISPLAY", "offscreen", 1); }
    INT_PTR run() {
        m_dialog.heard.clear();
        m_dialog.InitModalIndirect(m_bytes.bytes().data());
        return m_dialog.DoModal();
    }

    tests::TemplateBytes m_bytes = settings();
    Settings m_dialog;
};

TEST_F(DialogObjects, ExchangeTheirDataAndHearTheirControls) {
    m_dialog.name = u"first & last";
    m_dialog.often = 1;
    m_dialog.which = 1;
    m_dialog.person = [](Settings& dialog) {
        EXPECT_EQ(CWnd::FromHandlePermanent(dialog.ok.m_hWnd), &dialog.ok);
        EXPECT_EQ(dialog.GetCheckedRadioButton(20, 21), 21);
        EXPECT_EQ(dialog.IsDlgButtonChecked(10), 1U);
        dialog.SetDlgItemText(5, u"other");
        for (const int key : {VK_F1, VK_SPACE, VK_TAB, VK_UP, VK_RETURN}) tvutil2::type_key(key);
    };
    EXPECT_EQ(run(), IDOK);
    EXPECT_EQ(m_dialog.heard, "create init help often0 20 destroy");
    EXPECT_EQ(m_dialog.name, u"other");
    EXPECT_EQ(m_dialog.often, 0);
    EXPECT_EQ(m_dialog.which, 0);
    EXPECT_EQ(m_dialog.ok.m_hWnd, nullptr);
    EXPECT_EQ(m_dialog.m_hWnd, nullptr);
    EXPECT_EQ(m_dialog.m_colors, 1 << CTLCOLOR_DLG | 1 << CTLCOLOR_STATIC | 1 << CTLCOLOR_BTN);

    // The object can be run again. What can't be taken keeps it open; leaving it takes nothing.
    m_dialog.is_refusing = true;
    m_dialog.person = [](Settings& dialog) {
        dialog.SetDlgItemText(5, u"third");
        tvutil2::type_key(VK_RETURN);
        tvutil2::type_key(VK_ESCAPE);
    };
    EXPECT_EQ(run(), IDCANCEL);
    EXPECT_FALSE(m_dialog.is_refusing);
    // The exchange had got as far as this.
    EXPECT_EQ(m_dialog.name, u"third");
    m_dialog.acts_at_once = true;
    m_dialog.person = [](Settings& dialog) { dialog.EndDialog(77); };
    EXPECT_EQ(run(), 77);
    m_dialog.person = [](Settings& dialog) { dialog.DestroyWindow(); };
    EXPECT_EQ(run(), -1);
}

TEST_F(DialogObjects, LiveBesideOthersWithoutALoopOfTheirOwn) {
    ASSERT_TRUE(m_dialog.CreateIndirect(m_bytes.bytes().data()));
    EXPECT_FALSE(m_dialog.CreateIndirect(m_bytes.bytes().data()));
    m_dialog.ShowWindow(SW_SHOW);
    EXPECT_EQ(m_dialog.GetDlgItem(IDOK), &m_dialog.ok);
    RECT before{}, client{};
    m_dialog.ok.GetWindowRect(&before);
    m_dialog.ScreenToClient(&before);
    m_dialog.ok.MoveWindow(before.left + 3, before.top, 40, 20);
    m_dialog.ok.GetWindowRect(&client);
    m_dialog.ScreenToClient(&client);
    EXPECT_EQ(client.left, before.left + 3);
    EXPECT_EQ(client.right - client.left, 40);
    EXPECT_TRUE(m_dialog.DestroyWindow());
    EXPECT_EQ(m_dialog.m_hWnd, nullptr);
}

TEST(DialogObjectsWithoutDisplay, AreNotMade) {
    setenv("TVUTIL_DISPLAY", "none", 1);
    const auto bytes = settings();
    CDialog dialog;
    dialog.InitModalIndirect(bytes.bytes().data());
    EXPECT_EQ(dialog.DoModal(), -1);
    EXPECT_EQ(GetLastError(), ERROR_REQUIRES_INTERACTIVE_WINDOWSTATION);
    CDialog nowhere(4711);
    EXPECT_EQ(nowhere.DoModal(), -1);
}

}  // namespace
