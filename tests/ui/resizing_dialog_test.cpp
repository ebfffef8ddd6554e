#include "tvutil2/ui/resizing_dialog.h"

#include "tvutil2/framework/app.h"
#include "tvutil2/platform/draw/rect.h"
#include "tvutil2/platform/window/controls/button.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/hit_test.h"
#include "tvutil2/platform/window/show.h"
#include "tvutil2/platform/window/system_metrics.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/platform/window/dialogs/template_bytes.h"

namespace {

constexpr UINT kTemplate = 14023;

tests::TemplateBytes four_controls() {
    tests::TemplateBytes bytes(u"Sized", WS_POPUP | WS_CAPTION | WS_THICKFRAME | WS_MINIMIZEBOX,
                               120, 80);
    for (DWORD id = 1; id <= 4; ++id) {
        bytes.add(0x80, id, WS_TABSTOP, u"button", static_cast<int>(id) * 25 - 20, 10, 20, 14);
    }
    return bytes;
}

class Sized : public CResizingDialog {
  public:
    Sized() : CResizingDialog(kTemplate) {
        SetControlInfo(1, CTRL_MOVE_X | CTRL_MOVE_Y);
        SetControlInfo(2, CTRL_SIZE_X | CTRL_MOVE_X | CTRL_SIZE_Y);
        SetControlInfo(3, 0);
        SetControlInfo(99, CTRL_MOVE_X);
        SetControlInfo(4, CTRL_MOVE_X);
        SetControlInfo(4, CTRL_MOVE_X);
    }
    RECT place_of(int id) const {
        RECT place{};
        GetDlgItem(id)->GetWindowRect(&place);
        ScreenToClient(&place);
        return place;
    }
    void grow(int dx, int dy) {
        RECT window{};
        GetWindowRect(&window);
        SetWindowPos(nullptr, 0, 0, window.right - window.left + dx,
                     window.bottom - window.top + dy, SWP_NOMOVE | SWP_NOZORDER);
    }
    SIZE size() const {
        RECT window{};
        GetWindowRect(&window);
        return {window.right - window.left, window.bottom - window.top};
    }
};

class ResizingDialogs : public testing::Test {
  protected:
    ResizingDialogs() {
        setenv("TVUTIL_DISPLAY", "offscreen", 1);
        if (AfxGetApp() == nullptr) {
            static CWinApp app(u"Resizing");
            app.m_pszProfileName = u"resizing.ini";
        }
    }
    void show(Sized& dialog) {
        ASSERT_TRUE(dialog.CreateIndirect(m_bytes.bytes().data()));
        dialog.ShowWindow(SW_SHOW);
    }
    static int stored(const char16_t* entry) {
        return static_cast<int>(AfxGetApp()->GetProfileInt(u"36c7", entry, 0));
    }
    static void store(int width, int height) {
        AfxGetApp()->WriteProfileInt(u"36c7", u"CX", width);
        AfxGetApp()->WriteProfileInt(u"36c7", u"CY", height);
    }

