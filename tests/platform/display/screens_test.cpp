// What holds on any display, and what holds on the desktop alone.
#include "tvutil2/platform/display/monitors.h"
#include "tvutil2/platform/draw/objects.h"
#include "tvutil2/platform/draw/shapes.h"
#include "tvutil2/platform/draw/surface.h"
#include "tvutil2/platform/draw/theme.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/mouse.h"
#include "tvutil2/platform/window/paint.h"
#include "tvutil2/platform/window/show.h"
#include "tvutil2/platform/window/simulated_input.h"
#include "tvutil2/platform/window/timers.h"

#include <X11/keysym.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>

#include "tests/platform/display/await.h"
#include "tests/platform/display/private_desktop.h"
#include "tests/platform/window/trace.h"

namespace {

using tests::await;
using tests::PrivateDesktop;
using tests::Trace;

constexpr std::uint32_t kRed = 0xFFFF0000;
constexpr std::uint32_t kBlue = 0xFF0000FF;

// A display with a hand on its keyboard and mouse.
class Screen {
  public:
    Screen() = default;
    virtual ~Screen() = default;
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;
    virtual void click(POINT point, int button) = 0;
    virtual void turn_wheel(POINT point, int notches) = 0;
    virtual void type(int key, unsigned long symbol, std::u16string_view writes) = 0;
    virtual void hold(int key, unsigned long symbol, bool is_down) = 0;
    virtual void close(HWND window) = 0;
    /// The pixel at a place of the screen that belongs to `window`.
    virtual std::uint32_t pixel(HWND window, POINT point) = 0;
};

class Offscreen : public Screen {
  public:
    Offscreen() { setenv("TVUTIL_DISPLAY", "offscreen", 1); }
    void click(POINT point, int button) override { tvutil2::click(point, button); }
    void turn_wheel(POINT point, int notches) override {
        tvutil2::turn_wheel(point, notches * 120);
    }
    void type(int key, unsigned long /*symbol*/, std::u16string_view writes) override {
        tvutil2::type_key(key, writes);
    }
    void hold(int key, unsigned long /*symbol*/, bool is_down) override {
        is_down ? tvutil2::press_key(key) : tvutil2::release_key(key);
    }
    void close(HWND window) override { PostMessageW(window, WM_CLOSE, 0, 0); }
    std::uint32_t pixel(HWND window, POINT point) override {
        const auto picture = tvutil2::picture_of(window);
        RECT place{};
        GetWindowRect(window, &place);
        return picture ? picture->row(point.y - place.top)[point.x - place.left] : 0;
    }
};

// Keys and pointer are those of an X server.
class OnServer : public Screen {
  public:
    explicit OnServer(PrivateDesktop& desktop) : m_desktop(desktop) {}
    void click(POINT point, int button) override {
        constexpr int kButtons[] = {1, 3, 2};
        m_desktop.move_pointer(real(point));
        m_desktop.press_button(kButtons[button]);
        m_desktop.release_button(kButtons[button]);
    }
    void turn_wheel(POINT point, int notches) override {
        m_desktop.move_pointer(real(point));
        for (int i = 0; i < std::abs(notches); ++i) {
            m_desktop.press_button(notches > 0 ? 4 : 5);
            m_desktop.release_button(notches > 0 ? 4 : 5);
        }
    }
    void type(int /*key*/, unsigned long symbol, std::u16string_view /*writes*/) override {
        m_desktop.press_key(symbol);
        m_desktop.release_key(symbol);
    }
    void hold(int /*key*/, unsigned long symbol, bool is_down) override {
        is_down ? m_desktop.press_key(symbol) : m_desktop.release_key(symbol);
    }
    PrivateDesktop& desktop() { return m_desktop; }

  protected:
    // Where what the program has at a place is on the server's screen.
    [[nodiscard]] virtual POINT real(POINT point) const { return point; }

