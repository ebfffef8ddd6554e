#include "tvutil2/platform/window/menus/menu_bar.h"

#include "tvutil2/platform/window/hit_test.h"
#include "tvutil2/platform/window/system_commands.h"
#include "tvutil2/platform/window/timers.h"

#include "tests/platform/window/controls/control_fixture.h"

namespace {

constexpr int kBarHeight = 26;

HMENU make_bar() {
    const auto id = [](HMENU menu) { return reinterpret_cast<UINT_PTR>(menu); };
    auto* const more = CreatePopupMenu();
    AppendMenuW(more, MF_STRING, 31, u"&One");
    auto* const file = CreatePopupMenu();
    AppendMenuW(file, MF_STRING, 11, u"&Open");
    AppendMenuW(file, MF_STRING, 12, u"&Close");
    auto* const view = CreatePopupMenu();
    AppendMenuW(view, MF_STRING, 21, u"&Wide");
    AppendMenuW(view, MF_POPUP, id(more), u"&More");
    auto* const bar = CreateMenu();
    AppendMenuW(bar, MF_POPUP, id(file), u"&File");
    AppendMenuW(bar, MF_POPUP, id(view), u"&View");
    AppendMenuW(bar, MF_STRING, 40, u"&Help");
    return bar;
}

class MenuBars : public tests::ControlTest {
  protected:
    MenuBars() {
        SetMenu(m_parent, make_bar());
        SetFocus(m_parent);
        pump();
        m_answer = [this](UINT message, WPARAM wparam, LPARAM) -> LRESULT {
            if (message == WM_ENTERMENULOOP) m_heard += "enter ";
            if (message == WM_INITMENUPOPUP) m_heard += "popup ";
            if (message == WM_EXITMENULOOP) m_heard += "exit ";
            if (message == WM_COMMAND) m_heard += "chose " + std::to_string(wparam);
            return 0;
        };
    }

    std::string heard() {
        pump();
        return std::exchange(m_heard, {});
    }
    POINT point_of(std::size_t item) {
        const auto place = tvutil2::menu_bar_places(m_parent).at(item);
        return {place.left + 5, place.top + 5};
    }

