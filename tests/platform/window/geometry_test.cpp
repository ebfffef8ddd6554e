#include "tvutil2/platform/window/geometry.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/draw/theme.h"
#include "tvutil2/platform/window/hit_test.h"
#include "tvutil2/platform/window/show.h"
#include "tvutil2/platform/window/system_metrics.h"

#include <gtest/gtest.h>

#include "tests/platform/window/trace.h"

namespace {

using tests::Trace;
using tests::traced_window;

std::string text(const RECT& rect) {
    return std::to_string(rect.left) + " " + std::to_string(rect.top) + " " +
           std::to_string(rect.right) + " " + std::to_string(rect.bottom);
}

std::string place(HWND window) {
    RECT rect{};
    EXPECT_TRUE(GetWindowRect(window, &rect));
    return text(rect);
}

std::string client(HWND window) {
    RECT rect{};
    EXPECT_TRUE(GetClientRect(window, &rect));
    return text(rect);
}

class Geometry : public testing::Test {
  protected:
    Geometry() { m_trace = {}; }
    ~Geometry() override { m_trace = {}; }

    Trace& m_trace = Trace::current();
};

TEST_F(Geometry, AChangeIsToldStepByStep) {
    auto* const a = traced_window(WS_POPUP);
    auto* const b = traced_window(WS_CHILD, a);
    auto* const c = traced_window(WS_CHILD, a);
    const struct {
        HWND after;
        int x, y, width, height;
        UINT flags;
        const char* heard;
        const char* place;
    } cases[] = {
        {nullptr, 1, 2, 30, 40, SWP_NOZORDER, "C CHANGING", "2 4 32 44"},
        {nullptr, 5, 5, 50, 60, SWP_NOZORDER, "C CHANGING, C CALCSIZE, C CHANGED, C MOVE, C SIZE",
         "6 7 56 67"},
        {nullptr, 9, 9, 9, 9, SWP_NOZORDER | SWP_NOMOVE | SWP_NOSIZE, "C CHANGING", "6 7 56 67"},
        {nullptr, 9, 9, 0, 0, SWP_NOZORDER | SWP_NOSIZE, "C CHANGING, C CHANGED, C MOVE",
         "10 11 60 71"},
        {nullptr, 0, 0, -5, 100000, SWP_NOZORDER | SWP_NOMOVE,
         "C CHANGING, C CALCSIZE, C CHANGED, C SIZE", "10 11 10 32778"},
        {b, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE, "C CHANGING", "10 11 10 32778"},
        {HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE, "C CHANGING, C CHANGED", "10 11 10 32778"},
        {nullptr, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER | SWP_SHOWWINDOW,
         "C CHANGING, C CHANGED", "10 11 10 32778"},
        {nullptr, 1, 1, 9, 9, SWP_NOZORDER | SWP_NOSENDCHANGING,
         "C CALCSIZE, C CHANGED, C MOVE, C SIZE", "2 3 11 12"},
    };
    m_trace.take();
    for (const auto& each : cases) {
        EXPECT_TRUE(
            SetWindowPos(c, each.after, each.x, each.y, each.width, each.height, each.flags));
        EXPECT_EQ(m_trace.take(), each.heard);
        EXPECT_EQ(place(c), each.place);
    }
    EXPECT_EQ(GetWindow(a, GW_CHILD), c);
    EXPECT_FALSE(SetWindowPos(c, a, 0, 0, 0, 0, 0));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    DestroyWindow(a);
}

// Children count from the client area, which the frame makes smaller.
TEST_F(Geometry, ClientAreasAreInsideOfFrames) {
    auto* const a = CreateWindowExW(0, tests::traced_class(), u"", WS_OVERLAPPEDWINDOW, 100, 200,
                                    400, 300, nullptr, nullptr, nullptr, nullptr);
    RECT frame{};
    AdjustWindowRectEx(&frame, WS_OVERLAPPEDWINDOW, FALSE, 0);
    EXPECT_LT(frame.top, frame.left);
    EXPECT_EQ(client(a),
              text({0, 0, 400 + frame.left - frame.right, 300 + frame.top - frame.bottom}));
    auto* const b = CreateWindowExW(WS_EX_CLIENTEDGE, tests::traced_class(), u"", WS_CHILD, 10, 20,
                                    50, 60, a, nullptr, nullptr, nullptr);
    EXPECT_EQ(client(b), "0 0 46 56");
    POINT point{0, 0};
    MapWindowPoints(b, nullptr, &point, 1);
    EXPECT_EQ(point.x, 100 - frame.left + 10 + 2);
    EXPECT_EQ(point.y, 200 - frame.top + 20 + 2);
    EXPECT_TRUE(ScreenToClient(b, &point));
    EXPECT_EQ(point.x, 0);
    MoveWindow(a, 0, 0, 400, 300, TRUE);
    EXPECT_EQ(place(b), text({10 - frame.left, 20 - frame.top, 60 - frame.left, 80 - frame.top}));

    // A size below the limits isn't taken; the program's own limits count.
    LONG least = 0;
    m_trace.handler = [&](HWND window, UINT message, WPARAM wparam, LPARAM lparam) -> LRESULT {
        if (message == WM_GETMINMAXINFO && least != 0) {
            reinterpret_cast<MINMAXINFO*>(lparam)->ptMinTrackSize = {least, least};
        }
        return DefWindowProcW(window, message, wparam, lparam);
    };
    MoveWindow(a, 0, 0, 1, 1, TRUE);
    EXPECT_EQ(place(a), "0 0 136 39");
    least = 250;
    MoveWindow(a, 0, 0, 300, 100, TRUE);
    EXPECT_EQ(place(a), "0 0 300 250");

    // Its forms, and back.
    ShowWindow(a, SW_SHOWMAXIMIZED);
    EXPECT_TRUE(IsZoomed(a));
    EXPECT_EQ(client(a), text({0, 0, 1920, 1080 + frame.top - frame.left}));
    ShowWindow(a, SW_MINIMIZE);
    EXPECT_TRUE(IsIconic(a));
    ShowWindow(a, SW_RESTORE);
    EXPECT_EQ(place(a), "0 0 300 250");

    const auto hit = [a](int x, int y) {
        return SendMessageW(a, WM_NCHITTEST, 0,
                            MAKELPARAM(static_cast<WORD>(x), static_cast<WORD>(y)));
    };
    EXPECT_EQ(hit(0, 0), HTTOPLEFT);
    EXPECT_EQ(hit(100, -frame.left + 5), HTCAPTION);
    EXPECT_EQ(hit(299, 249), HTBOTTOMRIGHT);
    EXPECT_EQ(hit(100, 100), HTCLIENT);
    EXPECT_EQ(hit(-1, 5), HTNOWHERE);
    DestroyWindow(a);
}

TEST_F(Geometry, OrderKeepsOwnedAndTopmostWindowsInFront) {
    auto* const a = traced_window(WS_POPUP);
    auto* const b = traced_window(WS_POPUP, a);
    auto* const c = traced_window(WS_POPUP);
    auto* const d = traced_window(WS_POPUP, b);
    const auto order = [&] {
        std::string all;
        for (auto* each = GetWindow(a, GW_HWNDFIRST); each != nullptr;
             each = GetWindow(each, GW_HWNDNEXT)) {
            all += m_trace.names[each];
        }
        return all;
    };
    const UINT flags = SWP_NOMOVE | SWP_NOSIZE;
    const struct {
        HWND window, after;
        const char* order;
    } cases[] = {
        {a, HWND_TOP, "DBAC"},     {c, HWND_TOP, "CDBA"}, {d, HWND_TOP, "DBAC"},
        {c, HWND_TOPMOST, "CDBA"}, {a, HWND_TOP, "CDBA"}, {c, HWND_NOTOPMOST, "CDBA"},
        {b, HWND_BOTTOM, "CDBA"},
    };
    for (const auto& each : cases) {
        SetWindowPos(each.window, each.after, 0, 0, 0, 0, flags);
        EXPECT_EQ(order(), each.order);
    }
    for (auto* const each : {a, c}) DestroyWindow(each);
}

TEST_F(Geometry, PointsFindTheDeepestWindowInFront) {
    auto* const a = traced_window(WS_POPUP | WS_VISIBLE);
    SetWindowPos(a, HWND_TOP, 0, 0, 100, 100, 0);
    auto* const b = traced_window(WS_CHILD | WS_VISIBLE, a);
    auto* const c = traced_window(WS_CHILD | WS_VISIBLE, b);
    MoveWindow(b, 10, 10, 80, 80, FALSE);
    MoveWindow(c, 10, 10, 20, 20, FALSE);
    EXPECT_EQ(WindowFromPoint({25, 25}), c);
    EnableWindow(c, FALSE);
    EXPECT_EQ(WindowFromPoint({25, 25}), b);
    EXPECT_EQ(WindowFromPoint({5, 5}), a);
    EXPECT_EQ(WindowFromPoint({500, 5}), nullptr);
    EXPECT_EQ(ChildWindowFromPoint(a, {25, 25}), b);
    EXPECT_EQ(ChildWindowFromPoint(a, {95, 95}), a);
    EXPECT_EQ(ChildWindowFromPoint(a, {100, 5}), nullptr);
    DestroyWindow(a);
}

TEST(Monitors, TheNearestOneIsFound) {
    tvutil2::set_monitors({{{0, 0, 1000, 1000}, {0, 0, 1000, 960}, 96},
                           {{1000, 0, 3000, 2000}, {1000, 0, 3000, 2000}, 192}});
    const struct {
        RECT rect;
        DWORD flags;
        UINT dpi;
    } cases[] = {
        {{0, 0, 10, 10}, MONITOR_DEFAULTTONULL, 96},
        {{900, 0, 1200, 10}, MONITOR_DEFAULTTONULL, 192},
        {{5000, 0, 5010, 10}, MONITOR_DEFAULTTONEAREST, 192},
        {{5000, 0, 5010, 10}, MONITOR_DEFAULTTOPRIMARY, 96},
        {{-500, 5000, -490, 5010}, MONITOR_DEFAULTTONULL, 0},
    };
    for (const auto& each : cases) {
        UINT x = 0;
        UINT y = 0;
        auto* const monitor = MonitorFromRect(&each.rect, each.flags);
        EXPECT_EQ(GetDpiForMonitor(monitor, MDT_EFFECTIVE_DPI, &x, &y),
                  each.dpi != 0 ? S_OK : E_INVALIDARG);
        EXPECT_EQ(x, each.dpi);
    }
    MONITORINFO info{sizeof info, {}, {}, 0};
    EXPECT_TRUE(GetMonitorInfoW(MonitorFromPoint({5, 5}, MONITOR_DEFAULTTONULL), &info));
    EXPECT_EQ(text(info.rcWork), "0 0 1000 960");
    EXPECT_EQ(info.dwFlags, MONITORINFOF_PRIMARY);
    tvutil2::set_monitors({});
    // Without a display there is one at the system's scale.
    tvutil2::set_system_dpi(144);
    EXPECT_EQ(GetSystemMetrics(SM_CYCAPTION), GetSystemMetricsForDpi(SM_CYCAPTION, 144));
    EXPECT_EQ(tvutil2::monitors().front().dpi, 144U);
}

}  // namespace
