// Points, sizes and rectangles with arithmetic.
#pragma once

#include "tvutil2/platform/draw/rect.h"

#include <utility>

class CSize : public SIZE {
  public:
    constexpr CSize() : SIZE{0, 0} {}
    constexpr CSize(int width, int height) : SIZE{width, height} {}
    constexpr CSize(const SIZE& size) : SIZE(size) {}
    friend constexpr bool operator==(const CSize& a, const CSize& b) {
        return a.cx == b.cx && a.cy == b.cy;
    }
    friend constexpr CSize operator+(const CSize& a, const CSize& b) {
        return {tvutil2::plus(a.cx, b.cx), tvutil2::plus(a.cy, b.cy)};
    }
};

class CPoint : public POINT {
  public:
    constexpr CPoint() : POINT{0, 0} {}
    constexpr CPoint(int from_left, int from_top) : POINT{from_left, from_top} {}
    constexpr CPoint(const POINT& point) : POINT(point) {}
    void Offset(int by_x, int by_y) {
        x = tvutil2::plus(x, by_x);
        y = tvutil2::plus(y, by_y);
    }
    friend constexpr bool operator==(const CPoint& a, const CPoint& b) {
        return a.x == b.x && a.y == b.y;
    }
};

/// Right and bottom are outside.
class CRect : public RECT {
  public:
    constexpr CRect() : RECT{0, 0, 0, 0} {}
    constexpr CRect(int from_left, int from_top, int to_right, int to_bottom)
        : RECT{from_left, from_top, to_right, to_bottom} {}
    constexpr CRect(const RECT& rect) : RECT(rect) {}
    constexpr CRect(const POINT& at, const SIZE& size)
        : RECT{at.x, at.y, tvutil2::plus(at.x, size.cx), tvutil2::plus(at.y, size.cy)} {}

    operator RECT*() { return this; }
    operator const RECT*() const { return this; }

    [[nodiscard]] constexpr int Width() const {
        return tvutil2::saturated(std::int64_t{right} - left);
    }
    [[nodiscard]] constexpr int Height() const {
        return tvutil2::saturated(std::int64_t{bottom} - top);
    }
    [[nodiscard]] constexpr CSize Size() const { return {Width(), Height()}; }
    [[nodiscard]] constexpr CPoint TopLeft() const { return {left, top}; }
    [[nodiscard]] constexpr CPoint BottomRight() const { return {right, bottom}; }
    [[nodiscard]] constexpr CPoint CenterPoint() const {
        return {tvutil2::saturated((std::int64_t{left} + right) / 2),
                tvutil2::saturated((std::int64_t{top} + bottom) / 2)};
    }
    [[nodiscard]] constexpr BOOL IsRectEmpty() const {
        return tvutil2::is_empty(*this) ? TRUE : FALSE;
    }
    [[nodiscard]] BOOL PtInRect(POINT point) const { return ::PtInRect(this, point); }

    void SetRect(int from_left, int from_top, int to_right, int to_bottom) {
        ::SetRect(this, from_left, from_top, to_right, to_bottom);
    }
    void SetRectEmpty() { ::SetRectEmpty(this); }
    void OffsetRect(int x, int y) { ::OffsetRect(this, x, y); }
    void InflateRect(int x, int y) { ::InflateRect(this, x, y); }
    void DeflateRect(int x, int y) { ::InflateRect(this, -x, -y); }
    BOOL IntersectRect(const RECT* a, const RECT* b) { return ::IntersectRect(this, a, b); }
    BOOL UnionRect(const RECT* a, const RECT* b) { return ::UnionRect(this, a, b); }
    /// Swaps what stands the wrong way round.
    void NormalizeRect() {
        if (left > right) std::swap(left, right);
        if (top > bottom) std::swap(top, bottom);
    }
    friend constexpr bool operator==(const CRect& a, const CRect& b) {
        return tvutil2::same_rect(a, b);
    }
};
