// What becomes of windows on the desktop while they are shown.
#include "tvutil2/platform/base/clock.h"
#include "tvutil2/platform/base/global_memory.h"
#include "tvutil2/platform/display/monitors.h"
#include "tvutil2/platform/draw/surface.h"
#include "tvutil2/platform/draw/theme.h"
#include "tvutil2/platform/picture/icons.h"
#include "tvutil2/platform/window/clipboard.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/show.h"

#include <X11/keysym.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <string>

#include "tests/platform/display/await.h"
#include "tests/platform/display/private_desktop.h"
#include "tests/platform/window/trace.h"
#include "tests/support/session_bus.h"

namespace {

using tests::await;
using tests::PrivateDesktop;
using tests::traced_window;
using tvutil2::Surface;

RECT place_of(HWND window) {
    RECT place{};
    GetWindowRect(window, &place);
    return place;
}

bool is_at(HWND window, const RECT& place) {
    const auto now = place_of(window);
    return now.left == place.left && now.top == place.top && now.right == place.right &&
           now.bottom == place.bottom;
}

void pass(DWORD milliseconds) {
    const auto until = GetTickCount() + milliseconds;
    await([&] { return GetTickCount() > until; });
}

HICON icon_of(int side, std::uint32_t color) {
    return tvutil2::make_icon(Surface::create(side, side, 96, color), {side, side});
}

// Sizes and first pixels of the icons that the desktop has of a window.
std::string icons_of(const PrivateDesktop::Client& client) {
    std::string told;
    const auto& icon = client.icon;
    for (std::size_t at = 0; at + 2 < icon.size(); at += 2 + icon[at] * icon[at + 1]) {
        char line[64];
        std::snprintf(line, sizeof line, "%lux%lu %08lX ", icon[at], icon[at + 1],
                      icon[at + 2] & 0xFFFFFFFF);
        told += line;
    }
    return told;
}

class DesktopWindows : public testing::Test {
  protected:
    DesktopWindows() : m_desktop(PrivateDesktop::start()) { m_trace = {}; }
    ~DesktopWindows() override { m_trace = {}; }

    bool has_heard(const std::string& line) const {
        const auto& lines = m_trace.lines;
        return std::find(lines.begin(), lines.end(), line) != lines.end();
    }
    // A window that the desktop has, too.
    HWND shown_window(const RECT& place, HWND owner = nullptr, DWORD style = WS_OVERLAPPEDWINDOW) {
        const auto before = m_desktop.clients().size();
        auto* const window = traced_window(style, owner, u"Shown");
        MoveWindow(window, place.left, place.top, place.right - place.left,
                   place.bottom - place.top, FALSE);
        ShowWindow(window, SW_SHOW);
        EXPECT_TRUE(
            await([&] { return GetFocus() == window && m_desktop.clients().size() > before; }));
        return window;
    }
    void click(HWND window) {
        const auto place = place_of(window);
        m_desktop.move_pointer({(place.left + place.right) / 2, (place.top + place.bottom) / 2});
        m_desktop.press_button(1);
        m_desktop.release_button(1);
    }

