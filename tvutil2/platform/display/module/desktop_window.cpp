#include "tvutil2/platform/display/module/desktop_window.h"

#include "tvutil2/platform/display/module/desktop_driver.h"
#include "tvutil2/platform/display/module/desktop_keys.h"
#include "tvutil2/platform/display/module/desktop_look.h"
#include "tvutil2/platform/window/keys.h"
#include "tvutil2/platform/window/window_types.h"

#include <gdk/gdkx.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace tvutil2 {
namespace {

// How long the desktop may take to put a window where the program wants it; after that it has a
// mind of its own.
constexpr guint kSettleMilliseconds = 300;
// A window that nothing has been painted of appears nevertheless.
constexpr guint kFirstPaintMilliseconds = 250;
constexpr double kNotch = 120;

bool is_framed(const Shown& shown) {
    return (shown.style & WS_CAPTION) == WS_CAPTION || (shown.style & WS_THICKFRAME) != 0;
}

bool is_wayland() {
    return !GDK_IS_X11_DISPLAY(gdk_display_get_default());
}

SIZE size_of(const RECT& rect) {
    return {std::max(rect.right - rect.left, LONG{1}), std::max(rect.bottom - rect.top, LONG{1})};
}

bool is_near(LONG a, LONG b, int tolerance) {
    return std::abs(a - b) < tolerance;
}

}  // namespace

template <auto Method>
void DesktopWindow::listen(GtkWidget* widget, const char* signal) {
    const auto call = []<class Event>(gboolean (DesktopWindow::*)(Event*)) {
        return +[](GtkWidget* /*widget*/, Event* event, gpointer self) -> gboolean {
            return (static_cast<DesktopWindow*>(self)->*Method)(event);
        };
    };
    g_signal_connect(widget, signal, G_CALLBACK(call(Method)), this);
}

DesktopWindow::DesktopWindow(DesktopDriver& driver, const Shown& shown,
                             std::shared_ptr<FrameBuffer> buffer)
    : m_driver(driver),
      m_shown(shown),
      m_buffer(std::move(buffer)),
      m_has_frame(is_framed(shown)),
      m_is_popup(!m_has_frame && shown.owner != nullptr) {
    m_window = gtk_window_new(m_is_popup ? GTK_WINDOW_POPUP : GTK_WINDOW_TOPLEVEL);
    auto* const window = widget();
    gtk_widget_set_app_paintable(m_window, TRUE);
    gtk_window_set_gravity(window, GDK_GRAVITY_STATIC);
    if (!m_is_popup) {
        gtk_window_set_decorated(window, m_has_frame);
        gtk_window_set_accept_focus(window, (shown.ex_style & WS_EX_NOACTIVATE) == 0);
        if (shown.owner != nullptr) gtk_window_set_type_hint(window, GDK_WINDOW_TYPE_HINT_DIALOG);
        const bool is_quiet = shown.owner != nullptr || (shown.ex_style & WS_EX_TOOLWINDOW) != 0;
        gtk_window_set_skip_taskbar_hint(window, is_quiet);
    }
    make_area();
    listen<&DesktopWindow::on_key>(m_window, "key-press-event");
    listen<&DesktopWindow::on_key>(m_window, "key-release-event");
    listen<&DesktopWindow::on_focus>(m_window, "focus-in-event");
    listen<&DesktopWindow::on_focus>(m_window, "focus-out-event");
    listen<&DesktopWindow::on_configure>(m_window, "configure-event");
    listen<&DesktopWindow::on_state>(m_window, "window-state-event");
    listen<&DesktopWindow::on_delete>(m_window, "delete-event");
    g_signal_connect_swapped(m_window, "notify::scale-factor",
                             G_CALLBACK(+[](DesktopWindow* self) { self->follow_scale(); }), this);
    follow_owner();
}

