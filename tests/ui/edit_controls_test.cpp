#include "tvutil2/ui/edit_controls.h"

#include "tvutil2/framework/dialog.h"
#include "tvutil2/platform/base/locale.h"
#include "tvutil2/platform/draw/surface.h"
#include "tvutil2/platform/window/controls/owner_draw.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/paint.h"
#include "tvutil2/platform/window/show.h"
#include "tvutil2/platform/window/simulated_input.h"
#include "tvutil2/ui/dpi.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "tests/platform/window/common_dialogs/person.h"
#include "tests/platform/window/dialogs/template_bytes.h"
#include "tests/support/profile.h"

namespace {

constexpr UINT kEdit = 5;
constexpr UINT kOther = 6;
constexpr COLORREF kHint = 0xACACAC;

// Two edits; the second one has the focus at first.
tests::TemplateBytes two_edits() {
    tests::TemplateBytes bytes(u"Edits", WS_POPUP | WS_CAPTION, 140, 60);
    bytes.add(0x81, kOther, WS_TABSTOP | WS_BORDER | ES_AUTOHSCROLL, u"", 7, 7, 120, 14)
        .add(0x81, kEdit, WS_TABSTOP | WS_BORDER | ES_AUTOHSCROLL, u"", 7, 27, 120, 14);
    return bytes;
}

class Host : public CDialog {
  public:
    int cancelled = 0;
    std::vector<std::pair<WPARAM, LPARAM>> clicks;
    COLORREF background = RGB(1, 2, 3);
    bool has_colors = false;

  protected:
    void OnCancel() override { ++cancelled; }
    BOOL OnCommand(WPARAM wparam, LPARAM lparam) override {
        if (HIWORD(wparam) == TV_BROWSE_CLICKED) clicks.emplace_back(wparam, lparam);
        return CDialog::OnCommand(wparam, lparam);
    }
    HBRUSH OnCtlColor(CDC* context, CWnd* control, UINT kind) {
        auto* const brush = CDialog::OnCtlColor(context, control, kind);
        if (has_colors && kind == CTLCOLOR_EDIT) context->SetBkColor(background);
        return brush;
    }
    DECLARE_MESSAGE_MAP()
};
BEGIN_MESSAGE_MAP(Host, CDialog)
ON_WM_CTLCOLOR()
END_MESSAGE_MAP()

class EditControls : public testing::Test {
  protected:
    EditControls() {
        setenv("TVUTIL_DISPLAY", "offscreen", 1);
        SetThreadLocale(0x0409);
        ResetAppDPI(96);
    }
    void show(CWnd& edit) {
        ASSERT_TRUE(m_host.CreateIndirect(m_bytes.bytes().data()));
        ASSERT_TRUE(edit.SubclassDlgItem(kEdit, &m_host));
        m_host.ShowWindow(SW_SHOW);
        pump();
    }
    void pump() {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            if (CWnd::WalkPreTranslateTree(m_host.m_hWnd, &message)) continue;
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
    }
    void press(int key, std::u16string_view writes = {}, bool with_control = false) {
        if (with_control) tvutil2::press_key(VK_CONTROL);
        tvutil2::type_key(key, writes);
        if (with_control) tvutil2::release_key(VK_CONTROL);
        pump();
    }
    void focus(CWnd& edit) {
        edit.SetFocus();
        pump();
    }
    void leave() { focus(*m_host.GetDlgItem(kOther)); }
    static std::u16string text_of(const CWnd& edit) {
        CString text;
        edit.GetWindowText(text);
        return std::u16string(text.View());
    }
    // In more than a few pixels of the control: edges of letters may have any shade.
    bool shows(const CWnd& edit, COLORREF color) {
        pump();
        const auto picture = tvutil2::picture_of(m_host.m_hWnd);
        RECT place{}, dialog{};
        edit.GetWindowRect(&place);
        m_host.GetWindowRect(&dialog);
        const auto wanted =
            0xFF000000U | GetRValue(color) << 16U | GetGValue(color) << 8U | GetBValue(color);
        int count = 0;
        for (auto y = place.top - dialog.top; y < place.bottom - dialog.top; ++y) {
            const auto* const row = picture->row(y);
            for (auto x = place.left - dialog.left; x < place.right - dialog.left; ++x) {
                if (row[x] == wanted) ++count;
            }
        }
        return count > 25;
    }

