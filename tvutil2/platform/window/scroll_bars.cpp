#include "tvutil2/platform/window/scroll_bars.h"

#include "tvutil2/platform/draw/rect.h"
#include "tvutil2/platform/draw/theme.h"
#include "tvutil2/platform/window/default_paint.h"
#include "tvutil2/platform/window/paint.h"
#include "tvutil2/platform/window/show.h"
#include "tvutil2/platform/window/window.h"
#include "tvutil2/platform/window/window_states.h"

namespace tvutil2 {
namespace {

void repaint_bar(HWND window, int bar) {
    if (bar == SB_CTL) {
        InvalidateRect(window, nullptr, FALSE);
    } else {
        repaint_frame(window);
    }
}

// True when the bar's being there changes.
bool is_to_change(const Window& window, int bar, const ScrollState& state, UINT mask) {
    if ((mask & (SIF_RANGE | SIF_PAGE)) == 0 || (mask & SIF_DISABLENOSCROLL) != 0) return false;
    return ((window.style & style_of_bar(bar)) != 0) != state.is_needed();
}

}  // namespace

RECT scroll_bar_area(const Window& window, int bar) {
    const auto& client = window.client;
    const auto dpi = dpi_of(window);
    int width = 0;
    look_metric(SM_CXVSCROLL, dpi, width);
    if (bar == SB_VERT) return {client.right, client.top, client.right + width, client.bottom};
    if (bar == SB_HORZ) return {client.left, client.bottom, client.right, client.bottom + width};
    return client;
}

ScrollBars& scroll_bars_of(Window& window) {
    if (!window.scroll_bars) window.scroll_bars = std::make_shared<ScrollBars>();
    return *window.scroll_bars;
}

DWORD style_of_bar(int bar) {
    return bar == SB_VERT ? WS_VSCROLL : WS_HSCROLL;
}

bool is_vertical_bar(const Window& window, int bar) {
    return bar == SB_VERT || (bar == SB_CTL && (window.style & SBS_VERT) != 0);
}

bool look_at_bar(HWND window, int bar, SeenBar& seen) {
    const TreeLock tree;
    auto* const record = tree.table.find(window);
    if (record == nullptr) return false;
    if (bar != SB_CTL && (record->style & style_of_bar(bar)) == 0) return false;
    seen.place = {moved(scroll_bar_area(*record, bar), corner_of(*record)),
                  is_vertical_bar(*record, bar), dpi_of(*record)};
    seen.state = scroll_bars_of(*record).bars[static_cast<std::size_t>(bar)];
    return true;
}

void change_bar_looks(HWND window, int bar, ScrollPart hot, ScrollPart pressed) {
    {
        const TreeLock tree;
        auto* const record = tree.table.find(window);
        if (record == nullptr) return;
        auto& bars = scroll_bars_of(*record);
        if (hot == bars.hot && pressed == bars.pressed && (bar == bars.active || bar < 0)) return;
        bars.active = bar;
        bars.hot = hot;
        bars.pressed = pressed;
    }
    repaint_bar(window, bar == SB_CTL ? SB_CTL : SB_VERT);
}

int set_bar_info(HWND window, int bar, const SCROLLINFO& info) {
    bool changes = false;
    ScrollState state;
    {
        const TreeLock tree;
        auto* const record = tree.find(window);
        if (record == nullptr) return 0;
        auto& kept = scroll_bars_of(*record).bars[static_cast<std::size_t>(bar)];
        kept.set(info);
        state = kept;
        changes = bar != SB_CTL && is_to_change(*record, bar, state, info.fMask);
    }
    if (changes) ShowScrollBar(window, bar, state.is_needed() ? TRUE : FALSE);
    repaint_bar(window, bar);
    return state.position;
}

}  // namespace tvutil2