    PrivateDesktop& m_desktop;
    tests::Trace& m_trace = tests::Trace::current();
};

TEST_F(DesktopWindows, HaveTheIconsOfTheirClassesAndTheirOwn) {
    auto* const red = icon_of(32, 0xFFFF0000);
    auto* const green = icon_of(16, 0x80008000);
    WNDCLASSEXW description{};
    description.cbSize = sizeof description;
    description.lpfnWndProc = DefWindowProcW;
    description.hIcon = red;
    description.lpszClassName = u"Tests::WithIcon";
    ASSERT_NE(RegisterClassExW(&description), 0);
    auto* const window =
        CreateWindowExW(0, u"Tests::WithIcon", u"Icons", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 100, 100,
                        300, 200, nullptr, nullptr, nullptr, nullptr);
    const auto becomes = [&](const std::string& icons) {
        return await([&] {
            const auto clients = m_desktop.clients();
            return !clients.empty() && icons_of(clients[0]) == icons;
        });
    };
    EXPECT_TRUE(becomes("32x32 FFFF0000 "));
    const auto ask = [&](WPARAM which) {
        return reinterpret_cast<HICON>(SendMessageW(window, WM_GETICON, which, 0));
    };
    const auto set = [&](WPARAM which, HICON icon) {
        return reinterpret_cast<HICON>(
            SendMessageW(window, WM_SETICON, which, reinterpret_cast<LPARAM>(icon)));
    };
    EXPECT_EQ(ask(ICON_BIG), nullptr);
    EXPECT_EQ(ask(ICON_SMALL2), red);
    EXPECT_EQ(set(ICON_SMALL, green), nullptr);
    // The desktop has colours that aren't multiplied by alpha.
    EXPECT_TRUE(becomes("16x16 8000FF00 32x32 FFFF0000 "));
    EXPECT_EQ(ask(ICON_SMALL), green);
    EXPECT_EQ(ask(ICON_SMALL2), green);
    EXPECT_EQ(set(ICON_BIG, green), nullptr);
    EXPECT_TRUE(becomes("16x16 8000FF00 "));
    // Nothing is shown of one that has been destroyed, and nothing breaks.
    DestroyIcon(green);
    SetWindowTextW(window, u"Without");
    EXPECT_EQ(set(ICON_BIG, nullptr), green);
    EXPECT_EQ(set(ICON_SMALL, nullptr), green);
    EXPECT_EQ(set(7, red), nullptr);
    EXPECT_TRUE(becomes("32x32 FFFF0000 "));
    DestroyWindow(window);
    DestroyIcon(red);
}

TEST_F(DesktopWindows, FollowTheDesktopsScaleAndColours) {
    auto* const window = shown_window({100, 100, 300, 250});
    UINT dpi = 0;
    int looks = 0;
    m_trace.handler = [&](HWND to, UINT message, WPARAM wparam, LPARAM lparam) -> LRESULT {
        if (message == WM_DPICHANGED) {
            dpi = LOWORD(wparam);
            const auto& wanted = *reinterpret_cast<const RECT*>(lparam);
            MoveWindow(to, wanted.left, wanted.top, wanted.right - wanted.left,
                       wanted.bottom - wanted.top, TRUE);
        }
        looks += message == WM_THEMECHANGED ? 1 : 0;
        return DefWindowProcW(to, message, wparam, lparam);
    };
    const auto before = place_of(window);
    EXPECT_EQ(tvutil2::theme().mode, tvutil2::ThemeMode::light);
    m_desktop.set_settings(144, "Adwaita-dark");
    EXPECT_TRUE(await([&] { return dpi == 144 && looks > 0; }));
    EXPECT_EQ(GetDpiForWindow(window), 144U);
    EXPECT_EQ(tvutil2::monitors()[0].dpi, 144U);
    EXPECT_EQ(tvutil2::theme().mode, tvutil2::ThemeMode::dark);
    const auto after = place_of(window);
    EXPECT_EQ(after.right - after.left, (before.right - before.left) * 3 / 2);
    looks = 0;
    m_desktop.set_settings(96, "Adwaita");
    EXPECT_TRUE(await([&] { return dpi == 96 && looks > 0; }));
    EXPECT_EQ(tvutil2::theme().mode, tvutil2::ThemeMode::light);
    DestroyWindow(window);
}

// What the desktop says meanwhile is about what was before.
TEST_F(DesktopWindows, AreWhereTheProgramPutsThemHoweverBusyTheManagerIs) {
    auto* const window = shown_window({100, 100, 400, 300});
    for (LONG i = 0; i < 2; ++i) {
        SCOPED_TRACE(i);
        ShowWindow(window, SW_MAXIMIZE);
        ASSERT_TRUE(await([&] { return m_desktop.clients()[0].place.right > 1200; }));
        m_desktop.hold_manager(true);
        ShowWindow(window, SW_RESTORE);
        const RECT wanted{50 + 40 * i, 60, 350 + 50 * i, 260};
        MoveWindow(window, wanted.left, wanted.top, wanted.right - wanted.left,
                   wanted.bottom - wanted.top, TRUE);
        pass(900);
        EXPECT_TRUE(is_at(window, wanted));
        m_desktop.hold_manager(false);
        const auto is_settled = [&] {
            RECT client{};
            GetClientRect(window, &client);
            const auto there = m_desktop.clients()[0].place;
            return is_at(window, wanted) && there.right - there.left == client.right;
        };
        EXPECT_TRUE(await(is_settled));
        // Nobody comes back to it later either.
        pass(700);
        EXPECT_TRUE(is_settled());
        EXPECT_FALSE(IsZoomed(window));
    }
    DestroyWindow(window);
}

TEST_F(DesktopWindows, TakeNoInputWhileADialogIsInFrontOfThem) {
    auto* const other = shown_window({700, 100, 1000, 300});
    auto* const owner = shown_window({100, 100, 500, 500});
    EnableWindow(owner, FALSE);
    auto* const dialog = shown_window({550, 350, 800, 600}, owner, WS_POPUP | WS_CAPTION);
    m_trace.lines.clear();
    click(owner);
    const auto b_down = "B LBUTTONDOWN";
    const auto c_down = "C LBUTTONDOWN";
    // The desktop may still be putting it in its place.
    EXPECT_TRUE(await([&] {
        click(dialog);
        return has_heard(c_down);
    }));
    EXPECT_TRUE(await([&] { return GetFocus() == dialog; }));
    m_desktop.press_key(XK_a);
    m_desktop.release_key(XK_a);
    EXPECT_TRUE(await([&] { return has_heard("C KEYUP"); }));
    EXPECT_FALSE(has_heard(b_down));
    EXPECT_FALSE(has_heard("B KEYDOWN"));
    // A window that the dialog isn't in front of goes on.
    click(other);
    EXPECT_TRUE(await([&] { return has_heard("A LBUTTONDOWN") && GetFocus() == other; }));
    EnableWindow(owner, TRUE);
    DestroyWindow(dialog);
    click(owner);
    EXPECT_TRUE(await([&] { return has_heard(b_down); }));
    DestroyWindow(owner);
    DestroyWindow(other);
}

std::string pasted(bool is_wide) {
    tests::PipedProcess program(TESTS_STARTED "/clipboard.exe",
                                {"paste", is_wide ? "wide" : "narrow"});
    return program.line();
}

template <class Unit>
void copy(UINT format, std::basic_string_view<Unit> text) {
    auto* const block = GlobalAlloc(GMEM_MOVEABLE, (text.size() + 1) * sizeof(Unit));
    auto* const units = static_cast<Unit*>(GlobalLock(block));
    units[text.copy(units, text.size())] = 0;
    GlobalUnlock(block);
    ASSERT_TRUE(OpenClipboard(nullptr));
    EmptyClipboard();
    SetClipboardData(format, block);
    CloseClipboard();
}

template <class Unit>
std::basic_string<Unit> paste(UINT format) {
    std::basic_string<Unit> text;
    if (OpenClipboard(nullptr) == 0) return text;
    const auto* const units = static_cast<const Unit*>(GlobalLock(GetClipboardData(format)));
    if (units != nullptr) text = units;
    CloseClipboard();
    return text;
}

TEST_F(DesktopWindows, ShareTextWithOtherPrograms) {
    auto* const window = shown_window({100, 100, 400, 300});
    copy<char16_t>(CF_UNICODETEXT, u"w\u00efde \U0001F600");
    EXPECT_EQ(pasted(true), "w\u00efde \U0001F600");
    copy<char>(CF_TEXT, "narrow");
    EXPECT_EQ(pasted(true), "narrow");
    EXPECT_EQ(pasted(false), "narrow");
    {
        tests::PipedProcess program(TESTS_STARTED "/clipboard.exe",
                                    {"copy", "wide", "\u4f1a theirs"});
        ASSERT_EQ(program.line(), "ready");
        EXPECT_TRUE(await([&] { return paste<char16_t>(CF_UNICODETEXT) == u"\u4f1a theirs"; }));
        EXPECT_EQ(paste<char>(CF_TEXT), "\u4f1a theirs");
    }
    {
        tests::PipedProcess program(TESTS_STARTED "/clipboard.exe", {"copy", "narrow", "plain"});
        ASSERT_EQ(program.line(), "ready");
        EXPECT_TRUE(await([&] { return paste<char16_t>(CF_UNICODETEXT) == u"plain"; }));
    }
    DestroyWindow(window);
}

}  // namespace
