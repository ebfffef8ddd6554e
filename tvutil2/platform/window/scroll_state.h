// A scroll bar as such: what it stands for, where its parts are, how it looks. Knows no windows.
#pragma once

#include "tvutil2/platform/base/export.h"
#include "tvutil2/platform/base/types.h"
#include "tvutil2/platform/window/scrolling.h"

#include <cstdint>

namespace tvutil2 {

enum class ScrollPart : std::uint8_t { none, line_up, page_up, thumb, page_down, line_down };

/// A bar's values, and its place in pixels.
struct TVUTIL_API ScrollState {
    int least = 0, most = 100, page = 0, position = 0, tracked = 0;
    bool is_disabled = false;

    /// The highest position: the last page fills the window.
    [[nodiscard]] int last() const;
    [[nodiscard]] bool is_needed() const { return last() > least; }
    /// Takes over what the record says; positions are held within the range.
    void set(const SCROLLINFO& info);
    void get(SCROLLINFO& info) const;
};

struct ScrollLayout {
    RECT up, thumb, down;
};
struct TVUTIL_API ScrollBarPlace {
    RECT area{};
    bool is_vertical = true;
    UINT dpi = 96;

    [[nodiscard]] ScrollLayout layout(const ScrollState& state, int position) const;
    [[nodiscard]] ScrollPart part_at(const ScrollState& state, POINT point) const;
    /// The position for a thumb that was moved by so many pixels from where it stood.
    [[nodiscard]] int dragged(const ScrollState& state, int way) const;
    void draw(HDC context, const ScrollState& state, ScrollPart hot, ScrollPart pressed) const;
};

}  // namespace tvutil2
