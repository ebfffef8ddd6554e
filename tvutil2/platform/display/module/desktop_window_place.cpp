// Where a window is: the program's word and the desktop's.
#include "tvutil2/platform/display/module/desktop_driver.h"
#include "tvutil2/platform/display/module/desktop_input.h"
#include "tvutil2/platform/display/module/desktop_look.h"
#include "tvutil2/platform/display/module/desktop_window.h"
#include "tvutil2/platform/window/window_types.h"

#include <gdk/gdkx.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace tvutil2 {
namespace {

// How long the desktop may take to do to a window what the program wants; after that it has a mind
// of its own.
constexpr guint kSettleMilliseconds = 300;

SIZE size_of(const RECT& rect) {
    return {std::max(rect.right - rect.left, LONG{1}), std::max(rect.bottom - rect.top, LONG{1})};
}

bool is_near(LONG a, LONG b, int tolerance) {
    return std::abs(a - b) < tolerance;
}

}  // namespace

bool is_on_wayland() {
    return !GDK_IS_X11_DISPLAY(gdk_display_get_default());
}

RECT DesktopWindow::view() const {
    if (m_has_frame) return m_shown.content;
    const auto size = size_of(m_shown.place);
    return {0, 0, size.cx, size.cy};
}

int DesktopWindow::units(LONG pixels) const {
    const int by = scale();
    return std::max(static_cast<int>(pixels + by - 1) / by, 1);
}

POINT DesktopWindow::on_screen(double x, double y) const {
    const auto part = view();
    return {m_shown.place.left + part.left + static_cast<LONG>(std::floor(x * scale())),
            m_shown.place.top + part.top + static_cast<LONG>(std::floor(y * scale()))};
}

// Wayland knows places of pop-ups only, in their owners.
GdkPoint DesktopWindow::place_of(POINT corner) const {
    const int by = scale();
    const auto* owner = m_driver.find(m_behind);
    if (owner == nullptr && is_on_wayland()) owner = m_driver.find(m_shown.owner);
    if (owner == nullptr) {
        return {static_cast<int>(std::floor(static_cast<double>(corner.x) / by)),
                static_cast<int>(std::floor(static_cast<double>(corner.y) / by))};
    }
    const auto base = owner->on_screen(0, 0);
    int x = 0;
    int y = 0;
    gtk_widget_translate_coordinates(owner->m_area, owner->m_window,
                                     static_cast<int>(corner.x - base.x) / by,
                                     static_cast<int>(corner.y - base.y) / by, &x, &y);
    return {x, y};
}

void DesktopWindow::set_caret(const RECT& place) {
    const auto corner = on_screen(0, 0);
    const int by = scale();
    const GdkRectangle at{static_cast<int>(place.left - corner.x) / by,
                          static_cast<int>(place.top - corner.y) / by,
                          units(place.right - place.left), units(place.bottom - place.top)};
    m_input->set_caret(at);
}

// Where the window is by the desktop's word.
void DesktopWindow::keep_place(const RECT& place) {
    const auto before = size_of(m_shown.place);
    const auto now = size_of(place);
    m_shown.content.right += now.cx - before.cx;
    m_shown.content.bottom += now.cy - before.cy;
    m_shown.place = place;
}

void DesktopWindow::set_size() {
    const auto part = view();
    const auto size = size_of(part);
    const bool is_resizable = m_has_frame && (m_shown.style & WS_THICKFRAME) != 0;
    auto least = size;
    if (is_resizable) {
        const auto whole = size_of(m_shown.place);
        least = {m_shown.least.cx - (whole.cx - size.cx), m_shown.least.cy - (whole.cy - size.cy)};
    }
    gtk_window_set_resizable(widget(), is_resizable);
    gtk_widget_set_size_request(m_area, units(std::min(least.cx, size.cx)),
                                units(std::min(least.cy, size.cy)));
    ask_for_place();
}

void DesktopWindow::ask_for_place() {
    const auto part = view();
    const auto size = size_of(part);
    gtk_window_resize(widget(), units(size.cx), units(size.cy));
    // Wayland's pop-ups open where they can, and only those that don't grab are moved later.
    const bool is_placed_once = m_is_popup && is_on_wayland() && (!m_is_mapped || m_is_grabbing);
    if (!is_placed_once) {
        const auto corner = place_of(on_screen(0, 0));
        gtk_window_move(widget(), corner.x, corner.y);
    }
    // What is asked for is on its way before the question whether it has been looked at.
    if (m_is_mapped) gtk_container_check_resize(GTK_CONTAINER(m_window));
    note_asked();
}

void DesktopWindow::note_asked() {
    m_asked_at = g_get_monotonic_time();
    m_driver.ask_manager();
    await_settling();
}

// It may have put something off nevertheless, for as long as any may.
void DesktopWindow::follow_manager() {
    if (m_asked_at == 0) return;
    m_asked_at = g_get_monotonic_time();
    await_settling();
}

