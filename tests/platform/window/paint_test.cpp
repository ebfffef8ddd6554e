#include "tvutil2/platform/window/paint.h"

#include "tvutil2/platform/draw/device_context.h"
#include "tvutil2/platform/draw/objects.h"
#include "tvutil2/platform/draw/shapes.h"
#include "tvutil2/platform/draw/surface.h"
#include "tvutil2/platform/picture/icons.h"
#include "tvutil2/platform/window/geometry.h"
#include "tvutil2/platform/window/show.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <random>

#include "tests/platform/window/trace.h"

namespace {

using tests::Trace;
using tests::traced_window;

class Painting : public testing::Test {
  protected:
    Painting() {
        setenv("TVUTIL_DISPLAY", "offscreen", 1);
        m_trace = {};
    }
    ~Painting() override { m_trace = {}; }

    // What is heard of painting while the loop has something to do.
    std::string pump() {
        m_trace.lines.clear();
        MSG message;
        while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
        std::string heard;
        for (const auto& line : m_trace.lines) {
            const bool is_painting =
                line.find("PAINT") != std::string::npos || line.find("ERASE") != std::string::npos;
            if (is_painting) heard += (heard.empty() ? "" : ", ") + line;
        }
        return heard;
    }

    Trace& m_trace = Trace::current();
};

TEST_F(Painting, IsAskedForFromTheTopAndOnlyWhereItIsDue) {
    std::string erased;
    m_trace.handler = [&](HWND window, UINT message, WPARAM wparam, LPARAM lparam) -> LRESULT {
        if (message == WM_PAINT) {
            PAINTSTRUCT paint;
            BeginPaint(window, &paint);
            const auto& rect = paint.rcPaint;
            erased = std::to_string(rect.left) + " " + std::to_string(rect.top) + " " +
                     std::to_string(rect.right) + " " + std::to_string(rect.bottom) +
                     (paint.fErase ? " old" : "");
            EndPaint(window, &paint);
            return 0;
        }
        return message == WM_ERASEBKGND ? 1 : DefWindowProcW(window, message, wparam, lparam);
    };
    auto* const a = traced_window(WS_POPUP | WS_VISIBLE);
    SetWindowPos(a, nullptr, 0, 0, 100, 100, SWP_NOZORDER);
    traced_window(WS_CHILD | WS_VISIBLE, a);
    auto* const c = traced_window(WS_CHILD | WS_VISIBLE, a);
    MoveWindow(c, 50, 50, 20, 20, TRUE);
    EXPECT_EQ(pump(), "A PAINT, A ERASE, B PAINT, B ERASE, C PAINT, C ERASE");
    EXPECT_EQ(pump(), "");
    const RECT part{2, 3, 9, 8};
    InvalidateRect(c, &part, FALSE);
    EXPECT_EQ(pump(), "C PAINT");
    EXPECT_EQ(erased, "2 3 9 8");
    // A corner that is taken out leaves the box as it is.
    InvalidateRect(c, &part, TRUE);
    const RECT corner{2, 3, 4, 4};
    ValidateRect(c, &corner);
    RECT box{};
    EXPECT_TRUE(GetUpdateRect(c, &box, FALSE));
    EXPECT_EQ(box.left, 2);
    EXPECT_EQ(box.bottom, 8);
    ValidateRect(c, nullptr);
    EXPECT_FALSE(GetUpdateRect(c, &box, FALSE));
    EXPECT_EQ(pump(), "");
    // The parent takes its children along; what a hidden one covered is the parent's to paint.
    InvalidateRect(a, nullptr, FALSE);
    EXPECT_EQ(pump(), "A PAINT, B PAINT, C PAINT");
    ShowWindow(c, SW_HIDE);
    EXPECT_EQ(pump(), "A PAINT, A ERASE");
    EXPECT_EQ(erased, "50 50 70 70");
    InvalidateRect(c, nullptr, TRUE);
    EXPECT_EQ(pump(), "");
    UpdateWindow(a);
    EXPECT_EQ(pump(), "");
    DestroyWindow(a);
}

// The search goes on where it was; what happens in front of that place counts all the same.
TEST_F(Painting, ComesBackForWhatChangesInFrontOfIt) {
    auto* const a = traced_window(WS_POPUP | WS_VISIBLE);
    SetWindowPos(a, nullptr, 0, 0, 100, 100, SWP_NOZORDER);
    HWND children[4];
    for (int i = 0; i < 4; ++i) {
        children[i] = traced_window(WS_CHILD | WS_VISIBLE, a);
        MoveWindow(children[i], i * 20, 0, 20, 20, TRUE);
    }
    pump();
    auto* const b = children[0];
    auto* const c = children[1];
    auto* const d = children[2];
    const struct {
        std::function<void()> change;  // when C is painted
        const char* heard;
    } cases[]{
        {[] {}, "B PAINT, C PAINT, D PAINT, E PAINT"},
        {[=] { InvalidateRect(b, nullptr, FALSE); }, "B PAINT, C PAINT, B PAINT, D PAINT, E PAINT"},
        {[=] { ShowWindow(d, SW_HIDE); }, "B PAINT, C PAINT, A PAINT, E PAINT"},
        {[=] { DestroyWindow(c); }, "B PAINT, C PAINT, A PAINT, E PAINT"},
    };
    for (const auto& row : cases) {
        for (auto* const child : children) InvalidateRect(child, nullptr, FALSE);
        m_trace.handler = [&](HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
            if (message == WM_ERASEBKGND) return LRESULT{1};
            const auto result = DefWindowProcW(window, message, wparam, lparam);
            if (message == WM_PAINT && window == c) row.change();
            return result;
        };
        auto all = pump();
        for (const char* const erased : {", A ERASE", ", D ERASE"}) {
            if (const auto at = all.find(erased); at != std::string::npos) {
                all.erase(at, std::string_view(erased).size());
            }
        }
        EXPECT_EQ(all, row.heard);
    }
}

TEST_F(Painting, TellsWhetherTheBackgroundIsErased) {
    BOOL old = FALSE;
    LRESULT answer = 0;
    m_trace.handler = [&](HWND window, UINT message, WPARAM wparam, LPARAM lparam) -> LRESULT {
        if (message == WM_ERASEBKGND) return answer;
        if (message != WM_PAINT) return DefWindowProcW(window, message, wparam, lparam);
        PAINTSTRUCT paint;
        BeginPaint(window, &paint);
        old = paint.fErase;
        EndPaint(window, &paint);
        return 0;
    };
    auto* const a = traced_window(WS_POPUP | WS_VISIBLE);
    for (const LRESULT each : {0, 1}) {
        answer = each;
        InvalidateRect(a, nullptr, TRUE);
        UpdateWindow(a);
        EXPECT_EQ(old, each == 0 ? TRUE : FALSE);
    }
    DestroyWindow(a);
}

// Contexts of what isn't on a display measure, and let nothing through.
TEST_F(Painting, ContextsAreThereForEveryWindow) {
    auto* const hidden = traced_window(WS_POPUP);
    auto* const shown = traced_window(WS_POPUP | WS_VISIBLE);
    for (auto* const each : {static_cast<HWND>(nullptr), hidden, shown}) {
        auto* const context = GetDC(each);
        ASSERT_NE(context, nullptr);
        EXPECT_EQ(GetDeviceCaps(context, LOGPIXELSX), 96);
        EXPECT_EQ(WindowFromDC(context), each);
        RECT box{};
        GetClipBox(context, &box);
        EXPECT_EQ(box.right > box.left, each == shown);
        EXPECT_EQ(ReleaseDC(each, context), 1);
        EXPECT_EQ(ReleaseDC(each, context), 0);
    }
    EXPECT_EQ(tvutil2::picture_of(hidden), nullptr);
    DestroyWindow(hidden);
    DestroyWindow(shown);
}

// Windows of one colour each, changed at random: what the display shows is what their places and
// their order say, although only what is out of date is ever painted.
class Tree {
  public:
    struct Node {
        HWND window;
        std::uint32_t color;
    };