    tests::TemplateBytes m_bytes = two_edits();
    Host m_host;
};

TEST_F(EditControls, SelectAllWithControlA) {
    CTvEdit edit;
    show(edit);
    EXPECT_TRUE(edit.IsKindOf(RUNTIME_CLASS(CEdit)));
    edit.SetWindowText(u"some text");
    focus(edit);
    edit.SetSel(2, 2);
    press('A', u"a");
    EXPECT_EQ(text_of(edit), u"soame text");
    press('A', {}, true);
    int from = 0, to = 0;
    edit.GetSel(from, to);
    EXPECT_EQ(from, 0);
    EXPECT_EQ(to, 10);
    MSG elsewhere{m_host.GetDlgItem(kOther)->m_hWnd, WM_KEYDOWN, 'A', 0, 0, {}};
    tvutil2::press_key(VK_CONTROL);
    pump();
    EXPECT_FALSE(edit.PreTranslateMessage(&elsewhere));
    tvutil2::release_key(VK_CONTROL);
}

TEST_F(EditControls, OfNamesDropWhatNamesCannotHave) {
    CFNameEdit edit;
    show(edit);
    focus(edit);
    for (char16_t unit = u' '; unit < 127; ++unit) tvutil2::type_text({&unit, 1});
    tvutil2::type_text(u"ж");
    pump();
    std::u16string passed;
    for (char16_t unit = u' '; unit < 127; ++unit) {
        if (std::u16string_view(u"\"*/:<>?\\|").find(unit) == std::u16string_view::npos) {
            passed += unit;
        }
    }
    EXPECT_EQ(text_of(edit), passed + u"ж");
    edit.SetWindowText(u"a:b");
    EXPECT_EQ(text_of(edit), u"a:b");
    MSG key{edit.m_hWnd, WM_KEYDOWN, '*', 0, 0, {}};
    EXPECT_FALSE(edit.PreTranslateMessage(&key));
}

TEST_F(EditControls, ShowTheirHintWhileTheyAreEmptyAndLeft) {
    CHintEdit edit(CString(u"MMMMMM"));
    show(edit);
    // So large that the colour itself is in the letters.
    LOGFONTW record{};
    record.lfHeight = -24;
    CFont font;
    font.CreateFontIndirect(&record);
    edit.SetFont(&font, TRUE);
    EXPECT_TRUE(shows(edit, kHint));
    focus(edit);
    EXPECT_FALSE(shows(edit, kHint));
    leave();
    EXPECT_TRUE(shows(edit, kHint));
    focus(edit);
    tvutil2::type_text(u"MMM");
    pump();
    leave();
    EXPECT_FALSE(shows(edit, kHint));
    // What code sets goes the same way once the control had the focus, and not before.
    focus(edit);
    edit.SetWindowText(u"");
    leave();
    EXPECT_EQ(edit.SendMessage(WM_SETTEXT, 0, reinterpret_cast<LPARAM>(u"MM")), 1);
    EXPECT_TRUE(shows(edit, kHint));
    edit.SetWindowText(u"");
    edit.SetHintText(u"");
    edit.Invalidate();
    EXPECT_FALSE(shows(edit, kHint));
}

TEST_F(EditControls, AskTheirParentForTheHintsBackground) {
    CHintEdit edit(CString(u"hint"));
    m_host.has_colors = true;
    show(edit);
    EXPECT_TRUE(shows(edit, m_host.background));
    LOGFONTW record{};
    record.lfHeight = -30;
    {
        // It may go away.
        CFont font;
        font.CreateFontIndirect(&record);
        edit.SetFont(&font, TRUE);
        edit.SetFont(&font, TRUE);
    }
    LOGFONTW used{};
    GetObjectW(reinterpret_cast<HFONT>(edit.SendMessage(WM_GETFONT)), sizeof used, &used);
    EXPECT_EQ(used.lfHeight, -30);
    EXPECT_TRUE(shows(edit, kHint));
}

TEST_F(EditControls, LayOutTheirButtonAtEveryScale) {
    const struct { int dpi, width; } cases[] = {{96, 16}, {144, 24}, {192, 32}};
    for (const auto& each : cases) {
        ResetAppDPI(static_cast<unsigned>(each.dpi));
        CBrowseEdit edit;
        show(edit);
        RECT client{}, button{}, text{};
        edit.SetWindowPos(nullptr, 0, 0, 150, 40, SWP_NOMOVE | SWP_NOZORDER);
        edit.GetClientRect(&client);
        edit.GetDlgItem(100)->GetWindowRect(&button);
        edit.ScreenToClient(&button);
        edit.GetRect(&text);
        EXPECT_EQ(button.left, client.right - each.width);
        EXPECT_EQ(button.right, client.right);
        EXPECT_EQ(button.top, 0);
        EXPECT_EQ(button.bottom, client.bottom);
        EXPECT_EQ(text.left, 0);
        EXPECT_EQ(text.right, button.left - 2);
        m_host.DestroyWindow();
    }
}

TEST_F(EditControls, TellTheirParentOfTheirButton) {
    CBrowseEdit edit;
    show(edit);
    RECT button{};
    edit.GetDlgItem(100)->GetWindowRect(&button);
    tvutil2::click({button.left + 3, button.top + 3});
    pump();
    ASSERT_EQ(m_host.clicks.size(), 1U);
    EXPECT_EQ(m_host.clicks[0].first, MAKEWPARAM(kEdit, 0x0720));
    EXPECT_EQ(m_host.clicks[0].second, reinterpret_cast<LPARAM>(edit.m_hWnd));
    // F4 may be a product's own.
    MSG key{edit.m_hWnd, WM_KEYDOWN, VK_F4, 0, 0, {}};
    EXPECT_FALSE(edit.PreTranslateMessage(&key));
    EXPECT_EQ(m_host.clicks.size(), 1U);
    // Esc is the dialog's, and posted to it as well.
    focus(edit);
    MSG escape{edit.m_hWnd, WM_KEYDOWN, VK_ESCAPE, 0, 0, {}};
    EXPECT_FALSE(edit.PreTranslateMessage(&escape));
    MSG posted;
    ASSERT_TRUE(PeekMessageW(&posted, m_host.m_hWnd, WM_KEYDOWN, WM_KEYDOWN, PM_REMOVE));
    EXPECT_EQ(posted.wParam, static_cast<WPARAM>(VK_ESCAPE));
}

TEST_F(EditControls, ChooseAFolderAndTellTheirParentInAnyCase) {
    const auto folder = tests::new_folder();
    std::filesystem::create_directory(folder + "/inside");
    const auto path = tests::platform_path(folder);
    CBrowseFolderEdit edit;
    edit.m_strTitle = u"Which one?";
    show(edit);
    edit.SetWindowText(path.c_str());
    const auto name = path.substr(path.rfind(u'\\') + 1);
    const struct {
        int key;
        std::u16string text;
    } cases[] = {{VK_ESCAPE, path}, {VK_RETURN, path + u"\\inside"}};
    for (const auto& each : cases) {
        m_host.clicks.clear();
        const tests::Person person({tests::is_selected(name), tests::press(VK_RIGHT),
                                    tests::holds({u"inside"}), tests::press(VK_RIGHT),
                                    tests::is_selected(u"inside"), tests::press(each.key)});
        edit.GetDlgItem(100)->SendMessage(BM_CLICK);
        EXPECT_TRUE(person.has_done_all());
        EXPECT_EQ(text_of(edit), each.text);
        EXPECT_EQ(m_host.clicks.size(), 1U);
    }
}

TEST_F(EditControls, ChooseAFileAndTellNobody) {
    const auto folder = tests::new_folder();
    tests::write_file(folder + "/there.txt", "x");
    const auto path = tests::platform_path(folder);
    constexpr int kName = 0x047C;
    const auto say = [](const char16_t* name) -> tests::Step {
        return [name](HWND dialog) {
            if (GetDlgItem(dialog, kName) == nullptr) return false;
            SetDlgItemTextW(dialog, kName, name);
            SendMessageW(dialog, WM_COMMAND, IDOK, 0);
            return true;
        };
    };
    // What the edit says comes first, in its own folder.
    const auto is_offered = [](HWND dialog) {
        char16_t text[100] = {};
        GetDlgItemTextW(dialog, kName, text, 100);
        return std::u16string_view(text) == u"before.txt";
    };
    const tests::Step refuse = [](HWND dialog) {
        if (GetDlgItem(dialog, kName) != nullptr) return false;
        SendMessageW(dialog, WM_COMMAND, IDOK, 0);
        return true;
    };
    const auto before = path + u"\\before.txt";
    const struct {
        BOOL opens;
        std::vector<tests::Step> steps;
        std::u16string text;
    } cases[] = {{TRUE, {is_offered, say(u"there")}, path + u"\\there.txt"},
                 {FALSE, {is_offered, say(u"new")}, path + u"\\new.txt"},
                 {TRUE, {say(u"new"), refuse, tests::press(VK_ESCAPE)}, before},
                 {FALSE, {say(u"none\\new"), refuse, tests::press(VK_ESCAPE)}, before}};
    for (const auto& each : cases) {
        SCOPED_TRACE(&each - cases);
        CBrowseFileEdit edit(u"txt", 0, each.opens, nullptr);
        show(edit);
        edit.SetWindowText(before.c_str());
        const tests::Person person(each.steps);
        edit.GetDlgItem(100)->SendMessage(BM_CLICK);
        EXPECT_TRUE(person.has_done_all());
        EXPECT_EQ(text_of(edit), each.text);
        EXPECT_TRUE(m_host.clicks.empty());
        m_host.DestroyWindow();
    }
}

}  // namespace
