#include "tvutil2/platform/draw/region.h"

#include "tvutil2/platform/base/last_error.h"
#include "tvutil2/platform/draw/objects.h"
#include "tvutil2/platform/draw/rect.h"

#include <gtest/gtest.h>

#include <bitset>
#include <random>

namespace tvutil2 {
namespace {

constexpr int kSide = 24;
using Pixels = std::bitset<kSide * kSide>;

Pixels pixels_of(const RECT& rect) {
    Pixels pixels;
    for (auto y = rect.top; y < rect.bottom; ++y) {
        for (auto x = rect.left; x < rect.right; ++x) {
            pixels.set(static_cast<std::size_t>(y) * kSide + static_cast<std::size_t>(x));
        }
    }
    return pixels;
}

Pixels pixels_of(const Region& region) {
    Pixels pixels;
    for (const auto& rect : region.rects()) {
        EXPECT_TRUE((pixels & pixels_of(rect)).none()) << "rectangles overlap";
        pixels |= pixels_of(rect);
    }
    return pixels;
}

// One set has one form: sorted bands, apart from their neighbours, none that continues another.
void expect_canonical(const Region& region) {
    Region again;
    for (const auto& rect : region.rects()) again.unite(rect);
    EXPECT_EQ(region, again);
    RECT bounds{};
    for (const auto& rect : region.rects()) {
        const auto before = bounds;
        UnionRect(&bounds, &before, &rect);
    }
    EXPECT_TRUE(same_rect(bounds, region.bounds()));
}

TEST(Region, CombinesAsSetsOfPixels) {
    std::mt19937 random(20);
    const auto number = [&](int end) {
        return static_cast<int>(random() % static_cast<unsigned>(end));
    };
    const auto any_rect = [&] {
        const int x = number(kSide);
        const int y = number(kSide);
        return RECT{x, y, x + number(kSide - x + 1), y + number(kSide - y + 1)};
    };
    for (int round = 0; round < 200; ++round) {
        Region region;
        Pixels model;
        for (int step = 0; step < 12; ++step) {
            Region other(any_rect());
            other.unite(any_rect());
            const auto with = pixels_of(other);
            switch (number(5)) {
                case 0:
                    region.subtract(other);
                    model &= ~with;
                    break;
                case 1:
                    region.intersect(other);
                    model &= with;
                    break;
                case 2:
                    region.exclusive_or(other);
                    model ^= with;
                    break;
                default:
                    region.unite(other);
                    model |= with;
            }
            ASSERT_EQ(pixels_of(region), model);
            expect_canonical(region);
            const auto rect = any_rect();
            EXPECT_EQ(region.touches(rect), (model & pixels_of(rect)).any());
            EXPECT_EQ(region.covers(rect), (model & pixels_of(rect)) == pixels_of(rect));
            const POINT point{number(kSide), number(kSide)};
            EXPECT_EQ(region.contains(point),
                      model.test(static_cast<std::size_t>(point.y * kSide + point.x)));
        }
    }
}

TEST(Region, HoldsManyRectanglesTogether) {
    std::mt19937 random(21);
    const auto number = [&] { return static_cast<LONG>(random() % kSide); };
    for (std::size_t count = 0; count < 40; ++count) {
        std::vector<RECT> rects(count);
        for (auto& rect : rects) rect = {number(), number(), number(), number()};
        Region one_by_one;
        for (const auto& rect : rects) one_by_one.unite(rect);
        ASSERT_EQ(Region::of(rects), one_by_one) << count;
    }
}

TEST(Region, StopsAtTheFarthestCoordinates) {
    constexpr auto kMost = std::numeric_limits<LONG>::max();
    constexpr auto kLeast = std::numeric_limits<LONG>::min();
    Region region(RECT{kLeast, kLeast, kMost, kMost});
    EXPECT_EQ(region.bounds().right, Region::kFarthest);
    region.subtract(RECT{0, 0, 10, kMost});
    EXPECT_EQ(region.rects().size(), 3U);
    region.offset(kMost, kMost);
    EXPECT_TRUE(region.is_empty());
    EXPECT_TRUE(Region(RECT{5, 5, 5, 9}).is_empty());
}

TEST(Region, HandlesTellWhatTheyHold) {
    const auto a = CreateRectRgn(10, 10, 0, 0);  // corners in either order
    const auto b = CreateRectRgn(5, 5, 20, 20);
    EXPECT_EQ(CombineRgn(a, a, b, RGN_DIFF), COMPLEXREGION);
    RECT box{};
    EXPECT_EQ(GetRgnBox(a, &box), COMPLEXREGION);
    EXPECT_TRUE(same_rect(box, {0, 0, 10, 10}));
    EXPECT_FALSE(PtInRegion(a, 7, 7));
    EXPECT_EQ(OffsetRgn(a, 5, 5), COMPLEXREGION);
    EXPECT_TRUE(PtInRegion(a, 9, 9));
    EXPECT_EQ(CombineRgn(a, b, b, RGN_XOR), NULLREGION);
    EXPECT_EQ(CombineRgn(a, b, b, 9), ERROR_REGION);
    EXPECT_TRUE(DeleteObject(b));
    EXPECT_EQ(CombineRgn(a, a, b, RGN_OR), ERROR_REGION);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
    EXPECT_FALSE(DeleteObject(b));
    EXPECT_TRUE(DeleteObject(a));
}

}  // namespace
}  // namespace tvutil2