    explicit Tree(unsigned seed) : m_random(seed) {
        Trace::current().handler = [](HWND window, UINT message, WPARAM wparam,
                                      LPARAM lparam) -> LRESULT {
            if (message != WM_PAINT) return DefWindowProcW(window, message, wparam, lparam);
            PAINTSTRUCT paint;
            auto* const context = BeginPaint(window, &paint);
            auto* const brush =
                CreateSolidBrush(static_cast<COLORREF>(GetWindowLongPtrW(window, GWLP_USERDATA)));
            FillRect(context, &paint.rcPaint, brush);
            DeleteObject(brush);
            EndPaint(window, &paint);
            return 0;
        };
        add(nullptr);
        SetWindowPos(m_nodes[0].window, nullptr, 0, 0, kSize, kSize, SWP_NOZORDER);
        ShowWindow(m_nodes[0].window, SW_SHOW);
        for (int i = 0; i < 12; ++i) add(m_nodes[number(static_cast<int>(m_nodes.size()))].window);
    }
    ~Tree() { DestroyWindow(m_nodes[0].window); }

    void change() {
        const auto& node = m_nodes[1 + number(static_cast<int>(m_nodes.size()) - 1)];
        const int x = static_cast<int>(number(80)) - 10;
        const int y = static_cast<int>(number(80)) - 10;
        const int width = static_cast<int>(number(60));
        const int height = static_cast<int>(number(60));
        const RECT part{x, y, x + width, y + height};
        switch (number(6)) {
            case 0:
                MoveWindow(node.window, x, y, width, height, TRUE);
                break;
            case 1:
                ShowWindow(node.window, number(3) == 0 ? SW_HIDE : SW_SHOW);
                break;
            case 2:
                SetWindowPos(node.window, number(2) == 0 ? HWND_TOP : HWND_BOTTOM, 0, 0, 0, 0,
                             SWP_NOMOVE | SWP_NOSIZE);
                break;
            case 3:
                InvalidateRect(node.window, &part, FALSE);
                break;
            case 4:
                SetWindowPos(m_nodes[0].window, nullptr, 0, 0, kSize - width, kSize - height,
                             SWP_NOZORDER | SWP_NOMOVE);
                break;
            default:
                RedrawWindow(node.window, nullptr, nullptr, RDW_UPDATENOW);
                break;
        }
    }

