#include "tvutil2/platform/draw/blit.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/draw/device_context.h"
#include "tvutil2/platform/draw/objects.h"
#include "tvutil2/platform/draw/surface.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

namespace tvutil2 {
namespace {

constexpr int kSide = 12;

class Board {
  public:
    Board() { return_to(0); }
    ~Board() { return_dc(m_dc); }
    Board(const Board&) = delete;
    Board& operator=(const Board&) = delete;

    void return_to(unsigned first) {
        for (int y = 0; y < kSide; ++y) {
            for (int x = 0; x < kSide; ++x) {
                at(x, y) = Surface::kBlack | (first + static_cast<unsigned>(y * kSide + x));
            }
        }
    }
    std::uint32_t& at(int x, int y) { return m_surface->row(y)[x]; }
    [[nodiscard]] HDC dc() const { return m_dc; }

  private:
    std::shared_ptr<Surface> m_surface = Surface::create(kSide, kSide);
    HDC m_dc = lend_dc(m_surface, {}, Region(m_surface->area()));
};

TEST(Blit, CombinesBitsAsTheOperationSays) {
    const struct {
        DWORD operation;
        std::uint32_t result;  // of pattern F0F0F0, source CCCCCC, target AAAAAA
    } kCases[] = {{SRCCOPY, 0xCCCCCC},   {SRCPAINT, 0xEEEEEE},   {SRCAND, 0x888888},
                  {SRCINVERT, 0x666666}, {NOTSRCCOPY, 0x333333}, {PATCOPY, 0xF0F0F0},
                  {PATINVERT, 0x5A5A5A}, {DSTINVERT, 0x555555},  {BLACKNESS, 0},
                  {WHITENESS, 0xFFFFFF}, {0x00B8074A, 0xB8B8B8}};
    const auto brush = CreateSolidBrush(RGB(0xF0, 0xF0, 0xF0));
    for (const auto& each : kCases) {
        Board target;
        Board source;
        SelectObject(target.dc(), brush);
        target.at(1, 1) = 0xFFAAAAAA;
        source.at(0, 0) = 0xFFCCCCCC;
        EXPECT_TRUE(BitBlt(target.dc(), 1, 1, 1, 1, source.dc(), 0, 0, each.operation));
        EXPECT_EQ(target.at(1, 1), Surface::kBlack | each.result) << std::hex << each.operation;
        EXPECT_EQ(target.at(2, 1), Surface::kBlack | 14U);
    }
    DeleteObject(brush);
}

TEST(Blit, CopiesWithinItselfInTheRightOrder) {
    std::mt19937 random(7);
    const auto number = [&] { return static_cast<int>(random() % 24) - 6; };
    for (int round = 0; round < 400; ++round) {
        Board board;
        Board copy;
        if (round % 2 != 0) {
            // A clip of several rectangles.
            IntersectClipRect(board.dc(), 1, 1, 11, 11);
            ExcludeClipRect(board.dc(), 4, 4, 7, 8);
        }
        const int x = number();
        const int y = number();
        const int width = number();
        const int height = number();
        const int from_x = number();
        const int from_y = number();
        const auto operation = round % 3 == 0 ? SRCINVERT : SRCCOPY;
        ASSERT_TRUE(BitBlt(board.dc(), x, y, width, height, board.dc(), from_x, from_y, operation));
        const auto left = std::min(x, x + width);
        const auto top = std::min(y, y + height);
        for (int row = 0; row < kSide; ++row) {
            for (int column = 0; column < kSide; ++column) {
                const auto sx = std::min(from_x, from_x + width) + column - left;
                const auto sy = std::min(from_y, from_y + height) + row - top;
                const bool is_in = column >= left && column < left + std::abs(width) &&
                                   row >= top && row < top + std::abs(height) && sx >= 0 &&
                                   sy >= 0 && sx < kSide && sy < kSide;
                const RECT pixel{column, row, column + 1, row + 1};
                auto wanted = copy.at(column, row);
                if (is_in && RectVisible(board.dc(), &pixel)) {
                    const auto source = copy.at(sx, sy);
                    wanted = operation == SRCCOPY ? source : Surface::kBlack | (source ^ wanted);
                }
                ASSERT_EQ(board.at(column, row), wanted) << round;
            }
        }
    }
}

TEST(Blit, StretchesPixelsAndMirrors) {
    Board target;
    Board source;
    StretchBlt(target.dc(), 0, 0, 4, 2, source.dc(), 3, 0, 2, 1, SRCCOPY);
    EXPECT_EQ(target.at(0, 1), source.at(3, 0));
    EXPECT_EQ(target.at(1, 0), source.at(3, 0));
    EXPECT_EQ(target.at(3, 1), source.at(4, 0));
    StretchBlt(target.dc(), 4, 4, -4, 1, source.dc(), 0, 2, 4, 1, SRCCOPY);
    EXPECT_EQ(target.at(0, 4), source.at(3, 2));
    EXPECT_EQ(target.at(3, 4), source.at(0, 2));
    SetStretchBltMode(target.dc(), HALFTONE);
    source.at(0, 0) = 0xFF000000;
    source.at(1, 0) = 0xFFFFFFFF;
    EXPECT_TRUE(StretchBlt(target.dc(), 0, 0, 1, 1, source.dc(), 0, 0, 2, 1, SRCCOPY));
    EXPECT_NEAR(target.at(0, 0) & 0xFFU, 128, 3);
}

TEST(Blit, TakesAnyCoordinates) {
    constexpr auto kMost = std::numeric_limits<int>::max();
    constexpr auto kLeast = std::numeric_limits<int>::min();
    Board target;
    Board source;
    for (const int far : {kMost, kLeast}) {
        EXPECT_TRUE(BitBlt(target.dc(), far, far, kMost, kMost, source.dc(), far, far, SRCCOPY));
        EXPECT_TRUE(BitBlt(target.dc(), 0, 0, far, far, source.dc(), far, 0, SRCAND));
        for (const int mode : {COLORONCOLOR, HALFTONE}) {
            SetStretchBltMode(target.dc(), mode);
            EXPECT_TRUE(
                StretchBlt(target.dc(), far, 0, far, far, source.dc(), 0, far, far, 1, SRCCOPY));
            EXPECT_TRUE(StretchBlt(target.dc(), 0, 0, far, 5, source.dc(), 0, 0, 5, far, SRCCOPY));
        }
    }
    EXPECT_FALSE(BitBlt(target.dc(), 0, 0, 1, 1, nullptr, 0, 0, SRCCOPY));
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    EXPECT_FALSE(PatBlt(target.dc(), 0, 0, 1, 1, SRCCOPY));
}

}  // namespace
}  // namespace tvutil2