  private:
    PrivateDesktop& m_desktop;
};

class OnDesktop : public OnServer {
  public:
    OnDesktop() : OnServer(PrivateDesktop::start()) {}
    void close(HWND /*window*/) override { desktop().close(desktop().clients().at(0)); }
    std::uint32_t pixel(HWND /*window*/, POINT point) override {
        return desktop().picture()->row(point.y)[point.x];
    }
};

RECT place_of(HWND window) {
    RECT rect{};
    GetWindowRect(window, &rect);
    return rect;
}

// Here the program doesn't know where its window is: it is found by what it paints.
class OnWayland : public OnServer {
  public:
    using OnServer::OnServer;
    // With the button in the frame that the desktop's library paints.
    void close(HWND window) override {
        RECT client{};
        GetClientRect(window, &client);
        POINT button{client.right - 19, -18};
        ClientToScreen(window, &button);
        click(button, 0);
    }
    std::uint32_t pixel(HWND window, POINT point) override {
        // The compositor paints the pointer, and counts its way from where it believes that to be:
        // behind two corners it knows.
        desktop().move_pointer({0, 0});
        desktop().move_pointer({1279, 1023});
        const auto picture = desktop().picture();
        if (!m_is_found && !find(*picture, window)) return 0;
        const auto at = real(point);
        return picture->row(at.y)[at.x];
    }

  private:
    [[nodiscard]] POINT real(POINT point) const override {
        return {point.x + m_offset.x, point.y + m_offset.y};
    }
    bool find(const tvutil2::Surface& picture, HWND window) {
        POINT corner{0, 0};
        ClientToScreen(window, &corner);
        for (int y = 0; y < picture.height(); ++y) {
            for (int x = 0; x < picture.width(); ++x) {
                if (picture.row(y)[x] != kRed) continue;
                m_offset = {x - corner.x, y - corner.y};
                return m_is_found = true;
            }
        }
        return false;
    }

    bool m_is_found = false;
    POINT m_offset{};
};

class Screens : public testing::Test {
  protected:
    void SetUp() override {
        m_trace = {};
        m_trace.handler = [this](HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
            return answer(window, message, wparam, lparam);
        };
    }
    void TearDown() override {
        for (auto* const window : m_windows) {
            if (IsWindow(window)) DestroyWindow(window);
        }
        m_trace = {};
    }

    LRESULT answer(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
        const POINT point{GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam)};
        switch (message) {
            case WM_PAINT: {
                PAINTSTRUCT paint;
                BeginPaint(window, &paint);
                auto* const brush =
                    CreateSolidBrush(m_colors.count(window) != 0 ? m_colors[window] : 0x0000FF);
                RECT all{};
                GetClientRect(window, &all);
                FillRect(paint.hdc, &all, brush);
                DeleteObject(brush);
                EndPaint(window, &paint);
                return 0;
            }
            case WM_LBUTTONDOWN:
            case WM_RBUTTONDOWN:
                m_clicked = window;
                m_click = point;
                m_click_message = message;
                return 0;
            case WM_MOUSEWHEEL:
                m_wheel += static_cast<std::int16_t>(HIWORD(wparam));
                return 0;
            case WM_CHAR:
                m_written += static_cast<char16_t>(wparam);
                return 0;
            case WM_KEYDOWN:
                m_last_key = static_cast<int>(wparam);
                return 0;
            case WM_CLOSE:
                m_closed = window;
                return 0;
            case WM_SIZE:
                m_size = {point.x, point.y};
                m_form = wparam;
                return 0;
            default:
                return DefWindowProcW(window, message, wparam, lparam);
        }
    }

    HWND show(DWORD style, const RECT& place, HWND owner = nullptr, COLORREF color = 0x0000FF) {
        auto* const window = tests::traced_window(style, owner, u"Sess\u00efon \u4f1a");
        m_colors[window] = color;
        m_windows.push_back(window);
        SetWindowPos(window, nullptr, place.left, place.top, place.right - place.left,
                     place.bottom - place.top, SWP_NOZORDER | SWP_NOACTIVATE);
        const bool is_popup = owner != nullptr && (style & WS_CAPTION) == 0;
        ShowWindow(window, is_popup ? SW_SHOWNOACTIVATE : SW_SHOW);
        return window;
    }

