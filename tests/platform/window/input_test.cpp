#include "tvutil2/platform/draw/rect.h"
#include "tvutil2/platform/window/focus.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/hit_test.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/mouse.h"
#include "tvutil2/platform/window/show.h"
#include "tvutil2/platform/window/simulated_input.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <mutex>
#include <thread>

#include "tests/platform/display/await.h"
#include "tests/platform/window/trace.h"

namespace {

using tests::Trace;
using tests::traced_window;

class Input : public testing::Test {
  protected:
    Input() {
        setenv("TVUTIL_DISPLAY", "offscreen", 1);
        m_trace = {};
    }
    ~Input() override {
        if (IsWindow(m_top)) DestroyWindow(m_top);
        m_trace = {};
    }

    void make_windows(DWORD style = WS_POPUP) {
        m_top = traced_window(style | WS_VISIBLE);
        SetWindowPos(m_top, nullptr, 0, 0, 200, 200, SWP_NOZORDER);
        m_left = traced_window(WS_CHILD | WS_VISIBLE, m_top);
        MoveWindow(m_left, 0, 0, 50, 50, FALSE);
        m_right = traced_window(WS_CHILD | WS_VISIBLE, m_top);
        MoveWindow(m_right, 100, 0, 50, 50, FALSE);
        pump();
    }

    // What is heard of input meanwhile, with the loop's messages.
    std::string pump() {
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
        std::string heard;
        for (const auto& line : m_trace.lines) {
            const bool counts = line.find("PAINT") == std::string::npos &&
                                line.find("ERASE") == std::string::npos &&
                                line.find(" CHANG") == std::string::npos &&
                                line.find("HITTEST") == std::string::npos &&
                                line.find("SETCURSOR") == std::string::npos;
            if (counts) heard += (heard.empty() ? "" : ", ") + line;
        }
        m_trace.lines.clear();
        return heard;
    }

    Trace& m_trace = Trace::current();
    HWND m_top = nullptr, m_left = nullptr, m_right = nullptr;
};

TEST_F(Input, KeysGoToTheFocusWindowOfTheActiveOne) {
    make_windows();
    EXPECT_EQ(GetActiveWindow(), m_top);
    EXPECT_EQ(GetFocus(), m_top);
    EXPECT_EQ(SetFocus(m_left), m_top);
    EXPECT_EQ(pump(), "A KILLFOCUS, B SETFOCUS");
    std::u16string written;
    m_trace.handler = [&](HWND window, UINT message, WPARAM wparam, LPARAM lparam) -> LRESULT {
        if (message == WM_CHAR) written += static_cast<char16_t>(wparam);
        return DefWindowProcW(window, message, wparam, lparam);
    };
    tvutil2::type_text(u"aB\u00e4\U0001F600");
    pump();
    EXPECT_EQ(written, u"aB\u00e4\U0001F600");
    written.clear();
    tvutil2::press_key(VK_CONTROL);
    tvutil2::type_key('A');
    tvutil2::release_key(VK_CONTROL);
    pump();
    EXPECT_EQ(written, u"\x01");
    EXPECT_GE(GetKeyState(VK_CONTROL), 0);
    // A key that the program eats writes nothing.
    written.clear();
    tvutil2::type_text(u"x");
    MSG message;
    ASSERT_TRUE(PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE));
    EXPECT_EQ(message.message, WM_KEYDOWN);
    EXPECT_LT(GetKeyState('X'), 0);
    pump();
    EXPECT_EQ(written, u"");
    tvutil2::press_key(VK_MENU);
    tvutil2::type_key('F');
    m_trace.lines.clear();
    // The character that nobody takes leads to the menu bar (WM_SYSCOMMAND).
    EXPECT_EQ(pump(), "B SYSKEYDOWN, B SYSKEYDOWN, B SYSCHAR, A 274, B SYSKEYUP");
    tvutil2::release_key(VK_MENU);
    pump();
}