DesktopWindow::~DesktopWindow() {
    for (const auto source : {m_settling, m_first_show}) {
        if (source != 0) g_source_remove(source);
    }
    if (m_input_method != nullptr) {
        g_signal_handlers_disconnect_by_data(m_input_method, this);
        gtk_im_context_set_client_window(m_input_method, nullptr);
        g_object_unref(m_input_method);
    }
    g_signal_handlers_disconnect_by_data(m_area, this);
    g_signal_handlers_disconnect_by_data(m_window, this);
    gtk_widget_destroy(m_window);
}

void DesktopWindow::make_area() {
    m_area = new_accessible_area(m_driver.wishes_for(m_shown.window));
    gtk_widget_add_events(m_area, GDK_POINTER_MOTION_MASK | GDK_BUTTON_PRESS_MASK |
                                      GDK_BUTTON_RELEASE_MASK | GDK_SCROLL_MASK |
                                      GDK_SMOOTH_SCROLL_MASK | GDK_ENTER_NOTIFY_MASK |
                                      GDK_LEAVE_NOTIFY_MASK);
    listen<&DesktopWindow::draw>(m_area, "draw");
    listen<&DesktopWindow::on_motion>(m_area, "motion-notify-event");
    listen<&DesktopWindow::on_button>(m_area, "button-press-event");
    listen<&DesktopWindow::on_button>(m_area, "button-release-event");
    listen<&DesktopWindow::on_scroll>(m_area, "scroll-event");
    listen<&DesktopWindow::on_crossing>(m_area, "enter-notify-event");
    listen<&DesktopWindow::on_crossing>(m_area, "leave-notify-event");
    g_signal_connect_swapped(m_area, "size-allocate",
                             G_CALLBACK(+[](DesktopWindow* self) { self->await_settling(); }),
                             this);
    gtk_container_add(GTK_CONTAINER(m_window), m_area);
    gtk_widget_show(m_area);
    m_input_method = gtk_im_multicontext_new();
    // The input method shows what it composes itself.
    gtk_im_context_set_use_preedit(m_input_method, FALSE);
    g_signal_connect(m_input_method, "commit",
                     G_CALLBACK(+[](GtkIMContext*, const char* text, DesktopWindow* self) {
                         self->on_commit(text);
                     }),
                     this);
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

// Where the desktop is asked to put it. Wayland knows places of pop-ups only, in their owners.
GdkPoint DesktopWindow::place_of(const RECT& view) const {
    const int by = scale();
    const POINT corner{m_shown.place.left + view.left, m_shown.place.top + view.top};
    const auto* const owner = is_wayland() ? m_driver.find(m_shown.owner) : nullptr;
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

void DesktopWindow::follow_owner() {
    auto* const owner = m_driver.find(m_shown.owner);
    gtk_window_set_transient_for(widget(), owner != nullptr ? owner->widget() : nullptr);
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
    gtk_window_resize(widget(), units(size.cx), units(size.cy));
    const auto corner = place_of(part);
    gtk_window_move(widget(), corner.x, corner.y);
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
}

void DesktopWindow::change(const Shown& shown, bool activates) {
    const bool is_first = m_first_show == 0 && !m_is_mapped;
    const auto before = std::exchange(m_shown, shown);
    const bool is_placed = (shown.style & (WS_MINIMIZE | WS_MAXIMIZE)) == 0;
    const auto& old = before.place;
    const auto& place = shown.place;
    const bool moves = old.left != place.left || old.top != place.top || old.right != place.right ||
                       old.bottom != place.bottom || before.style != shown.style ||
                       before.least.cx != shown.least.cx || before.least.cy != shown.least.cy;
    if (is_first || before.title != shown.title) {
        gtk_window_set_title(widget(), utf8_of(shown.title).c_str());
    }
    if (is_first || before.owner != shown.owner) follow_owner();
    gtk_window_set_deletable(widget(), (shown.style & WS_SYSMENU) != 0);
    gtk_window_set_keep_above(widget(), (shown.ex_style & WS_EX_TOPMOST) != 0);
    if (is_first || (moves && is_placed)) set_size();
    set_form(is_first ? 0 : m_form);
    if (is_first) {
        m_activates = activates;
        m_first_show = g_timeout_add(
            kFirstPaintMilliseconds,
            [](gpointer self) -> gboolean {
                static_cast<DesktopWindow*>(self)->m_first_show = 0;
                static_cast<DesktopWindow*>(self)->show_now();
                return G_SOURCE_REMOVE;
            },
            this);
    } else if (activates) {
        activate();
    }
}

// Not before something is painted: an empty window would flash.
void DesktopWindow::show_now() {
    if (m_is_mapped) return;
    m_is_mapped = true;
    if (m_first_show != 0) g_source_remove(std::exchange(m_first_show, 0));
    if (!m_is_popup) gtk_window_set_focus_on_map(widget(), m_activates);
    gtk_widget_realize(m_area);
    const auto* const owner = m_driver.find(m_shown.owner);
    if (owner != nullptr && !owner->shown().is_enabled) {
        gdk_window_set_modal_hint(gtk_widget_get_window(m_window), TRUE);
    }
    gtk_im_context_set_client_window(m_input_method, gtk_widget_get_window(m_area));
    m_driver.dress(gtk_widget_get_window(m_area));
    if (!m_is_popup || !m_driver.has_capture() || !grab()) gtk_widget_show(m_window);
    follow_scale();
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

void DesktopWindow::damaged(std::span<const RECT> damage) {
    show_now();
    const auto part = view();
    const int by = scale();
    for (const auto& rect : damage) {
        const auto left = static_cast<int>(rect.left - part.left) / by - 1;
        const auto top = static_cast<int>(rect.top - part.top) / by - 1;
        gtk_widget_queue_draw_area(m_area, left, top, units(rect.right - rect.left) + 3,
                                   units(rect.bottom - rect.top) + 3);
    }
}

void DesktopWindow::activate() {
    if (!m_is_mapped) {
        m_activates = true;
        return;
    }
    if (m_is_popup) return;
    gtk_window_present_with_time(widget(), m_driver.last_event_time());
}

void DesktopWindow::set_cursor(GdkCursor* cursor) {
    auto* const window = gtk_widget_get_window(m_area);
    if (window != nullptr) gdk_window_set_cursor(window, cursor);
}

void DesktopWindow::set_caret(const RECT& place) {
    const auto corner = on_screen(0, 0);
    const int by = scale();
    const GdkRectangle at{static_cast<int>(place.left - corner.x) / by,
                          static_cast<int>(place.top - corner.y) / by,
                          units(place.right - place.left), units(place.bottom - place.top)};
    gtk_im_context_set_cursor_location(m_input_method, &at);
}

// ---- where the desktop has put it

// The desktop moves and sizes a window in steps: what it comes to is looked at when they are done.
void DesktopWindow::await_settling() {
    if (m_settling != 0) return;
    m_settling = g_idle_add(
        [](gpointer self) -> gboolean {
            static_cast<DesktopWindow*>(self)->m_settling = 0;
            static_cast<DesktopWindow*>(self)->settle();
            return G_SOURCE_REMOVE;
        },
        this);
}

RECT DesktopWindow::actual_view() const {
    const int by = scale();
    const LONG width = gtk_widget_get_allocated_width(m_area) * by;
    const LONG height = gtk_widget_get_allocated_height(m_area) * by;
    auto corner = on_screen(0, 0);
    if (!is_wayland()) {
        int x = 0;
        int y = 0;
        gdk_window_get_origin(gtk_widget_get_window(m_area), &x, &y);
        corner = {x * by, y * by};
    }
    return {corner.x, corner.y, corner.x + width, corner.y + height};
}

void DesktopWindow::settle() {
    if (!m_is_mapped || (m_form & WS_MINIMIZE) != 0) return;
    const int by = scale();
    const auto part = view();
    const auto now = actual_view();
    const auto corner = on_screen(0, 0);
    const auto size = size_of(part);
    if (is_near(now.left, corner.x, by) && is_near(now.top, corner.y, by) &&
        is_near(now.right - now.left, size.cx, by) && is_near(now.bottom - now.top, size.cy, by)) {
        m_asked_at = 0;
        return;
    }
    if (m_asked_at != 0 &&
        g_get_monotonic_time() - m_asked_at < gint64{kSettleMilliseconds} * 1000) {
        m_settling = g_timeout_add(
            kSettleMilliseconds,
            [](gpointer self) -> gboolean {
                static_cast<DesktopWindow*>(self)->m_settling = 0;
                static_cast<DesktopWindow*>(self)->settle();
                return G_SOURCE_REMOVE;
            },
            this);
        return;
    }
    m_asked_at = 0;
    const auto whole = size_of(m_shown.place);
    auto news = input(RawInput::Kind::place, 0);
    news.place.left = now.left - part.left;
    news.place.top = now.top - part.top;
    news.place.right = news.place.left + (now.right - now.left) + (whole.cx - size.cx);
    news.place.bottom = news.place.top + (now.bottom - now.top) + (whole.cy - size.cy);
    m_shown.content.right += (news.place.right - news.place.left) - whole.cx;
    m_shown.content.bottom += (news.place.bottom - news.place.top) - whole.cy;
    m_shown.place = news.place;
    m_driver.put(std::move(news));
}

gboolean DesktopWindow::on_configure(GdkEventConfigure* /*event*/) {
    await_settling();
    return FALSE;
}

gboolean DesktopWindow::on_state(GdkEventWindowState* event) {
    DWORD form = 0;
    if ((event->new_window_state & GDK_WINDOW_STATE_MAXIMIZED) != 0) form |= WS_MAXIMIZE;
    if ((event->new_window_state & GDK_WINDOW_STATE_ICONIFIED) != 0) form = WS_MINIMIZE;
    constexpr auto kForms = GDK_WINDOW_STATE_MAXIMIZED | GDK_WINDOW_STATE_ICONIFIED;
    if ((event->changed_mask & kForms) == 0 || form == m_form) return FALSE;
    m_form = form;
    m_shown.style = (m_shown.style & ~(WS_MINIMIZE | WS_MAXIMIZE)) | form;
    auto news = input(RawInput::Kind::form, 0);
    news.form = form;
    m_driver.put(std::move(news));
    return FALSE;
}

void DesktopWindow::follow_scale() {
    auto news = input(RawInput::Kind::scale, 0);
    news.dpi = desktop_dpi(scale());
    if (news.dpi != m_shown.dpi) m_driver.put(std::move(news));
}

// ---- what the person does

RawInput DesktopWindow::input(RawInput::Kind kind, guint32 time) const {
    RawInput news;
    news.kind = kind;
    news.window = m_shown.window;
    news.time = m_driver.ticks_of(time);
    return news;
}

RawInput DesktopWindow::pointer_input(RawInput::Kind kind, double x, double y, guint32 time) const {
    auto news = input(kind, time);
    news.point = on_screen(x, y);
    return news;
}

gboolean DesktopWindow::draw(cairo_t* cairo) {
    const auto part = view();
    m_buffer->draw(cairo, {part.left, part.top}, scale());
    return TRUE;
}

gboolean DesktopWindow::on_motion(GdkEventMotion* event) {
    m_driver.put(pointer_input(RawInput::Kind::pointer_move, event->x, event->y, event->time));
    return TRUE;
}

gboolean DesktopWindow::on_button(GdkEventButton* event) {
    // A double click comes as two clicks and a word about them.
    const bool is_down = event->type == GDK_BUTTON_PRESS;
    if ((!is_down && event->type != GDK_BUTTON_RELEASE) || event->button < 1 || event->button > 3) {
        return TRUE;
    }
    constexpr int kButtons[] = {0, 2, 1};
    auto news = pointer_input(is_down ? RawInput::Kind::button_down : RawInput::Kind::button_up,
                              event->x, event->y, event->time);
    news.button = kButtons[event->button - 1];
    m_driver.put(std::move(news));
    return TRUE;
}

void DesktopWindow::turn_wheel(const GdkEventScroll& event, double notches, bool is_horizontal) {
    auto& rest = is_horizontal ? m_wheel_across : m_wheel;
    rest += notches * kNotch;
    const auto delta = static_cast<int>(rest);
    if (delta == 0) return;
    rest -= delta;
    auto news = pointer_input(RawInput::Kind::wheel, event.x, event.y, event.time);
    news.delta = delta;
    news.is_horizontal = is_horizontal;
    m_driver.put(std::move(news));
}

gboolean DesktopWindow::on_scroll(GdkEventScroll* event) {
    switch (event->direction) {
        case GDK_SCROLL_UP:
        case GDK_SCROLL_DOWN:
            turn_wheel(*event, event->direction == GDK_SCROLL_UP ? 1 : -1, false);
            break;
        case GDK_SCROLL_LEFT:
        case GDK_SCROLL_RIGHT:
            turn_wheel(*event, event->direction == GDK_SCROLL_RIGHT ? 1 : -1, true);
            break;
        case GDK_SCROLL_SMOOTH:
            turn_wheel(*event, -event->delta_y, false);
            turn_wheel(*event, event->delta_x, true);
            break;
    }
    return TRUE;
}

gboolean DesktopWindow::on_crossing(GdkEventCrossing* event) {
    constexpr auto kButtons = GDK_BUTTON1_MASK | GDK_BUTTON2_MASK | GDK_BUTTON3_MASK;
    // A press of a button crosses nothing, and while one is down the pointer is the window's.
    if (event->mode != GDK_CROSSING_NORMAL || (event->state & kButtons) != 0) return FALSE;
    const auto kind = event->type == GDK_ENTER_NOTIFY ? RawInput::Kind::pointer_move
                                                      : RawInput::Kind::pointer_leave;
    m_driver.put(pointer_input(kind, event->x, event->y, event->time));
    return FALSE;
}

gboolean DesktopWindow::on_key(GdkEventKey* event) {
    m_written.clear();
    m_is_filtering = true;
    const bool is_taken = gtk_im_context_filter_keypress(m_input_method, event) != FALSE;
    m_is_filtering = false;
    // The input method composes with it.
    if (is_taken && m_written.empty()) return TRUE;
    const bool is_down = event->type == GDK_KEY_PRESS;
    const auto key = key_of(*event);
    auto news = input(is_down ? RawInput::Kind::key_down : RawInput::Kind::key_up, event->time);
    // Pop-ups have no keys of their own: they are for what the program has in front.
    news.window = nullptr;
    news.key = key.key != 0 || m_written.empty() ? key.key : VK_PACKET;
    news.is_extended = key.is_extended;
    news.scan_code = std::max(event->hardware_keycode - 8, 0);
    news.text = std::exchange(m_written, {});
    if (news.key != 0) m_driver.put(std::move(news));
    return TRUE;
}

void DesktopWindow::on_commit(const char* text) {
    if (m_is_filtering) {
        m_written += utf16_of(text);
        return;
    }
    auto news = input(RawInput::Kind::text, 0);
    news.window = nullptr;
    news.text = utf16_of(text);
    m_driver.put(std::move(news));
}

gboolean DesktopWindow::on_focus(GdkEventFocus* event) {
    if (event->in != 0) {
        gtk_im_context_focus_in(m_input_method);
    } else {
        gtk_im_context_focus_out(m_input_method);
    }
    m_driver.focus_is(m_shown.window, event->in != 0);
    return FALSE;
}

gboolean DesktopWindow::on_delete(GdkEventAny* /*event*/) {
    m_driver.put(input(RawInput::Kind::close, 0));
    return TRUE;
}

}  // namespace tvutil2
