#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/draw/device_context.h"
#include "tvutil2/platform/draw/objects.h"
#include "tvutil2/platform/draw/shapes.h"
#include "tvutil2/platform/draw/surface.h"
#include "tvutil2/platform/draw/theme.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace tvutil2 {
namespace {

constexpr COLORREF kInk = RGB(200, 10, 30);

// A surface of 12 by 8 with a context on it, and what was drawn as a picture: '#' for ink.
class Sheet {
  public:
    explicit Sheet(POINT origin = {}, const Region& clip = Region({0, 0, 12, 8}))
        : m_dc(lend_dc(m_surface, origin, clip)) {}
    ~Sheet() { return_dc(m_dc); }
    Sheet(const Sheet&) = delete;
    Sheet& operator=(const Sheet&) = delete;

    [[nodiscard]] HDC dc() const { return m_dc; }
    [[nodiscard]] std::vector<std::string> picture() const {
        std::vector<std::string> rows;
        for (int y = 0; y < 8; ++y) {
            std::string row;
            for (int x = 0; x < 12; ++x) row += m_surface->row(y)[x] == 0xFFC80A1E ? '#' : '.';
            rows.push_back(row);
        }
        while (!rows.empty() && rows.back() == "............") rows.pop_back();
        return rows;
    }