TEST_F(Input, FocusFollowsWhatBecomesOfItsWindow) {
    make_windows();
    const struct {
        std::function<void()> change;
        bool to_parent;
        const char* heard;
    } cases[] = {
        {[&] { EnableWindow(m_left, FALSE); }, false, "B CANCELMODE, B KILLFOCUS, B ENABLE"},
        {[&] { ShowWindow(m_left, SW_HIDE); }, true, "B SHOW, B KILLFOCUS, A SETFOCUS"},
        {[&] { DestroyWindow(m_left); }, true,
         "A NOTIFY, B SHOW, B KILLFOCUS, A SETFOCUS, B DESTROY, B NCDESTROY"},
    };
    for (const auto& each : cases) {
        EnableWindow(m_left, TRUE);
        ShowWindow(m_left, SW_SHOW);
        SetFocus(m_left);
        pump();
        each.change();
        EXPECT_EQ(pump(), each.heard);
        EXPECT_EQ(GetFocus(), each.to_parent ? m_top : nullptr);
    }
    SetFocus(m_right);
    EnableWindow(m_top, FALSE);
    EXPECT_EQ(GetFocus(), m_right);
    SetFocus(nullptr);
    EXPECT_EQ(SetFocus(m_right), nullptr);
    EXPECT_EQ(GetFocus(), nullptr);
}

// A key that closes the last window comes up where nobody hears of it.
TEST_F(Input, KeysAreUpWhenTheKeyboardHasGone) {
    const std::function<void()> ways[] = {
        [&] { DestroyWindow(m_top); },
        [&] { ShowWindow(m_top, SW_HIDE); },
        [&] { SetActiveWindow(nullptr); },
    };
    for (const auto& go : ways) {
        make_windows();
        tvutil2::press_key(VK_MENU);
        pump();
        EXPECT_LT(GetKeyState(VK_MENU), 0);
        go();
        tvutil2::release_key(VK_MENU);
        EXPECT_GE(GetKeyState(VK_MENU), 0);
        if (IsWindow(m_top)) DestroyWindow(m_top);
        m_trace.names.clear();
    }
}

TEST_F(Input, ThePointerFindsItsWindow) {
    make_windows();
    POINT heard{-1, -1};
    HWND hit = nullptr;
    HWND transparent = nullptr;
    m_trace.handler = [&](HWND window, UINT message, WPARAM wparam, LPARAM lparam) -> LRESULT {
        if (message == WM_LBUTTONDOWN) {
            hit = window;
            heard = {GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam)};
        }
        if (message == WM_NCHITTEST && window == transparent) return HTTRANSPARENT;
        return DefWindowProcW(window, message, wparam, lparam);
    };
    const auto press = [&](POINT point) {
        tvutil2::click(point);
        pump();
        return hit;
    };
    EXPECT_EQ(press({120, 30}), m_right);
    EXPECT_EQ(heard.x, 20);
    EXPECT_EQ(press({70, 30}), m_top);
    transparent = m_right;
    EXPECT_EQ(press({120, 30}), m_top);
    transparent = nullptr;
    EnableWindow(m_right, FALSE);
    EXPECT_EQ(press({120, 30}), m_top);
    EnableWindow(m_right, TRUE);
    SetCapture(m_left);
    EXPECT_EQ(press({120, 30}), m_left);
    EXPECT_EQ(heard.x, 120);
    pump();
    ReleaseCapture();
    EXPECT_EQ(pump(), "B CAPTURECHANGED");
}

TEST_F(Input, PressesAreAnnouncedAndLeavingIsTold) {
    make_windows();
    auto* const other = traced_window(WS_POPUP | WS_VISIBLE);
    SetWindowPos(other, nullptr, 300, 0, 50, 50, SWP_NOZORDER);
    EXPECT_EQ(GetActiveWindow(), other);
    pump();
    tvutil2::press_button({10, 10});
    EXPECT_EQ(pump(),
              "A NOTIFY, B MOUSEACTIVATE, A MOUSEACTIVATE, D NCACTIVATE, D ACTIVATE, "
              "A NCACTIVATE, A ACTIVATE, D KILLFOCUS, A SETFOCUS, B LBUTTONDOWN");
    tvutil2::release_button({10, 10});
    EXPECT_EQ(pump(), "B LBUTTONUP");
    TRACKMOUSEEVENT track{sizeof track, TME_LEAVE, m_left, 0};
    TrackMouseEvent(&track);
    tvutil2::move_pointer({11, 10});
    EXPECT_EQ(pump(), "B MOUSEMOVE");
    tvutil2::move_pointer({120, 10});
    EXPECT_EQ(pump(), "C MOUSEMOVE, B MOUSELEAVE");
    TrackMouseEvent(&track);
    EXPECT_EQ(pump(), "B MOUSELEAVE");
    // Of several moves the last one counts.
    for (int x = 100; x < 140; ++x) tvutil2::move_pointer({x, 20});
    EXPECT_EQ(pump(), "C MOUSEMOVE");
    tvutil2::turn_wheel({120, 10}, -120);
    EXPECT_EQ(pump(), "C MOUSEWHEEL, A MOUSEWHEEL");
    // A window that is disabled for a dialog hears nothing, and the dialog comes forward.
    auto* const dialog = traced_window(WS_POPUP | WS_VISIBLE, m_top);
    SetWindowPos(dialog, nullptr, 400, 0, 10, 10, SWP_NOZORDER);
    EnableWindow(m_top, FALSE);
    SetActiveWindow(other);
    pump();
    tvutil2::click({10, 10});
    pump();
    EXPECT_EQ(GetActiveWindow(), dialog);
    DestroyWindow(other);
}