    std::string m_heard;
};

TEST_F(MenuBars, StandAboveTheClientArea) {
    RECT client{};
    GetClientRect(m_parent, &client);
    EXPECT_EQ(client.bottom, 400 - kBarHeight);
    const auto hit = [&](POINT point) {
        return SendMessageW(m_parent, WM_NCHITTEST, 0,
                            MAKELPARAM(static_cast<WORD>(point.x), static_cast<WORD>(point.y)));
    };
    EXPECT_EQ(hit(point_of(0)), HTMENU);
    EXPECT_EQ(hit({60, 50 + kBarHeight}), HTCLIENT);
    // Two rows in a narrow window.
    MoveWindow(m_parent, 50, 50, 100, 400, TRUE);
    GetClientRect(m_parent, &client);
    EXPECT_EQ(client.bottom, 400 - 2 * kBarHeight);
    auto* const menu = GetMenu(m_parent);
    EXPECT_TRUE(SetMenu(m_parent, nullptr));
    GetClientRect(m_parent, &client);
    EXPECT_EQ(client.bottom, 400);
    EXPECT_TRUE(IsMenu(menu));
    SetMenu(m_parent, menu);
    DestroyWindow(m_parent);
    EXPECT_FALSE(IsMenu(menu));
    RECT adjusted{0, 0, 100, 100};
    AdjustWindowRectEx(&adjusted, WS_POPUP, TRUE, 0);
    EXPECT_EQ(adjusted.top, -kBarHeight);
}

TEST_F(MenuBars, FollowTheKeys) {
    const struct {
        std::vector<int> keys;  // negative: held with Alt
        const char* heard;
    } cases[] = {
        {{VK_MENU, VK_ESCAPE}, "enter exit "},
        {{VK_F10, VK_DOWN, VK_RETURN}, "enter popup exit chose 11"},
        {{VK_MENU, VK_RIGHT, VK_DOWN, VK_RETURN}, "enter popup exit chose 21"},
        {{-'F', VK_DOWN, VK_RETURN}, "enter popup exit chose 12"},
        {{-'F', VK_RIGHT, VK_DOWN, VK_RIGHT, VK_RETURN}, "enter popup popup popup exit chose 31"},
        {{-'V', VK_LEFT, VK_RETURN}, "enter popup popup exit chose 11"},
        {{-'F', VK_LEFT, VK_RETURN}, "enter popup exit chose 40"},
        {{-'H'}, "enter exit chose 40"},
        {{-'F', VK_ESCAPE, VK_ESCAPE}, "enter popup exit "},
        {{-'Q'}, "enter exit "},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(&each - cases);
        for (const auto key : each.keys) {
            if (key < 0) tvutil2::press_key(VK_MENU);
            tvutil2::type_key(key < 0 ? -key : key);
            if (key < 0) tvutil2::release_key(VK_MENU);
        }
        EXPECT_EQ(heard(), each.heard);
        EXPECT_EQ(GetCapture(), nullptr);
    }
}

TEST_F(MenuBars, FollowThePointer) {
    tvutil2::click(point_of(0));
    tvutil2::move_pointer(point_of(1));
    auto below = point_of(1);
    below.y += kBarHeight;
    tvutil2::click(below);
    EXPECT_EQ(heard(), "enter popup popup exit chose 21");
    tvutil2::click(point_of(2));
    EXPECT_EQ(heard(), "enter exit chose 40");
    // Twice on the same item, and away.
    tvutil2::click(point_of(0));
    tvutil2::click(point_of(0));
    EXPECT_EQ(heard(), "enter popup exit ");
    tvutil2::click(point_of(0));
    tvutil2::click({400, 300});
    EXPECT_EQ(heard(), "enter popup exit ");
}

TEST_F(MenuBars, ShowWhatThePointerIsOn) {
    const auto ink = [&](std::size_t item) {
        pump();
        const auto point = point_of(item);
        return tvutil2::picture_of(m_parent)->row(static_cast<int>(point.y) - 50)[point.x - 50];
    };
    SetFocus(m_parent);
    EnableMenuItem(GetMenu(m_parent), 2, MF_BYPOSITION | MF_GRAYED);
    tvutil2::move_pointer({300, 300});
    const auto plain = ink(0);
    tvutil2::move_pointer(point_of(0));
    EXPECT_NE(ink(0), plain);
    tvutil2::move_pointer(point_of(1));
    EXPECT_EQ(ink(0), plain);
    EXPECT_NE(ink(1), plain);
    tvutil2::move_pointer({2000, 2000});  // off the window, which is posted
    pump();
    EXPECT_EQ(ink(1), plain);
    tvutil2::move_pointer(point_of(1));
    EXPECT_NE(ink(1), plain);
    tvutil2::move_pointer(point_of(2));  // which can't be chosen
    EXPECT_EQ(ink(1), plain);
    EXPECT_EQ(ink(2), plain);
}

TEST_F(MenuBars, EndWithTheirWindow) {
    SetTimer(m_parent, 1, 10, [](HWND window, UINT, UINT_PTR id, DWORD) {
        KillTimer(window, id);
        DestroyWindow(window);
    });
    SendMessageW(m_parent, WM_SYSCOMMAND, SC_KEYMENU, 'f');
    EXPECT_FALSE(IsWindow(m_parent));
}

TEST_F(MenuBars, AreNotForChildren) {
    auto* const child = add(u"Static", 0);
    EXPECT_EQ(GetMenu(child), nullptr);
    EXPECT_FALSE(SetMenu(child, GetMenu(m_parent)));
    EXPECT_FALSE(SetMenu(m_parent, reinterpret_cast<HMENU>(std::uintptr_t{5})));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_MENU_HANDLE);
}

}  // namespace
