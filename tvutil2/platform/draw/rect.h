// Arithmetic on rectangles and points. Right and bottom are outside; a rectangle without width or
// height is empty. What leaves 32 bits stops there.
#pragma once

#include "tvutil2/platform/base/types.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace tvutil2 {

[[nodiscard]] constexpr LONG saturated(std::int64_t value) {
    return static_cast<LONG>(std::clamp<std::int64_t>(value, std::numeric_limits<LONG>::min(),
                                                      std::numeric_limits<LONG>::max()));
}

/// The sum of two coordinates.
[[nodiscard]] constexpr LONG plus(LONG a, LONG b) {
    return saturated(std::int64_t{a} + b);
}

[[nodiscard]] constexpr bool is_empty(const RECT& rect) {
    return rect.left >= rect.right || rect.top >= rect.bottom;
}

[[nodiscard]] constexpr RECT moved(const RECT& rect, POINT by) {
    return {plus(rect.left, by.x), plus(rect.top, by.y), plus(rect.right, by.x),
            plus(rect.bottom, by.y)};
}

/// Possibly empty, and then of any place.
[[nodiscard]] constexpr RECT common_part(const RECT& a, const RECT& b) {
    return {std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
            std::min(a.bottom, b.bottom)};
}

[[nodiscard]] constexpr bool same_rect(const RECT& a, const RECT& b) {
    return a.left == b.left && a.top == b.top && a.right == b.right && a.bottom == b.bottom;
}

}  // namespace tvutil2

inline BOOL SetRect(RECT* rect, int left, int top, int right, int bottom) {
    if (rect == nullptr) return FALSE;
    *rect = {left, top, right, bottom};
    return TRUE;
}

inline BOOL SetRectEmpty(RECT* rect) {
    return SetRect(rect, 0, 0, 0, 0);
}

inline BOOL CopyRect(RECT* to, const RECT* from) {
    if (to == nullptr || from == nullptr) return FALSE;
    *to = *from;
    return TRUE;
}

inline BOOL IsRectEmpty(const RECT* rect) {
    return rect == nullptr || tvutil2::is_empty(*rect) ? TRUE : FALSE;
}

inline BOOL EqualRect(const RECT* a, const RECT* b) {
    return a != nullptr && b != nullptr && tvutil2::same_rect(*a, *b) ? TRUE : FALSE;
}

inline BOOL PtInRect(const RECT* rect, POINT point) {
    return rect != nullptr && point.x >= rect->left && point.x < rect->right &&
                   point.y >= rect->top && point.y < rect->bottom
               ? TRUE
               : FALSE;
}

inline BOOL OffsetRect(RECT* rect, int x, int y) {
    if (rect == nullptr) return FALSE;
    *rect = tvutil2::moved(*rect, {x, y});
    return TRUE;
}

inline BOOL InflateRect(RECT* rect, int x, int y) {
    if (rect == nullptr) return FALSE;
    *rect = {tvutil2::saturated(std::int64_t{rect->left} - x),
             tvutil2::saturated(std::int64_t{rect->top} - y), tvutil2::plus(rect->right, x),
             tvutil2::plus(rect->bottom, y)};
    return TRUE;
}

/// The part that both have: 0, and an empty rectangle, when there is none.
inline BOOL IntersectRect(RECT* to, const RECT* a, const RECT* b) {
    if (to == nullptr || a == nullptr || b == nullptr) return FALSE;
    const auto both = tvutil2::common_part(*a, *b);
    const bool is_none = tvutil2::is_empty(both);
    *to = is_none ? RECT{} : both;
    return is_none ? FALSE : TRUE;
}

/// The smallest rectangle around both; an empty one doesn't count. 0 when both are empty.
inline BOOL UnionRect(RECT* to, const RECT* a, const RECT* b) {
    if (to == nullptr || a == nullptr || b == nullptr) return FALSE;
    const bool has_a = !tvutil2::is_empty(*a);
    const bool has_b = !tvutil2::is_empty(*b);
    if (has_a && has_b) {
        *to = {std::min(a->left, b->left), std::min(a->top, b->top), std::max(a->right, b->right),
               std::max(a->bottom, b->bottom)};
    } else {
        *to = has_a ? *a : has_b ? *b : RECT{};
    }
    return has_a || has_b ? TRUE : FALSE;
}