// A thread with a child window in a window of another thread.
class Guest {
  public:
    explicit Guest(HWND top) : m_thread([this, top] { run(top); }) {}
    ~Guest() {
        PostMessageW(m_window, WM_APP, 0, 0);
        // Its parent hears of its end.
        tests::await([this] { return IsWindow(m_window) == 0; });
        m_thread.join();
    }
    Guest(const Guest&) = delete;
    Guest& operator=(const Guest&) = delete;

    /// Waits for something that it hears, and what it has heard before.
    bool hears(const std::string& line) {
        return tests::await([&] {
            const std::lock_guard guard(m_lock);
            const auto found = std::find(m_heard.begin(), m_heard.end(), line);
            if (found == m_heard.end()) return false;
            m_heard.erase(m_heard.begin(), found + 1);
            return true;
        });
    }
    [[nodiscard]] bool is_there() const { return m_window != nullptr; }
    [[nodiscard]] HWND window() const { return m_window; }
    void take_focus() const { PostMessageW(m_window, WM_APP + 1, 0, 0); }

  private:
    void note(const char* what, LPARAM lparam) {
        const std::lock_guard guard(m_lock);
        m_heard.push_back(std::string(what) + " " + std::to_string(GET_X_LPARAM(lparam)) + "," +
                          std::to_string(GET_Y_LPARAM(lparam)));
    }

    LRESULT answer(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
        switch (message) {
            case WM_LBUTTONDOWN:
                SetCapture(window);
                note((wparam & MK_SHIFT) != 0 ? "shift down" : "down", lparam);
                return 0;
            case WM_LBUTTONUP:
                ReleaseCapture();
                note("up", lparam);
                return 0;
            case WM_MOUSEMOVE: {
                TRACKMOUSEEVENT track{sizeof track, TME_LEAVE, window, 0};
                TrackMouseEvent(&track);
                note("move", lparam);
                return 0;
            }
            case WM_MOUSELEAVE:
                note("leave", 0);
                return 0;
            case WM_APP + 1:
                SetFocus(window);
                return 0;
            case WM_SETFOCUS:
            case WM_KILLFOCUS:
                note(message == WM_SETFOCUS ? "focus" : "unfocus", 0);
                return 0;
            case WM_KEYDOWN:
                note("key",
                     MAKELPARAM(static_cast<WORD>(wparam), GetKeyState(VK_SHIFT) < 0 ? 1 : 0));
                return 0;
            case WM_CHAR:
                note("char", static_cast<LPARAM>(wparam));
                return 0;
            case WM_APP:
                DestroyWindow(window);
                PostQuitMessage(0);
                return 0;
            default:
                return DefWindowProcW(window, message, wparam, lparam);
        }
    }