    tests::TemplateBytes m_bytes = four_controls();
};

RECT moved(RECT rect, int left, int top, int right, int bottom) {
    return {rect.left + left, rect.top + top, rect.right + right, rect.bottom + bottom};
}

void expect_same(const RECT& a, const RECT& b, int id) {
    EXPECT_TRUE(EqualRect(&a, &b))
        << id << ": " << a.left << "," << a.top << "," << a.right << "," << a.bottom;
}

TEST_F(ResizingDialogs, MoveAndStretchTheirControlsByWhatTheyGrow) {
    store(0, 700);
    Sized dialog;
    show(dialog);
    const RECT before[] = {
        {}, dialog.place_of(1), dialog.place_of(2), dialog.place_of(3), dialog.place_of(4)};
    const auto expect_grown = [&](int dx, int dy) {
        SCOPED_TRACE(dx);
        expect_same(dialog.place_of(1), moved(before[1], dx, dy, dx, dy), 1);
        expect_same(dialog.place_of(2), moved(before[2], 0, 0, dx, dy), 2);
        expect_same(dialog.place_of(3), before[3], 3);
        // What is entered twice moves twice.
        expect_same(dialog.place_of(4), moved(before[4], 2 * dx, 0, 2 * dx, 0), 4);
    };
    const auto least = dialog.size();
    expect_grown(0, 0);
    dialog.grow(31, 17);
    expect_grown(31, 17);
    dialog.ShowWindow(SW_MINIMIZE);
    dialog.ShowWindow(SW_RESTORE);
    expect_grown(31, 17);
    dialog.grow(-11, -17);
    expect_grown(20, 0);
    // The person can't make it smaller than it was made.
    MINMAXINFO limits{};
    dialog.SendMessage(WM_GETMINMAXINFO, 0, reinterpret_cast<LPARAM>(&limits));
    EXPECT_EQ(limits.ptMinTrackSize.x, least.cx);
    EXPECT_EQ(limits.ptMinTrackSize.y, least.cy);
    // Another scale changes nothing.
    RECT wanted{0, 0, 900, 900};
    EXPECT_EQ(
        dialog.SendMessage(WM_DPICHANGED, MAKEWPARAM(192, 192), reinterpret_cast<LPARAM>(&wanted)),
        0);
    expect_grown(20, 0);
    dialog.DestroyWindow();
    EXPECT_EQ(stored(u"CX"), least.cx + 20);
    EXPECT_EQ(stored(u"CY"), least.cy);
}

TEST_F(ResizingDialogs, RememberTheirSizeIfTheyAreToAndWereSized) {
    Sized dialog;
    store(0, 0);
    show(dialog);
    const auto made = dialog.size();
    dialog.DestroyWindow();
    EXPECT_EQ(stored(u"CX"), 0);
    const struct {
        bool remembers;
        int width, height;
        SIZE shown;
    } cases[] = {{true, 700, 0, made},
                 {false, 700, 600, made},
                 {true, 700, 600, {700, 600}},
                 {true, -5, 600, made}};
    for (const auto& each : cases) {
        SCOPED_TRACE(&each - cases);
        store(each.width, each.height);
        dialog.SetRememberSize(each.remembers ? TRUE : FALSE);
        show(dialog);
        EXPECT_EQ(dialog.size().cx, each.shown.cx);
        if (each.width > 0) {
            EXPECT_EQ(dialog.size().cy, each.shown.cy);
        }
        dialog.grow(40, 0);
        const auto last = dialog.size();
        dialog.DestroyWindow();
        EXPECT_EQ(stored(u"CX"), each.remembers ? last.cx : each.width);
    }
    CString section;
    dialog.GetDialogProfileEntry(section);
    EXPECT_EQ(section.View(), u"36c7");
}

TEST_F(ResizingDialogs, AreSizedAtTheirLowerRightCorner) {
    Sized dialog;
    store(0, 0);
    show(dialog);
    RECT window{}, client{};
    dialog.GetWindowRect(&window);
    dialog.GetClientRect(&client);
    dialog.ClientToScreen(&client);
    const auto hit = [&](int x, int y) {
        return dialog.SendMessage(WM_NCHITTEST, 0,
                                  MAKELONG(static_cast<WORD>(x), static_cast<WORD>(y)));
    };
    const auto side = GetSystemMetrics(SM_CXHSCROLL);
    EXPECT_EQ(hit(client.right - 1, client.bottom - 1), HTBOTTOMRIGHT);
    EXPECT_EQ(hit(window.right - side, window.bottom - side), HTBOTTOMRIGHT);
    EXPECT_EQ(hit(window.right - side - 1, client.bottom - 1), HTCLIENT);
    EXPECT_EQ(hit(client.left + 5, client.top + 50), HTCLIENT);
    dialog.DestroyWindow();
}

}  // namespace
