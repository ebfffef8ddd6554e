// Sets of pixels: what is to be painted, and where painting is let through.
//
// A region is kept as rectangles in bands: sorted from top to bottom and from left to right, those
// of one band with the same top and bottom, none touching its neighbour in the band. So every set
// has one form only. (The idea is that of the X Window System's regions.)
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"

#include <span>
#include <vector>

namespace tvutil2 {

/// A value, for one thread at a time. Coordinates beyond +-kFarthest are cut off. One rectangle
/// needs no allocation.
class TVUTIL_API Region {
  public:
    static constexpr LONG kFarthest = LONG{1} << 27;

    Region() = default;
    explicit Region(const RECT& rect);
    /// Any number together, which may overlap.
    [[nodiscard]] static Region of(std::span<const RECT> rects);

    [[nodiscard]] bool is_empty() const { return m_bounds.left >= m_bounds.right; }
    [[nodiscard]] bool is_rectangle() const { return m_rects.empty() && !is_empty(); }
    /// All zero when empty.
    [[nodiscard]] const RECT& bounds() const { return m_bounds; }
    [[nodiscard]] std::span<const RECT> rects() const {
        return m_rects.empty() ? std::span(&m_bounds, is_empty() ? 0 : 1)
                               : std::span<const RECT>(m_rects);
    }

    [[nodiscard]] bool contains(POINT point) const;
    /// Whether the region holds any pixel of a rectangle.
    [[nodiscard]] bool touches(const RECT& rect) const;
    /// Whether it holds all of them; an empty rectangle is held by any.
    [[nodiscard]] bool covers(const RECT& rect) const;

    void unite(const Region& other);
    void unite(const RECT& rect) { unite(Region(rect)); }
    void subtract(const Region& other);
    void subtract(const RECT& rect) { subtract(Region(rect)); }
    void intersect(const Region& other);
    void intersect(const RECT& rect) { intersect(Region(rect)); }
    /// What is in one of both and not in the other.
    void exclusive_or(const Region& other);
    void offset(LONG x, LONG y);

    TVUTIL_API friend bool operator==(const Region& a, const Region& b);

  private:
    enum class Operation { unite, subtract, intersect, exclusive_or };
    static Region combined(const Region& a, const Region& b, Operation operation);
    void settle();

    RECT m_bounds{};
    std::vector<RECT> m_rects;  // none when m_bounds is all there is
};

}  // namespace tvutil2