    void run(HWND top) {
        Trace::current().handler = [this](HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
            return answer(window, message, wparam, lparam);
        };
        auto* const window = traced_window(WS_CHILD | WS_VISIBLE, top);
        MoveWindow(window, 60, 60, 50, 50, FALSE);
        m_window = window;
        MSG message;
        while (GetMessageW(&message, nullptr, 0, 0)) {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
        Trace::current() = {};
    }

    std::mutex m_lock;
    std::vector<std::string> m_heard;
    std::atomic<HWND> m_window{nullptr};
    std::thread m_thread;
};

TEST_F(Input, ThePointerReachesChildrenOfOtherThreads) {
    make_windows();
    auto* const other = traced_window(WS_POPUP | WS_VISIBLE);
    Guest guest(m_top);
    ASSERT_TRUE(tests::await([&] { return guest.is_there(); }));
    EXPECT_EQ(GetActiveWindow(), other);
    tvutil2::move_pointer({65, 70});
    EXPECT_TRUE(guest.hears("move 5,10"));
    tvutil2::press_button({65, 71});
    EXPECT_TRUE(guest.hears("down 5,11"));
    EXPECT_EQ(GetActiveWindow(), m_top);
    // It has captured the pointer.
    tvutil2::move_pointer({10, 10});
    EXPECT_TRUE(guest.hears("move -50,-50"));
    tvutil2::release_button({10, 10});
    EXPECT_TRUE(guest.hears("up -50,-50"));
    pump();
    tvutil2::move_pointer({70, 70});
    EXPECT_TRUE(guest.hears("move 10,10"));
    tvutil2::move_pointer({120, 10});
    EXPECT_TRUE(guest.hears("leave 0,0"));
    EXPECT_NE(pump().find("C MOUSEMOVE"), std::string::npos);
    DestroyWindow(other);
}

TEST_F(Input, KeysReachTheChildOfAnotherThreadThatHasTheFocus) {
    make_windows();
    Guest guest(m_top);
    ASSERT_TRUE(tests::await([&] { return guest.is_there(); }));
    SetFocus(m_left);
    pump();
    guest.take_focus();
    EXPECT_TRUE(guest.hears("focus 0,0"));
    EXPECT_TRUE(tests::await([&] { return GetFocus() == guest.window(); }));
    EXPECT_EQ(pump(), "B KILLFOCUS");
    EXPECT_EQ(GetActiveWindow(), m_top);
    tvutil2::press_key(VK_SHIFT);
    tvutil2::type_key('A', u"A");
    EXPECT_TRUE(guest.hears("key 65,1"));
    EXPECT_TRUE(guest.hears("char 65,0"));
    // The host knows it, too, and tells with a press.
    EXPECT_LT(GetKeyState(VK_SHIFT), 0);
    tvutil2::press_button({65, 70});
    EXPECT_TRUE(guest.hears("shift down 5,10"));
    tvutil2::release_button({65, 70});
    EXPECT_TRUE(guest.hears("up 5,10"));
    tvutil2::release_key(VK_SHIFT);
    tvutil2::type_text(u"b");
    EXPECT_TRUE(guest.hears("key 66,0"));
    // Back to a window of its own, and there again by the host's word.
    pump();
    SetFocus(m_left);
    EXPECT_TRUE(guest.hears("unfocus 0,0"));
    tvutil2::type_text(u"c");
    EXPECT_NE(pump().find("B CHAR"), std::string::npos);
    SetFocus(guest.window());
    EXPECT_TRUE(guest.hears("focus 0,0"));
    EXPECT_TRUE(tests::await([&] { return GetFocus() == guest.window(); }));
    // Without its window in front it has no keys, and hears of it.
    auto* const other = traced_window(WS_POPUP | WS_VISIBLE);
    SetActiveWindow(other);
    EXPECT_TRUE(guest.hears("unfocus 0,0"));
    DestroyWindow(other);
    EXPECT_EQ(GetFocus(), m_top);
}

TEST_F(Input, EdgesAndCaptionsCanBeDragged) {
    make_windows(WS_OVERLAPPEDWINDOW);
    const struct {
        POINT from, to;
        RECT place;
    } cases[] = {
        {{199, 199}, {219, 229}, {0, 0, 220, 230}},
        {{0, 100}, {-10, 100}, {-10, 0, 220, 230}},
        {{100, 12}, {150, 42}, {40, 30, 270, 260}},
        {{40, 30}, {900, 900}, {134, 221, 270, 260}},
    };
    for (const auto& each : cases) {
        tvutil2::press_button(each.from);
        tvutil2::move_pointer(each.to);
        tvutil2::release_button(each.to);
        pump();
        RECT place{};
        GetWindowRect(m_top, &place);
        EXPECT_TRUE(EqualRect(&place, &each.place))
            << place.left << " " << place.top << " " << place.right << " " << place.bottom;
    }
    tvutil2::press_key(VK_MENU);
    tvutil2::type_key(VK_F4);
    pump();
    EXPECT_FALSE(IsWindow(m_top));
    tvutil2::release_key(VK_MENU);
}

}  // namespace