    static POINT center(HWND window) {
        RECT rect{};
        GetClientRect(window, &rect);
        POINT point{rect.right / 2, rect.bottom / 2};
        ClientToScreen(window, &point);
        return point;
    }

    void work_on(Screen& screen) {
        auto* const window = show(WS_OVERLAPPEDWINDOW, {200, 150, 500, 400});
        ASSERT_TRUE(await([&] { return screen.pixel(window, center(window)) == kRed; }));
        ASSERT_TRUE(await([&] { return GetFocus() == window; }));

        POINT point{10, 20};
        ClientToScreen(window, &point);
        screen.click(point, 0);
        EXPECT_TRUE(await([&] { return m_clicked == window; }));
        EXPECT_EQ(m_click_message, WM_LBUTTONDOWN);
        EXPECT_EQ(m_click.x, 10);
        EXPECT_EQ(m_click.y, 20);
        screen.click(center(window), 1);
        EXPECT_TRUE(await([&] { return m_click_message == WM_RBUTTONDOWN; }));
        screen.turn_wheel(center(window), -2);
        EXPECT_TRUE(await([&] { return m_wheel == -240; }));

        screen.type('A', XK_a, u"a");
        screen.hold(VK_SHIFT, XK_Shift_L, true);
        screen.type('B', XK_b, u"B");
        screen.hold(VK_SHIFT, XK_Shift_L, false);
        screen.hold(VK_CONTROL, XK_Control_L, true);
        screen.type('C', XK_c, u"");
        screen.hold(VK_CONTROL, XK_Control_L, false);
        screen.type(VK_RETURN, XK_Return, u"");
        screen.type(VK_F1 + 4, XK_F5, u"");
        EXPECT_TRUE(await([&] { return m_last_key == VK_F1 + 4; }));
        EXPECT_EQ(m_written, u"aB\x03\r");

        m_colors[window] = 0xFF0000;
        InvalidateRect(window, nullptr, FALSE);
        EXPECT_TRUE(await([&] { return screen.pixel(window, center(window)) == kBlue; }));
        screen.close(window);
        EXPECT_TRUE(await([&] { return m_closed == window; }));
    }

    Trace& m_trace = Trace::current();
    std::vector<HWND> m_windows;
    std::map<HWND, COLORREF> m_colors;
    HWND m_clicked = nullptr, m_closed = nullptr;
    POINT m_click{};
    UINT m_click_message = 0;
    int m_wheel = 0, m_last_key = 0;
    std::u16string m_written;
    SIZE m_size{};
    WPARAM m_form = 0;
};

TEST_F(Screens, WindowsAreSeenAndWorkedOnOffscreen) {
    Offscreen screen;
    work_on(screen);
}

TEST_F(Screens, WindowsAreSeenAndWorkedOnOnTheDesktop) {
    OnDesktop screen;
    work_on(screen);
}

TEST_F(Screens, WindowsAreSeenAndWorkedOnOnWayland) {
    auto* const desktop = PrivateDesktop::start_wayland();
    if (desktop == nullptr) GTEST_SKIP() << "weston isn't installed";
    OnWayland screen(*desktop);
    work_on(screen);
}