    void expect_right_picture() {
        const auto picture = tvutil2::picture_of(m_nodes[0].window);
        ASSERT_NE(picture, nullptr);
        auto model = tvutil2::Surface::create(picture->width(), picture->height());
        paint(m_nodes[0].window, picture->area(), *model);
        for (int y = 0; y < picture->height(); ++y) {
            ASSERT_TRUE(
                std::equal(model->row(y), model->row(y) + picture->width(), picture->row(y)))
                << "in row " << y;
        }
    }

  private:
    static constexpr int kSize = 120;

    std::size_t number(int below) {
        return static_cast<std::size_t>(m_random()) % static_cast<std::size_t>(below);
    }

    void add(HWND parent) {
        const DWORD style = WS_CLIPCHILDREN | WS_CLIPSIBLINGS |
                            (parent == nullptr ? WS_POPUP : WS_CHILD | WS_VISIBLE);
        auto* const window = traced_window(style, parent);
        const auto color = static_cast<std::uint32_t>(m_random()) & 0xFFFFFF;
        SetWindowLongPtrW(window, GWLP_USERDATA, static_cast<LONG_PTR>(color));
        m_nodes.push_back({window, color});
        InvalidateRect(window, nullptr, FALSE);
    }

    // The lowest first, each over what is behind it.
    void paint(HWND window, RECT clip, tvutil2::Surface& model) {
        RECT place{};
        GetWindowRect(window, &place);
        RECT part{};
        if (!IsWindowVisible(window) || !IntersectRect(&part, &place, &clip)) return;
        const auto color = static_cast<std::uint32_t>(GetWindowLongPtrW(window, GWLP_USERDATA));
        const auto pixel = 0xFF000000U | (color & 0xFF) << 16 | (color & 0xFF00) | color >> 16;
        for (LONG y = part.top; y < part.bottom; ++y) {
            std::fill(model.row(y) + part.left, model.row(y) + part.right, pixel);
        }
        auto* const first = GetWindow(window, GW_CHILD);
        if (first == nullptr) return;
        for (auto* each = GetWindow(first, GW_HWNDLAST); each != nullptr;
             each = GetWindow(each, GW_HWNDPREV)) {
            paint(each, part, model);
        }
    }

    std::minstd_rand m_random;
    std::vector<Node> m_nodes;
};

// Where the frame is the window's own.
TEST_F(Painting, TheIconOfAWindowStandsInFrontOfItsTitle) {
    auto* const window = traced_window(WS_OVERLAPPEDWINDOW | WS_VISIBLE, nullptr, u"Title");
    SetWindowPos(window, nullptr, 0, 0, 200, 100, SWP_NOZORDER);
    constexpr std::uint32_t kGreen = 0xFF00FF00;
    auto* const icon = tvutil2::make_icon(tvutil2::Surface::create(32, 32, 96, kGreen), {32, 32});
    const auto green = [&] {
        pump();
        const auto picture = tvutil2::picture_of(window);
        RECT found{200, 100, 0, 0};
        for (LONG y = 0; y < 100; ++y) {
            for (LONG x = 0; x < 200; ++x) {
                if (picture->row(y)[x] != kGreen) continue;
                found = {std::min(found.left, x), std::min(found.top, y),
                         std::max(found.right, x + 1), std::max(found.bottom, y + 1)};
            }
        }
        return found;
    };
    EXPECT_EQ(green().right, 0);
    SendMessageW(window, WM_SETICON, ICON_BIG, reinterpret_cast<LPARAM>(icon));
    const auto place = green();
    EXPECT_EQ(place.right - place.left, 16);
    EXPECT_EQ(place.bottom - place.top, 16);
    EXPECT_LT(place.left, 20);
    POINT client{0, 0};
    ClientToScreen(window, &client);
    EXPECT_LT(place.bottom, client.y);
    SendMessageW(window, WM_SETICON, ICON_BIG, 0);
    EXPECT_EQ(green().right, 0);
    DestroyWindow(window);
    DestroyIcon(icon);
}

TEST_F(Painting, RandomChangesShowTheRightPicture) {
    for (unsigned seed = 1; seed <= 30; ++seed) {
        SCOPED_TRACE(seed);
        Tree tree(seed);
        for (int i = 0; i < 60; ++i) {
            tree.change();
            if (i % 3 == 0) tree.expect_right_picture();
            if (HasFatalFailure()) return;
        }
    }
}

}  // namespace
