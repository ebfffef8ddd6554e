#include "tvutil2/platform/window/scroll_state.h"

#include "tvutil2/platform/draw/look.h"
#include "tvutil2/platform/draw/rect.h"
#include "tvutil2/platform/draw/shapes.h"

#include <algorithm>

namespace tvutil2 {
namespace {

constexpr int kArrow = 17;
constexpr int kShortestThumb = 24;

// A rectangle along its bar: from `from` to `to`, over its whole width.
RECT along(const ScrollBarPlace& place, LONG from, LONG to) {
    auto rect = place.area;
    (place.is_vertical ? rect.top : rect.left) = from;
    (place.is_vertical ? rect.bottom : rect.right) = to;
    return rect;
}

struct Track {
    LONG begin, end, thumb;
};

Track track_of(const ScrollBarPlace& place, const ScrollState& state) {
    const auto begin = place.is_vertical ? place.area.top : place.area.left;
    const auto end = place.is_vertical ? place.area.bottom : place.area.right;
    const auto arrow = std::min<LONG>(scaled(kArrow, place.dpi), (end - begin) / 2);
    const auto length = std::max<LONG>(end - begin - 2 * arrow, 0);
    const auto range = std::int64_t{state.most} - state.least + 1;
    const auto page = std::max(state.page, 1);
    auto thumb = std::min<LONG>(scaled(kShortestThumb, place.dpi), length);
    if (range > 0 && state.page > 0) {
        thumb = std::max(thumb, static_cast<LONG>(std::int64_t{length} * page / range));
    }
    if (!state.is_needed() || state.is_disabled) thumb = 0;
    return {begin + arrow, begin + arrow + length, std::min(thumb, length)};
}

}  // namespace

int ScrollState::last() const {
    return static_cast<int>(
        std::max<std::int64_t>(std::int64_t{most} - std::max(page - 1, 0), least));
}

void ScrollState::set(const SCROLLINFO& info) {
    if ((info.fMask & SIF_RANGE) != 0) {
        least = info.nMin;
        most = std::max(info.nMin, info.nMax);
    }
    if ((info.fMask & SIF_PAGE) != 0) {
        const auto range = std::int64_t{most} - least + 1;
        page =
            static_cast<int>(std::min<std::int64_t>({std::int64_t{info.nPage}, range, 0x7FFFFFFF}));
    }
    if ((info.fMask & SIF_POS) != 0) position = info.nPos;
    position = std::clamp(position, least, last());
    if ((info.fMask & (SIF_RANGE | SIF_PAGE)) != 0) {
        is_disabled = (info.fMask & SIF_DISABLENOSCROLL) != 0 && !is_needed();
    }
}

void ScrollState::get(SCROLLINFO& info) const {
    if ((info.fMask & SIF_RANGE) != 0) {
        info.nMin = least;
        info.nMax = most;
    }
    if ((info.fMask & SIF_PAGE) != 0) info.nPage = static_cast<UINT>(page);
    if ((info.fMask & SIF_POS) != 0) info.nPos = position;
    if ((info.fMask & SIF_TRACKPOS) != 0) info.nTrackPos = tracked;
}

ScrollLayout ScrollBarPlace::layout(const ScrollState& state, int position) const {
    const auto track = track_of(*this, state);
    const auto begin = is_vertical ? area.top : area.left;
    const auto end = is_vertical ? area.bottom : area.right;
    const auto room = track.end - track.begin - track.thumb;
    const auto steps = std::int64_t{state.last()} - state.least;
    const auto at = steps > 0 ? room * (std::int64_t{position} - state.least) / steps : 0;
    const auto from = track.begin + static_cast<LONG>(std::clamp<std::int64_t>(at, 0, room));
    return {along(*this, begin, track.begin), along(*this, from, from + track.thumb),
            along(*this, track.end, end)};
}

ScrollPart ScrollBarPlace::part_at(const ScrollState& state, POINT point) const {
    if (!PtInRect(&area, point)) return ScrollPart::none;
    const auto parts = layout(state, state.position);
    if (PtInRect(&parts.up, point)) return ScrollPart::line_up;
    if (PtInRect(&parts.down, point)) return ScrollPart::line_down;
    if (PtInRect(&parts.thumb, point)) return ScrollPart::thumb;
    const bool is_before = is_vertical ? point.y < parts.thumb.top : point.x < parts.thumb.left;
    return is_before ? ScrollPart::page_up : ScrollPart::page_down;
}

int ScrollBarPlace::dragged(const ScrollState& state, int way) const {
    const auto track = track_of(*this, state);
    const auto room = track.end - track.begin - track.thumb;
    if (room <= 0) return state.position;
    const auto steps = std::int64_t{state.last()} - state.least;
    const auto begin =
        room * (std::int64_t{state.position} - state.least) / std::max<std::int64_t>(steps, 1);
    const auto at = std::clamp<std::int64_t>(begin + way, 0, room);
    return static_cast<int>(state.least + (at * steps + room / 2) / room);
}

void ScrollBarPlace::draw(HDC context, const ScrollState& state, ScrollPart hot,
                          ScrollPart pressed) const {
    const auto& palette = theme().palette;
    FillRect(context, &area, GetSysColorBrush(COLOR_SCROLLBAR));
    const bool works = state.is_needed() && !state.is_disabled;
    const auto parts = layout(state, state.position);
    const auto color = [&](ScrollPart part) {
        if (!works) return palette.disabled_border;
        return hot == part || pressed == part ? palette.hot_thumb : palette.thumb;
    };
    const auto glyph = scaled(8, dpi);
    draw_glyph(context, parts.up, is_vertical ? Glyph::up : Glyph::left, glyph,
               color(ScrollPart::line_up));
    draw_glyph(context, parts.down, is_vertical ? Glyph::down : Glyph::right, glyph,
               color(ScrollPart::line_down));
    if (!works) return;
    auto thumb = parts.thumb;
    const bool is_wide = hot == ScrollPart::thumb || pressed == ScrollPart::thumb;
    const auto across = is_vertical ? thumb.right - thumb.left : thumb.bottom - thumb.top;
    const auto inset = std::max<int>((across - scaled(is_wide ? 9 : 7, dpi)) / 2, 0);
    InflateRect(&thumb, is_vertical ? -inset : 0, is_vertical ? 0 : -inset);
    draw_round_area(context, thumb, 4, color(ScrollPart::thumb));
}

}  // namespace tvutil2
