#include "tvutil2/platform/draw/region.h"

#include "tvutil2/platform/draw/rect.h"

#include <utility>

namespace tvutil2 {
namespace {

using Rects = std::span<const RECT>;

constexpr RECT kEverything{-Region::kFarthest, -Region::kFarthest, Region::kFarthest,
                           Region::kFarthest};

// Takes the bands of a region one by one.
class Bands {
  public:
    explicit Bands(Rects rects) : m_rects(rects) { take(); }

    // The rectangles that cover a line; none when the line lies between bands.
    [[nodiscard]] Rects at(LONG y) {
        while (!m_band.empty() && m_band.front().bottom <= y) take();
        return m_band.empty() || m_band.front().top > y ? Rects() : m_band;
    }

    // The next line behind `y` where a band begins or ends.
    [[nodiscard]] LONG next_edge(LONG y) {
        (void)at(y);
        if (m_band.empty()) return Region::kFarthest;
        return m_band.front().top > y ? m_band.front().top : m_band.front().bottom;
    }

  private:
    void take() {
        std::size_t size = 0;
        while (size < m_rects.size() && m_rects[size].top == m_rects[0].top) ++size;
        m_band = m_rects.first(size);
        m_rects = m_rects.subspan(size);
    }

    Rects m_rects;
    Rects m_band;
};

// Walks along one line over the edges of both bands. `is_in` is asked with whether the place is in
// the one and in the other.
template <class IsIn>
void combine_band(Rects a, Rects b, LONG top, LONG bottom, const IsIn& is_in,
                  std::vector<RECT>& into) {
    std::size_t i = 0;  // edges passed: odd inside, even outside
    std::size_t j = 0;
    const auto edge = [](Rects rects, std::size_t n) {
        if (n >= rects.size() * 2) return Region::kFarthest + 1;
        return n % 2 == 0 ? rects[n / 2].left : rects[n / 2].right;
    };
    LONG start = 0;
    bool was_in = false;
    while (i < a.size() * 2 || j < b.size() * 2) {
        const auto x = std::min(edge(a, i), edge(b, j));
        if (edge(a, i) == x) ++i;
        if (edge(b, j) == x) ++j;
        const bool now_in = is_in(i % 2 != 0, j % 2 != 0);
        if (now_in == was_in) continue;
        if (now_in) {
            start = x;
        } else {
            into.push_back({start, top, x, bottom});
        }
        was_in = now_in;
    }
}

// A band that continues the one above it becomes a part of that.
void join_with_above(std::vector<RECT>& rects, std::size_t& above, std::size_t band) {
    const auto size = rects.size() - band;
    bool is_same = size != 0 && band - above == size && rects[above].bottom == rects[band].top;
    for (std::size_t i = 0; is_same && i < size; ++i) {
        is_same = rects[above + i].left == rects[band + i].left &&
                  rects[above + i].right == rects[band + i].right;
    }
    if (!is_same) {
        if (size != 0) above = band;
        return;
    }
    const auto bottom = rects[band].bottom;
    rects.resize(band);
    for (auto i = above; i < band; ++i) rects[i].bottom = bottom;
}

template <class IsIn>
std::vector<RECT> combine(Rects a, Rects b, const IsIn& is_in) {
    std::vector<RECT> result;
    Bands bands_a(a);
    Bands bands_b(b);
    std::size_t above = 0;
    LONG y = -Region::kFarthest;
    while (y < Region::kFarthest) {
        const auto next = std::min(bands_a.next_edge(y), bands_b.next_edge(y));
        const auto band = result.size();
        combine_band(bands_a.at(y), bands_b.at(y), y, next, is_in, result);
        join_with_above(result, above, band);
        y = next;
    }
    return result;
}

}  // namespace

Region::Region(const RECT& rect) {
    const auto cut = common_part(rect, kEverything);
    if (!tvutil2::is_empty(cut)) m_bounds = cut;
}

// By halves: one after the other, each would walk over all before it.
Region Region::of(std::span<const RECT> rects) {
    if (rects.empty()) return {};
    if (rects.size() == 1) return Region(rects[0]);
    auto region = of(rects.first(rects.size() / 2));
    region.unite(of(rects.subspan(rects.size() / 2)));
    return region;
}

bool Region::contains(POINT point) const {
    if (PtInRect(&m_bounds, point) == FALSE) return false;
    return std::ranges::any_of(rects(), [&](const RECT& r) { return PtInRect(&r, point) != 0; });
}

bool Region::touches(const RECT& rect) const {
    if (tvutil2::is_empty(common_part(m_bounds, rect))) return false;
    return std::ranges::any_of(
        rects(), [&](const RECT& r) { return !tvutil2::is_empty(common_part(r, rect)); });
}

bool Region::covers(const RECT& rect) const {
    if (is_rectangle()) {
        return tvutil2::is_empty(rect) || same_rect(common_part(m_bounds, rect), rect);
    }
    Region rest(rect);
    rest.subtract(*this);
    return rest.is_empty();
}

Region Region::combined(const Region& a, const Region& b, Operation operation) {
    Region result;
    switch (operation) {
        case Operation::unite:
            result.m_rects = combine(a.rects(), b.rects(), [](bool x, bool y) { return x || y; });
            break;
        case Operation::subtract:
            result.m_rects = combine(a.rects(), b.rects(), [](bool x, bool y) { return x && !y; });
            break;
        case Operation::intersect:
            result.m_rects = combine(a.rects(), b.rects(), [](bool x, bool y) { return x && y; });
            break;
        case Operation::exclusive_or:
            result.m_rects = combine(a.rects(), b.rects(), [](bool x, bool y) { return x != y; });
            break;
    }
    result.settle();
    return result;
}

void Region::settle() {
    m_bounds = {};
    for (const auto& rect : m_rects) {
        const auto bounds = m_bounds;
        UnionRect(&m_bounds, &bounds, &rect);
    }
    if (m_rects.size() < 2) m_rects.clear();
}

void Region::unite(const Region& other) {
    if (other.is_empty() || (is_rectangle() && covers(other.m_bounds))) return;
    if (is_empty() || (other.is_rectangle() && other.covers(m_bounds))) {
        *this = Region(other);
        return;
    }
    *this = combined(*this, other, Operation::unite);
}

void Region::subtract(const Region& other) {
    if (!other.touches(m_bounds)) return;
    *this = combined(*this, other, Operation::subtract);
}

void Region::intersect(const Region& other) {
    if (other.is_rectangle() && other.covers(m_bounds)) return;
    if (is_rectangle() && other.is_rectangle()) {
        *this = Region(common_part(m_bounds, other.m_bounds));
        return;
    }
    *this = combined(*this, other, Operation::intersect);
}

void Region::exclusive_or(const Region& other) {
    *this = combined(*this, other, Operation::exclusive_or);
}

void Region::offset(LONG x, LONG y) {
    const auto target = moved(m_bounds, {x, y});
    if (same_rect(common_part(target, kEverything), target)) {
        m_bounds = is_empty() ? RECT{} : target;
        for (auto& rect : m_rects) rect = moved(rect, {x, y});
        return;
    }
    std::vector<RECT> kept;
    for (const auto& rect : rects()) {
        const auto cut = common_part(moved(rect, {x, y}), kEverything);
        if (!tvutil2::is_empty(cut)) kept.push_back(cut);
    }
    m_rects = std::move(kept);
    settle();
}

bool operator==(const Region& a, const Region& b) {
    return std::ranges::equal(a.rects(), b.rects(), same_rect);
}

}  // namespace tvutil2