  private:
    std::shared_ptr<Surface> m_surface = Surface::create(12, 8);
    HDC m_dc;
};

using Picture = std::vector<std::string>;

TEST(Drawing, FillsInsideClipAndOrigin) {
    Region clip({1, 0, 11, 4});
    clip.subtract(RECT{4, 1, 6, 2});
    const Sheet sheet({2, 1}, clip);
    const auto brush = CreateSolidBrush(kInk);
    const RECT rect{0, 0, 5, 2};
    EXPECT_EQ(FillRect(sheet.dc(), &rect, brush), 1);
    EXPECT_EQ(sheet.picture(), (Picture{"............", "..##..#.....", "..#####....."}));
    RECT box{};
    EXPECT_EQ(GetClipBox(sheet.dc(), &box), COMPLEXREGION);
    EXPECT_TRUE(same_rect(box, {-1, -1, 9, 3}));
    DeleteObject(brush);
}

TEST(Drawing, LinesAndRectanglesAreExact) {
    const Sheet sheet;
    const auto pen = CreatePen(PS_SOLID, 1, kInk);
    SelectObject(sheet.dc(), pen);
    SelectObject(sheet.dc(), GetStockObject(NULL_BRUSH));
    Rectangle(sheet.dc(), 1, 1, 5, 4);
    MoveToEx(sheet.dc(), 6, 0, nullptr);
    LineTo(sheet.dc(), 9, 0);
    LineTo(sheet.dc(), 9, 3);
    MoveToEx(sheet.dc(), 9, 5, nullptr);
    LineTo(sheet.dc(), 6, 5);
    const RECT rect{10, 1, 12, 3};
    FrameRect(sheet.dc(), &rect, GetSysColorBrush(COLOR_WINDOW));
    EXPECT_EQ(GetPixel(sheet.dc(), 11, 2), GetSysColor(COLOR_WINDOW));
    EXPECT_EQ(sheet.picture(), (Picture{"......####..", ".####....#..", ".#..#....#..",
                                        ".####.......", "............", ".......###.."}));
    DeleteObject(pen);
}

TEST(Drawing, TakesAnyCoordinates) {
    const Sheet sheet({5, 5});
    constexpr auto kMost = std::numeric_limits<int>::max();
    constexpr auto kLeast = std::numeric_limits<int>::min();
    const RECT all{kLeast, kLeast, kMost, kMost};
    const auto pen = CreatePen(PS_SOLID, kMost, RGB(1, 2, 3));
    SelectObject(sheet.dc(), pen);
    EXPECT_TRUE(Rectangle(sheet.dc(), kLeast, kLeast, kMost, kMost));
    EXPECT_TRUE(FrameRect(sheet.dc(), &all, GetSysColorBrush(COLOR_WINDOW)));
    EXPECT_TRUE(MoveToEx(sheet.dc(), kLeast, 0, nullptr));
    EXPECT_TRUE(LineTo(sheet.dc(), kMost, 0));
    EXPECT_TRUE(LineTo(sheet.dc(), kLeast, kMost));
    EXPECT_TRUE(Ellipse(sheet.dc(), kLeast, kLeast, kMost, kMost));
    EXPECT_TRUE(InvertRect(sheet.dc(), &all));
    EXPECT_EQ(IntersectClipRect(sheet.dc(), kMost, kMost, kLeast, kLeast), NULLREGION);
    EXPECT_EQ(SetPixel(sheet.dc(), kMost, kLeast, 0), CLR_INVALID);
    DeleteObject(pen);
}

TEST(Drawing, BrushesMayBeSystemColours) {
    const Sheet sheet;
    const RECT rect{0, 0, 1, 1};
    for (int index = 0; index <= COLOR_MENUBAR; ++index) {
        EXPECT_EQ(FillRect(sheet.dc(), &rect, reinterpret_cast<HBRUSH>(std::intptr_t{index} + 1)),
                  1);
        EXPECT_EQ(GetPixel(sheet.dc(), 0, 0), GetSysColor(index));
    }
    EXPECT_EQ(FillRect(sheet.dc(), &rect, reinterpret_cast<HBRUSH>(std::intptr_t{32})), 0);
    EXPECT_EQ(GetSysColorBrush(31), nullptr);
    set_theme_mode(ThemeMode::dark);
    FillRect(sheet.dc(), &rect, GetSysColorBrush(COLOR_WINDOW));
    EXPECT_EQ(GetPixel(sheet.dc(), 0, 0), GetSysColor(COLOR_WINDOW));
    EXPECT_NE(GetPixel(sheet.dc(), 0, 0), RGB(255, 255, 255));
}

TEST(Drawing, ContextsKeepWhatIsDeletedWhileSelected) {
    const Sheet sheet;
    const auto pen = CreatePen(PS_SOLID, 1, kInk);
    const auto old = SelectObject(sheet.dc(), pen);
    EXPECT_EQ(old, GetStockObject(BLACK_PEN));
    EXPECT_TRUE(DeleteObject(pen));
    EXPECT_FALSE(DeleteObject(pen));
    MoveToEx(sheet.dc(), 0, 0, nullptr);
    LineTo(sheet.dc(), 2, 0);
    EXPECT_EQ(sheet.picture(), Picture{"##.........."});
    EXPECT_EQ(SelectObject(sheet.dc(), old), pen);
    EXPECT_EQ(SelectObject(sheet.dc(), pen), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
}

TEST(Drawing, ABitmapIsInOneMemoryContext) {
    const auto a = CreateCompatibleDC(nullptr);
    const auto b = CreateCompatibleDC(a);
    const auto bitmap = CreateCompatibleBitmap(a, 0, 7);
    BITMAP record{};
    EXPECT_EQ(GetObjectW(bitmap, sizeof record, &record), static_cast<int>(sizeof record));
    EXPECT_EQ(record.bmWidth * 10 + record.bmHeight, 11);
    const auto old = SelectObject(a, bitmap);
    EXPECT_NE(old, nullptr);
    EXPECT_EQ(SelectObject(b, bitmap), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_BUSY);
    EXPECT_FALSE(DeleteObject(bitmap));
    EXPECT_EQ(SelectObject(Sheet().dc(), bitmap), nullptr);
    EXPECT_TRUE(DeleteDC(a));  // sets it free
    EXPECT_EQ(SelectObject(b, bitmap), old);
    EXPECT_EQ(SelectObject(b, old), bitmap);
    EXPECT_TRUE(DeleteObject(bitmap));
    EXPECT_TRUE(DeleteDC(b));
    EXPECT_FALSE(DeleteDC(b));
    EXPECT_EQ(CreateCompatibleBitmap(b, 1, 1), nullptr);
    EXPECT_EQ(Surface::create(Surface::kLongest, Surface::kLongest), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_NOT_ENOUGH_MEMORY);
}

TEST(Drawing, StatesComeBackInOrder) {
    const Sheet sheet;
    const auto dc = sheet.dc();
    SetTextColor(dc, 1);
    EXPECT_EQ(SaveDC(dc), 1);
    SetTextColor(dc, 2);
    IntersectClipRect(dc, 0, 0, 1, 1);
    SetViewportOrgEx(dc, 3, 3, nullptr);
    EXPECT_EQ(SaveDC(dc), 2);
    SetTextColor(dc, 3);
    EXPECT_FALSE(RestoreDC(dc, 3));
    EXPECT_TRUE(RestoreDC(dc, -1));
    EXPECT_EQ(GetTextColor(dc), 2U);
    EXPECT_TRUE(RestoreDC(dc, 1));
    EXPECT_EQ(GetTextColor(dc), 1U);
    RECT box{};
    EXPECT_EQ(GetClipBox(dc, &box), SIMPLEREGION);
    EXPECT_TRUE(same_rect(box, {0, 0, 12, 8}));
    EXPECT_FALSE(RestoreDC(dc, -1));
}

// Contexts of several threads on one surface, and one context's pixels read by another thread.
TEST(Drawing, ThreadsDrawOnTheSamePixels) {
    const auto surface = Surface::create(64, 64);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&surface, i] {
            const auto dc = lend_dc(surface, {i * 16, 0}, Region(surface->area()));
            const auto brush = CreateSolidBrush(RGB(i, 0, 0));
            const RECT all{0, 0, 16, 64};
            for (int n = 0; n < 200; ++n) {
                FillRect(dc, &all, brush);
                GetPixel(dc, 20, 20);
            }
            DeleteObject(brush);
            return_dc(dc);
        });
    }
    for (auto& thread : threads) thread.join();
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(surface->row(63)[i * 16 + 15], 0xFF000000U | static_cast<unsigned>(i) << 16U);
    }
}

}  // namespace
}  // namespace tvutil2