// One that belongs to another has to be told so, or Wayland doesn't show it.
TEST_F(Screens, PopUpsOpenAtOneAnotherOnWaylandAndHearThatTheyAreDismissed) {
    auto* const desktop = PrivateDesktop::start_wayland();
    if (desktop == nullptr) GTEST_SKIP() << "weston isn't installed";
    OnWayland screen(*desktop);
    auto* const window = show(WS_OVERLAPPEDWINDOW, {100, 100, 400, 300});
    ASSERT_TRUE(await([&] { return screen.pixel(window, center(window)) == kRed; }));
    ASSERT_TRUE(await([&] { return GetFocus() == window; }));
    // Pop-ups come of something that the person does.
    screen.click(center(window), 0);
    EXPECT_TRUE(await([&] { return m_clicked == window; }));
    auto* const popup = show(WS_POPUP, {380, 250, 480, 350}, window, 0xFF0000);
    SetCapture(popup);
    ASSERT_TRUE(await([&] { return screen.pixel(popup, {470, 340}) == kBlue; }));
    auto* const second = show(WS_POPUP, {470, 300, 520, 380}, window, 0x00FF00);
    ASSERT_TRUE(await([&] { return screen.pixel(second, {515, 375}) == 0xFF00FF00; }));
    EXPECT_EQ(screen.pixel(second, {471, 301}), 0xFF00FF00);
    EXPECT_EQ(GetFocus(), window);
    screen.type('A', XK_a, u"a");
    EXPECT_TRUE(await([&] { return m_written == u"a"; }));
    screen.click({390, 260}, 0);
    EXPECT_TRUE(await([&] { return m_clicked == popup && m_click.x == 10 && m_click.y == 10; }));
    EXPECT_EQ(GetCapture(), popup);
    DestroyWindow(second);
    EXPECT_TRUE(await([&] { return screen.pixel(popup, {515, 375}) != 0xFF00FF00; }));
    EXPECT_EQ(GetCapture(), popup);
    desktop->move_pointer({1270, 1010});
    desktop->press_button(1);
    desktop->release_button(1);
    EXPECT_TRUE(await([&] { return GetCapture() == nullptr; }));
    DestroyWindow(popup);
    screen.click(center(window), 0);
    EXPECT_TRUE(await([&] { return m_clicked == window; }));
}

TEST_F(Screens, TheDesktopKnowsWindowsByTheirTitlesAndOwnersAndHasTheLastWordOnPlaces) {
    OnDesktop screen;
    auto& desktop = screen.desktop();
    auto* const window = show(WS_OVERLAPPEDWINDOW, {100, 100, 500, 400});
    ASSERT_TRUE(await([&] { return screen.pixel(window, center(window)) == kRed; }));
    auto clients = desktop.clients();
    ASSERT_EQ(clients.size(), 1U);
    EXPECT_EQ(clients[0].title, "Sess\u00efon \u4f1a");
    SetWindowTextW(window, u"Other");
    EXPECT_TRUE(await([&] { return desktop.clients()[0].title == "Other"; }));

    // Moved and sized there, it is so here.
    desktop.place(clients[0], {300, 200, 800, 500});
    ASSERT_TRUE(await([&] { return m_size.cx == 500 && m_size.cy == 300; }));
    POINT corner{0, 0};
    ClientToScreen(window, &corner);
    const auto now = desktop.clients()[0].place;
    EXPECT_EQ(corner.x, now.left);
    EXPECT_EQ(corner.y, now.top);
    EXPECT_TRUE(await([&] {
        return screen.pixel(window, {now.right - 3, now.bottom - 3}) == kRed;
    }));
    // And the other way.
    MoveWindow(window, 50, 60, 300, 200, TRUE);
    EXPECT_TRUE(await([&] {
        const auto there = desktop.clients()[0].place;
        return there.right - there.left == m_size.cx && there.bottom - there.top == m_size.cy;
    }));
    // A late word of the desktop's may come in between.
    EXPECT_TRUE(await([&] {
        const auto here = place_of(window);
        return here.left == 50 && here.right == 350;
    }));
    const auto width = m_size.cx;
    desktop.set_state(clients[0], "_NET_WM_STATE_MAXIMIZED", true);
    EXPECT_TRUE(await([&] { return m_form == SIZE_MAXIMIZED && m_size.cx > 1200; }));
    EXPECT_TRUE(IsZoomed(window));
    desktop.set_state(clients[0], "_NET_WM_STATE_MAXIMIZED", false);
    EXPECT_TRUE(await([&] { return m_form == SIZE_RESTORED && m_size.cx == width; }));

    // A dialog: its owner, disabled, is asked in vain to close.
    EnableWindow(window, FALSE);
    auto* const dialog =
        show(WS_POPUP | WS_CAPTION | WS_SYSMENU, {120, 120, 320, 270}, window, 0xFF0000);
    ASSERT_TRUE(await([&] { return screen.pixel(dialog, center(dialog)) == kBlue; }));
    ASSERT_TRUE(await([&] { return desktop.clients().size() == 2; }));
    clients = desktop.clients();
    EXPECT_EQ(clients[1].owner, clients[0].id);
    EXPECT_TRUE(await([&] { return desktop.clients()[1].is_modal; }));
    desktop.close(clients[0]);
    desktop.close(clients[1]);
    EXPECT_TRUE(await([&] { return m_closed == dialog; }));
    EnableWindow(window, TRUE);
    DestroyWindow(dialog);
    EXPECT_TRUE(await([&] { return desktop.clients().size() == 1; }));
    EXPECT_TRUE(await([&] { return GetFocus() == window; }));
}