void DesktopWindow::set_form(DWORD before) {
    const auto form = m_shown.style & (WS_MINIMIZE | WS_MAXIMIZE);
    const auto changed = form ^ before;
    if ((changed & WS_MAXIMIZE) != 0 && (form & WS_MINIMIZE) == 0) {
        if ((form & WS_MAXIMIZE) != 0) gtk_window_maximize(widget());
        if ((form & WS_MAXIMIZE) == 0) gtk_window_unmaximize(widget());
    }
    if ((changed & WS_MINIMIZE) != 0) {
        if ((form & WS_MINIMIZE) != 0) gtk_window_iconify(widget());
        if ((form & WS_MINIMIZE) == 0) gtk_window_deiconify(widget());
    }
    m_form = form;
    if (changed == 0) return;
    m_asks_again = true;
    note_asked();
}

// The desktop moves and sizes a window in steps: what it comes to is looked at when they are done.
void DesktopWindow::await_settling(guint milliseconds) {
    if (m_settling != 0) return;
    const auto look = [](gpointer self) -> gboolean {
        static_cast<DesktopWindow*>(self)->m_settling = 0;
        static_cast<DesktopWindow*>(self)->settle();
        return G_SOURCE_REMOVE;
    };
    m_settling =
        milliseconds == 0 ? g_idle_add(look, this) : g_timeout_add(milliseconds, look, this);
}

RECT DesktopWindow::actual_view() const {
    const int by = scale();
    const LONG width = gtk_widget_get_allocated_width(m_area) * by;
    const LONG height = gtk_widget_get_allocated_height(m_area) * by;
    auto corner = on_screen(0, 0);
    if (!is_on_wayland()) {
        int x = 0;
        int y = 0;
        gdk_window_get_origin(gtk_widget_get_window(m_area), &x, &y);
        corner = {x * by, y * by};
    }
    return {corner.x, corner.y, corner.x + width, corner.y + height};
}

DWORD DesktopWindow::actual_form() const {
    const auto state = gdk_window_get_state(gtk_widget_get_window(m_window));
    if ((state & GDK_WINDOW_STATE_ICONIFIED) != 0) return WS_MINIMIZE;
    return (state & GDK_WINDOW_STATE_MAXIMIZED) != 0 ? WS_MAXIMIZE : 0;
}

bool DesktopWindow::is_where_wanted(const RECT& now) const {
    const int by = scale();
    const auto corner = on_screen(0, 0);
    const auto size = size_of(view());
    return is_near(now.left, corner.x, by) && is_near(now.top, corner.y, by) &&
           is_near(now.right - now.left, size.cx, by) && is_near(now.bottom - now.top, size.cy, by);
}

// While the program waits for the place and the form that it asked for, what the desktop says is
// about what was before.
void DesktopWindow::settle() {
    if (!m_is_mapped) return;
    const bool is_late = g_get_monotonic_time() - m_asked_at >= gint64{kSettleMilliseconds} * 1000;
    const bool is_waiting = m_asked_at != 0 && (!is_late || m_driver.is_manager_busy());
    const auto form = actual_form();
    if (form != m_form) {
        if (is_waiting) return await_settling(kSettleMilliseconds);
        tell_form(form);
    }
    if ((m_form & WS_MINIMIZE) != 0) return;
    const auto now = actual_view();
    const bool is_there = is_where_wanted(now);
    // How large the largest is, the desktop alone knows.
    if (!is_there && m_asked_at != 0 && (m_form & WS_MAXIMIZE) == 0) {
        if (is_waiting) return await_settling(kSettleMilliseconds);
        // It may have been giving the window its form at that time.
        if (std::exchange(m_asks_again, false)) return ask_for_place();
    }
    m_asked_at = 0;
    m_asks_again = false;
    if (!is_there) tell_place(now);
}

void DesktopWindow::tell_place(const RECT& now) {
    const auto part = view();
    const auto size = size_of(part);
    const auto whole = size_of(m_shown.place);
    auto news = input(RawInput::Kind::place, 0);
    news.place_number = m_shown.place_number;
    news.place.left = now.left - part.left;
    news.place.top = now.top - part.top;
    news.place.right = news.place.left + (now.right - now.left) + (whole.cx - size.cx);
    news.place.bottom = news.place.top + (now.bottom - now.top) + (whole.cy - size.cy);
    keep_place(news.place);
    m_driver.put(std::move(news));
}

void DesktopWindow::tell_form(DWORD form) {
    m_form = form;
    m_shown.style = (m_shown.style & ~(WS_MINIMIZE | WS_MAXIMIZE)) | form;
    auto news = input(RawInput::Kind::form, 0);
    news.form = form;
    m_driver.put(std::move(news));
}

gboolean DesktopWindow::on_configure(GdkEventConfigure* /*event*/) {
    await_settling();
    return FALSE;
}

gboolean DesktopWindow::on_state(GdkEventWindowState* event) {
    constexpr auto kForms = GDK_WINDOW_STATE_MAXIMIZED | GDK_WINDOW_STATE_ICONIFIED;
    if ((event->changed_mask & kForms) != 0) await_settling();
    // What comes on Wayland of a press outside of the program.
    const bool is_hidden = (event->new_window_state & GDK_WINDOW_STATE_WITHDRAWN) != 0;
    if (m_is_popup && m_is_mapped && is_hidden) {
        m_driver.put(input(RawInput::Kind::dismissed, 0));
    }
    return FALSE;
}

void DesktopWindow::follow_scale() {
    auto news = input(RawInput::Kind::scale, 0);
    news.dpi = desktop_dpi(scale());
    if (news.dpi != m_shown.dpi) m_driver.put(std::move(news));
}

}  // namespace tvutil2
