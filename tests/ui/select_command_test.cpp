#include "tvutil2/ui/select_command.h"

#include "tvutil2/data/path.h"
#include "tvutil2/platform/base/locale.h"
#include "tvutil2/platform/draw/device_context.h"
#include "tvutil2/platform/draw/objects.h"
#include "tvutil2/platform/draw/theme.h"
#include "tvutil2/platform/window/find_windows.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/messages.h"
#include "tvutil2/platform/window/mouse.h"
#include "tvutil2/platform/window/paint.h"
#include "tvutil2/platform/window/properties.h"
#include "tvutil2/platform/window/show.h"
#include "tvutil2/platform/window/simulated_input.h"
#include "tvutil2/platform/window/timers.h"
#include "tvutil2/platform/window/window.h"
#include "tvutil2/ui/hyperlink.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <string>

#include "tests/platform/window/dialogs/template_bytes.h"

namespace {

constexpr int kCommands[] = {14024, 14025, 14026, 14033};

std::function<void(CWnd&)> g_person;

void act(HWND, UINT, UINT_PTR id, DWORD) {
    KillTimer(nullptr, id);
    auto* const dialog = CWnd::FromHandlePermanent(FindWindowW(u"#32770", nullptr));
    ASSERT_NE(dialog, nullptr);
    g_person(*dialog);
}

int ask(TvSelectCommandParam& param, std::function<void(CWnd&)> person) {
    g_person = std::move(person);
    SetTimer(nullptr, 0, 1, act);
    return TvSelectCommand(&param, nullptr);
}

class SelectCommand : public testing::Test {
  protected:
    SelectCommand() {
        setenv("TVUTIL_DISPLAY", "offscreen", 1);
        SetThreadLocale(0x0409);
    }
};

TEST_F(SelectCommand, ShowsTheCommandsUpToAGapAndGivesTheOnePressed) {
    const struct {
        const char16_t* labels[4];
        int shown, pressed;
    } cases[] = {{{u"a", u"b", u"c", u"d"}, 4, 4},
                 {{u"a", u"b", u"", u"d"}, 2, 2},
                 {{u"", u"", u"c", u""}, 1, 1},
                 {{u"a", u"b", u"c", u""}, 3, 0}};
    for (const auto& each : cases) {
        SCOPED_TRACE(each.shown);
        TvSelectCommandParam param;
        param.m_strTitle = u"A title";
        param.m_strCheck = each.shown == 4 ? u"" : u"Always";
        param.m_strCommand1 = each.labels[0];
        param.m_strCommand2 = each.labels[1];
        param.m_strCommand3 = each.labels[2];
        param.m_strCommand4 = each.labels[3];
        param.m_bCheck = TRUE;
        const auto look = [&](CWnd& dialog) {
            CString title;
            dialog.GetWindowText(title);
            EXPECT_EQ(title.View(), u"A title");
            for (int i = 0; i < 4; ++i) {
                EXPECT_EQ(dialog.GetDlgItem(kCommands[i])->IsWindowVisible() != 0, i < each.shown);
            }
            EXPECT_EQ(dialog.GetDlgItem(14028)->IsWindowVisible() != 0, each.shown != 4);
            EXPECT_EQ(dialog.IsDlgButtonChecked(14028), 1U);
            dialog.CheckDlgButton(14028, 0);
            const auto id = each.pressed != 0 ? kCommands[each.pressed - 1] : IDCANCEL;
            dialog.SendDlgItemMessage(id, BM_CLICK);
        };
        EXPECT_EQ(ask(param, look), each.pressed);
        EXPECT_EQ(param.m_nResult, each.pressed);
        EXPECT_EQ(param.m_bCheck != FALSE, each.pressed == 0);
    }
}

TEST_F(SelectCommand, ShortensTheFoldersPath) {
    std::u16string path = u"C:\\folder";
    while (path.size() < 130) path += u"\\another";
    TvSelectCommandParam param;
    g_person = [&](CWnd& dialog) {
        CString description;
        dialog.GetDlgItemText(14027, description);
        EXPECT_NE(description.View().find(TvTruncatePath(path.c_str(), 120).View()),
                  std::u16string_view::npos);
        EXPECT_EQ(description.View().find(path), std::u16string_view::npos);
        dialog.SendDlgItemMessage(kCommands[2], BM_CLICK);
    };
    SetTimer(nullptr, 0, 1, act);
    EXPECT_EQ(TvSelectCommandFolder(&param, path.c_str()), 3);
    EXPECT_TRUE(param.m_bCheck);
}

BOOL is_underlined(HWND window) {
    LOGFONTW font{};
    GetObjectW(reinterpret_cast<HFONT>(SendMessageW(window, WM_GETFONT, 0, 0)), sizeof font, &font);
    return font.lfUnderline != 0 ? TRUE : FALSE;
}

void pump() {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
}

TEST_F(SelectCommand, LinksAreUnderlinedUnderThePointerAndGoWithTheirWindow) {
    tests::TemplateBytes bytes(u"Links", WS_POPUP | WS_CAPTION, 120, 60);
    bytes.add(0x82, 5, SS_NOPREFIX, u"a link", 7, 7, 50, 10)
        .add(0x82, 6, 0, u"another", 7, 27, 50, 10);
    CDialog dialog;
    ASSERT_TRUE(dialog.CreateIndirect(bytes.bytes().data()));
    const auto before = GetWindowLongPtrW(dialog.m_hWnd, GWLP_WNDPROC);
    auto* const link = dialog.GetDlgItem(5)->m_hWnd;
    EXPECT_TRUE(ConvertStaticToHyperlink(link));
    const auto parent = GetWindowLongPtrW(dialog.m_hWnd, GWLP_WNDPROC);
    EXPECT_TRUE(ConvertStaticToHyperlink(dialog.m_hWnd, 6));
    EXPECT_EQ(GetWindowLongPtrW(dialog.m_hWnd, GWLP_WNDPROC), parent);
    EXPECT_EQ(reinterpret_cast<LONG_PTR>(GetPropW(dialog.m_hWnd, u"_Hyperlink_Original_Proc_")),
              before);
    dialog.ShowWindow(SW_SHOW);
    pump();
    auto* const screen = GetDC(link);
    const auto color_in = [&](tvutil2::ThemeMode mode) {
        tvutil2::set_theme_mode(mode);
        SendMessageW(dialog.m_hWnd, WM_CTLCOLORSTATIC, reinterpret_cast<WPARAM>(screen),
                     reinterpret_cast<LPARAM>(link));
        return GetTextColor(screen);
    };
    EXPECT_NE(color_in(tvutil2::ThemeMode::dark), 0xC00000U);
    EXPECT_EQ(color_in(tvutil2::ThemeMode::light), 0xC00000U);
    ReleaseDC(link, screen);

    RECT place{};
    GetWindowRect(link, &place);
    tvutil2::move_pointer({place.left + 2, place.top + 2});
    pump();
    EXPECT_TRUE(is_underlined(link));
    EXPECT_EQ(GetCapture(), link);
    EXPECT_EQ(GetCursor(), LoadCursorW(nullptr, IDC_HAND));
    tvutil2::move_pointer({place.right + 20, place.top + 2});
    pump();
    EXPECT_FALSE(is_underlined(link));
    EXPECT_EQ(GetCapture(), nullptr);
    dialog.DestroyWindow();
}

}  // namespace
