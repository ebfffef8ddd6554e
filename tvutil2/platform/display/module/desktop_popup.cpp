// Pop-ups on the desktop: where they open, and how they hear of presses elsewhere.
#include "tvutil2/platform/display/module/desktop_driver.h"
#include "tvutil2/platform/display/module/desktop_window.h"
#include "tvutil2/platform/draw/rect.h"

#include <algorithm>

namespace tvutil2 {
namespace {

/// How a pop-up lies at what it opens at.
struct Lie {
    GdkGravity at_base, at_popup;
    GdkPoint offset;
    int hints;  // GdkAnchorHints
};

// `base` is at least a unit of the desktop's wide and high.
Lie lie_of(const RECT& place, const RECT& base, bool is_below, bool is_above) {
    const auto by = [](LONG from, LONG to) { return static_cast<int>(to - from); };
    constexpr int kSlides = GDK_ANCHOR_SLIDE_X | GDK_ANCHOR_SLIDE_Y;
    if (is_below) {
        return {GDK_GRAVITY_SOUTH_WEST,
                GDK_GRAVITY_NORTH_WEST,
                {by(base.left, place.left), by(base.bottom, place.top)},
                kSlides | GDK_ANCHOR_FLIP_Y};
    }
    if (is_above) {
        return {GDK_GRAVITY_NORTH_WEST,
                GDK_GRAVITY_SOUTH_WEST,
                {by(base.left, place.left), by(base.top, place.bottom)},
                kSlides | GDK_ANCHOR_FLIP_Y};
    }
    const bool is_right = place.left >= (base.left + base.right) / 2;
    return {is_right ? GDK_GRAVITY_NORTH_EAST : GDK_GRAVITY_NORTH_WEST,
            is_right ? GDK_GRAVITY_NORTH_WEST : GDK_GRAVITY_NORTH_EAST,
            {is_right ? by(base.right, place.left) : by(base.left, place.right),
             by(base.top, place.top)},
            kSlides | GDK_ANCHOR_FLIP_X};
}

}  // namespace

HWND DesktopWindow::keyboard_window() const {
    const auto* window = this;
    while (window->m_is_popup) {
        const auto* const owner = m_driver.find(window->m_shown.owner);
        if (owner == nullptr) break;
        window = owner;
    }
    return window->m_shown.window;
}

// Shows the pop-up. One that hears of presses elsewhere has to say so beforehand on Wayland, where
// the desktop puts it.
void DesktopWindow::appear() {
    m_driver.opened(*this);
    const bool grabs = m_driver.has_capture();
    if (is_on_wayland()) {
        if (grabs) {
            open_at_base();
        } else {
            ask_for_place();
        }
    }
    if (!grabs || !grab()) gtk_widget_show(m_window);
}

// By the pop-up that it belongs to, which the desktop wants to be the one in front.
void DesktopWindow::open_at_base() {
    const auto* const behind = m_driver.grabbing_popup();
    m_is_grabbing = true;
    if (behind != nullptr) {
        m_behind = behind->m_shown.window;
        gtk_window_set_transient_for(widget(), behind->widget());
    }
    const auto& place = m_shown.place;
    auto base = m_shown.base;
    const bool is_known = base.right != 0 || base.bottom != 0;
    if (!is_known) base = {place.left, place.top, place.left, place.top};
    const int by = scale();
    const bool is_below = place.top >= base.bottom;
    const bool is_above = place.bottom <= base.top;
    base.right = std::max<LONG>(base.right, base.left + by);
    base.bottom = std::max<LONG>(base.bottom, base.top + by);
    const auto lie = lie_of(place, base, is_below, is_above);
    const auto corner = place_of({base.left, base.top});
    const GdkRectangle rect{corner.x, corner.y, units(base.right - base.left),
                            units(base.bottom - base.top)};
    auto* const window = gtk_widget_get_window(m_window);
    const auto follow = +[](GdkWindow*, const GdkRectangle*, const GdkRectangle* now, gboolean,
                            gboolean, DesktopWindow* self) { self->follow_rect(*now); };
    g_signal_connect(window, "moved-to-rect", G_CALLBACK(follow), this);
    gdk_window_move_to_rect(window, &rect, lie.at_base, lie.at_popup,
                            static_cast<GdkAnchorHints>(lie.hints), lie.offset.x / by,
                            lie.offset.y / by);
}

// Without room where it was to open the desktop has put it elsewhere.
void DesktopWindow::follow_rect(const GdkRectangle& now) {
    const auto wanted = place_of({m_shown.place.left, m_shown.place.top});
    auto place = m_shown.place;
    OffsetRect(&place, (now.x - wanted.x) * scale(), (now.y - wanted.y) * scale());
    if (now.x != wanted.x || now.y != wanted.y) tell_place(place);
}

bool DesktopWindow::grab() {
    auto* const seat = gdk_display_get_default_seat(gdk_display_get_default());
    if (!m_is_mapped || seat == nullptr) return false;
    return gdk_seat_grab(
               seat, gtk_widget_get_window(m_area), GDK_SEAT_CAPABILITY_ALL_POINTING, TRUE, nullptr,
               nullptr,
               [](GdkSeat*, GdkWindow*, gpointer window) { gtk_widget_show(GTK_WIDGET(window)); },
               m_window) == GDK_GRAB_SUCCESS;
}

}  // namespace tvutil2