TEST_F(Screens, PopUpsReachBeyondTheirWindowAndHearOfPressesOutside) {
    OnDesktop screen;
    auto* const window = show(WS_OVERLAPPEDWINDOW, {100, 100, 400, 300});
    ASSERT_TRUE(await([&] { return screen.pixel(window, center(window)) == kRed; }));
    ASSERT_TRUE(await([&] { return GetFocus() == window; }));
    auto* const popup = show(WS_POPUP, {350, 250, 550, 650}, window, 0xFF0000);
    SetCapture(popup);
    ASSERT_TRUE(await([&] { return screen.pixel(popup, {545, 645}) == kBlue; }));
    // Not framed, and not the active one.
    EXPECT_EQ(screen.pixel(popup, {351, 251}), kBlue);
    EXPECT_EQ(GetFocus(), window);
    screen.click({360, 260}, 0);
    EXPECT_TRUE(await([&] { return m_clicked == popup && m_click.x == 10 && m_click.y == 10; }));
    screen.click({1000, 900}, 0);
    EXPECT_TRUE(await([&] { return m_clicked == popup && m_click.x == 650 && m_click.y == 650; }));
    screen.type('A', XK_a, u"a");
    EXPECT_TRUE(await([&] { return m_written == u"a"; }));
    ReleaseCapture();
    DestroyWindow(popup);
    EXPECT_TRUE(await([&] { return screen.pixel(window, {545, 645}) != kBlue; }));
    screen.click(center(window), 0);
    EXPECT_TRUE(await([&] { return m_clicked == window; }));
}

TEST_F(Screens, WindowsHaveTheScaleOfTheDesktop) {
    PrivateDesktop::start("Xft.dpi:\t144\n");
    auto* const window = show(WS_OVERLAPPEDWINDOW, {100, 100, 500, 400});
    EXPECT_EQ(GetDpiForWindow(window), 144U);
    EXPECT_EQ(tvutil2::monitors().size(), 1U);
    EXPECT_EQ(tvutil2::monitors()[0].area.right, 1280);
    EXPECT_EQ(tvutil2::system_dpi(), 144U);
}

TEST_F(Screens, ADisplayThatGoesAwayClosesTheWindows) {
    OnDesktop screen;
    auto* const window = show(WS_OVERLAPPEDWINDOW, {100, 100, 500, 400});
    ASSERT_TRUE(await([&] { return screen.pixel(window, center(window)) == kRed; }));
    screen.desktop().end();
    EXPECT_TRUE(await([&] { return m_closed == window; }));
    // Nothing waits for what isn't there.
    auto* const next = show(WS_OVERLAPPEDWINDOW, {100, 100, 500, 400});
    SetWindowTextW(next, u"x");
    UpdateWindow(next);
    EXPECT_TRUE(DestroyWindow(next));
}

}  // namespace
